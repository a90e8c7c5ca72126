#include "sim/contacts_file.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace qalt::sim {
namespace {

using nlohmann::json;

std::string text_member(const json& entry, const char* key) {
  const auto found = entry.find(key);
  if (found == entry.end()) return {};
  if (!found->is_string()) throw std::runtime_error(std::string("\"") + key + "\" is not a text");
  return found->get<std::string>();
}

int number_member(const json& entry, const char* key, int otherwise) {
  const auto found = entry.find(key);
  if (found == entry.end()) return otherwise;
  if (!found->is_number_integer()) {
    throw std::runtime_error(std::string("\"") + key + "\" is not a whole number");
  }
  return found->get<int>();
}

Contact read_contact(const json& entry) {
  static const std::set<std::string> kKeys = {"index",   "number", "type",  "name",   "number2",
                                              "number3", "email",  "extra", "further"};
  for (const auto& [key, unused] : entry.items()) {
    if (!kKeys.contains(key)) throw std::runtime_error("\"" + key + "\" is no key of a contact");
  }
  Contact contact;
  contact.number = text_member(entry, "number");
  const bool international = contact.number.starts_with('+');
  contact.type = number_member(entry, "type", international ? kTypeInternational : kTypeUnknown);
  contact.name = from_utf8(text_member(entry, "name"));
  contact.number2 = text_member(entry, "number2");
  contact.number3 = text_member(entry, "number3");
  contact.email = text_member(entry, "email");
  contact.extra = from_utf8(text_member(entry, "extra"));
  contact.further = text_member(entry, "further");
  return contact;
}

std::vector<PlacedContact> read_storage(const json& list, const std::string& name, int size,
                                        const Config& config) {
  if (!list.is_array()) throw std::runtime_error(name + " is not an array");
  std::vector<PlacedContact> contacts;
  std::set<int> taken;
  const int last = config.first_index + size - 1;
  int index = config.first_index;
  for (size_t i = 0; i < list.size(); ++i, ++index) {
    try {
      if (!list[i].is_object()) throw std::runtime_error("is not an object");
      index = number_member(list[i], "index", index);
      if (index < config.first_index || index > last) {
        throw std::runtime_error("index " + std::to_string(index) + " is outside " +
                                 std::to_string(config.first_index) + " to " +
                                 std::to_string(last));
      }
      if (!taken.insert(index).second) {
        throw std::runtime_error("index " + std::to_string(index) + " stands twice");
      }
      contacts.push_back({index - config.first_index, read_contact(list[i])});
    } catch (const std::exception& error) {
      throw std::runtime_error(name + " entry " + std::to_string(i + 1) + ": " + error.what());
    }
  }
  return contacts;
}

}  // namespace

void load_contacts(const std::string& path, Config& config) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be read");
  try {
    const json document = json::parse(file);
    if (document.is_array()) {
      config.sim_contacts = read_storage(document, "SM", config.size, config);
      return;
    }
    if (!document.is_object()) throw std::runtime_error("neither an object nor an array");
    for (const auto& [key, list] : document.items()) {
      if (key == "SM") {
        config.sim_contacts = read_storage(list, key, config.size, config);
      } else if (key == "ME") {
        config.device_contacts = read_storage(list, key, config.device_size, config);
      } else {
        throw std::runtime_error("\"" + key + "\" is no storage; there are \"SM\" and \"ME\"");
      }
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

}  // namespace qalt::sim
