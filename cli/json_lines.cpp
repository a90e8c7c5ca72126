// JSON Lines: one object a line, every field, exactly. An array of the same objects is read, too:
// it is what the tool prints.
#include <set>

#include "cli/contact_file.h"
#include "cli/output.h"

namespace qalt::cli {
namespace {

// A whole number that fits; what is wrong otherwise.
std::string read_number(const Json& value, int& number) {
  const bool whole = value.is_number_unsigned() || value.is_number_integer();
  if (!whole || value < 0 || value > INT32_MAX) return "is no whole number from 0 on";
  number = value.get<int>();
  return "";
}

std::string read_text(const Json& value, std::string& text) {
  if (!value.is_string()) return "is no text";
  text = value.get<std::string>();
  return "";
}

std::string read_member(const std::string& key, const Json& value, Record& record) {
  Contact& contact = record.contact;
  if (key == "index") return read_number(value, contact.index);
  if (key == "coding") return read_number(value, contact.coding);
  if (key == "further") {
    record.tells_further = true;
    return read_text(value, contact.further);
  }
  for (const FieldRow& field : kFields) {
    if (key == field.key) return read_text(value, contact.*field.member);
  }
  return "is no field of a contact";
}

void read_line(const std::string& text, int line, FileContents& contents) {
  // Of members with the same name the object keeps one, and nobody knows whether it is the meant.
  std::set<std::string> names;
  std::set<std::string> twice;
  const auto take_name = [&](int depth, Json::parse_event_t event, const Json& name) {
    const bool counts = depth == 1 && event == Json::parse_event_t::key;
    if (counts && !names.insert(name).second) twice.insert(name);
    return true;
  };
  const Json object = Json::parse(text, take_name, /*allow_exceptions=*/false);
  if (!object.is_object()) {
    contents.problems.push_back({line, "is no JSON object"});
    return;
  }
  for (const std::string& name : twice) {
    contents.problems.push_back({line, "\"" + name + "\" stands twice"});
  }
  Record record;
  record.line = line;
  for (const auto& [key, value] : object.items()) {
    const std::string label = "\"" + key + "\" ";
    const std::string wrong = read_member(key, value, record);
    if (!wrong.empty()) contents.problems.push_back({line, label + wrong});
  }
  contents.records.push_back(std::move(record));
}

// The objects of an array, each with the line on which it begins.
void read_array(const std::string& text, FileContents& contents) {
  const Json array = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!array.is_array()) {
    contents.problems.push_back({1, "is no JSON array"});
    return;
  }
  int line = 1;
  int depth = 0;
  int start_line = 0;
  size_t start = 0;
  size_t objects = 0;
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n') ++line;
    if (quoted && c == '\\') ++i;
    if (c == '"') quoted = !quoted;
    if (quoted || c == '"') continue;
    if (c == '{' && depth == 1) {
      start = i;
      start_line = line;
    }
    depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
    if (c != '}' || depth != 1) continue;
    read_line(text.substr(start, i + 1 - start), start_line, contents);
    ++objects;
  }
  if (objects != array.size()) contents.problems.push_back({1, "holds more than JSON objects"});
}

}  // namespace

FileContents read_json_lines(const std::string& text) {
  FileContents contents;
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first != text.npos && text[first] == '[') {
    read_array(text, contents);
    return contents;
  }
  int line = 1;
  for (size_t start = 0; start < text.size(); ++line) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string content = text.substr(start, end - start);
    if (content.find_first_not_of(" \t\r") != content.npos) read_line(content, line, contents);
    start = end + 1;
  }
  return contents;
}

std::string write_json_lines(const std::vector<Contact>& contacts) {
  std::string text;
  for (const Contact& contact : contacts) text += line_of(json_of(contact)) + "\n";
  return text;
}

}  // namespace qalt::cli
