#include "tests/soak/ways.h"

#include <array>
#include <cstdlib>
#include <vector>

#include "qalt_at/qalt_at.h"

namespace soak {
namespace {

constexpr int kSim = 0;           // storage type
constexpr int kStandardItem = 0;  // coding of the names

// The locale of the process is C.UTF-8.
std::string utf8_of(const std::wstring& text) {
  std::string utf8(4 * text.size() + 1, '\0');
  utf8.resize(std::wcstombs(utf8.data(), text.c_str(), utf8.size()));
  return utf8;
}

std::wstring wide_of(const std::string& utf8) {
  std::wstring text(utf8.size() + 1, L'\0');
  const size_t length = std::mbstowcs(text.data(), utf8.c_str(), text.size());
  if (length == size_t(-1)) return L"no UTF-8";
  text.resize(length);
  return text;
}

void set_field(PbField& field, int type, const std::string& text) {
  field.fieldType = type;
  text.copy(field.pField, sizeof field.pField - 1);
}

Content content_of(const PhonebookEntry& entry) {
  Content content;
  content.number = entry.pFieldList[PB_FIELD_NUMBER].pField;
  const char* digits = entry.pFieldList[PB_FIELD_TEXT].pField;
  wchar_t name[256] = {};
  if (QL_decodePBItem(digits, name, 256, kStandardItem) == 0) {
    content.name = name;
  } else {
    content.name = L"not coded: " + wide_of(digits);
  }
  return content;
}

}  // namespace

bool CFunctions::write(int index, const Content& content) {
  if (content.empty()) return QL_deletePhonebookEntry(kSim, index) == PB_OK;
  std::array<char, 1024> digits{};
  int gsm = 0;
  if (!content.name.empty() && QL_encodePBItem(content.name.c_str(), digits.data(), digits.size(),
                                               &gsm, kStandardItem) != 0) {
    std::abort();
  }
  std::array<PbField, 2> fields{};
  set_field(fields[0], PB_FIELD_NUMBER, content.number);
  set_field(fields[1], PB_FIELD_TEXT, digits.data());
  PhonebookEntry entry = {index, int(fields.size()), fields.data(), 0};
  return QL_setPhonebookEntry(kSim, &entry) == PB_OK;
}

std::optional<Contents> CFunctions::read(int first, int last) {
  const auto count = size_t(last - first + 1);
  std::vector<std::array<PbField, PB_FIELD_TYPES>> fields(count);
  std::vector<PhonebookEntry> entries(count);
  for (size_t i = 0; i < count; ++i) entries[i].pFieldList = fields[i].data();
  if (QL_getPhonebookEntry(kSim, first, last, entries.data()) != PB_OK) return std::nullopt;
  Contents contents;
  for (const PhonebookEntry& entry : entries) {
    if (entry.storageIndex != 0) contents[entry.storageIndex] = content_of(entry);
  }
  return contents;
}

void CppHeader::failed(const qalt::Error& error) {
  error_ = error.what;
  differs_ = error.cause == qalt::Cause::kDiffers &&
             error.what.find("cannot be read back") == std::string::npos;
}

bool CppHeader::write(int index, const Content& content) {
  differs_ = false;
  if (content.empty()) {
    const auto erased = book_.erase(index);
    if (!erased) failed(erased.error());
    return bool(erased);
  }
  qalt::Contact contact;
  contact.index = index;
  contact.name = utf8_of(content.name);
  contact.number = content.number;
  const auto written = book_.put(contact);
  if (!written) failed(written.error());
  return bool(written);
}

std::optional<Contents> CppHeader::read(int first, int last) {
  const auto reading = book_.read(first, last);
  if (!reading) {
    failed(reading.error());
    return std::nullopt;
  }
  if (!reading->unreadable.empty()) return std::nullopt;
  Contents contents;
  for (const qalt::Contact& contact : reading->contacts) {
    contents[contact.index] = {wide_of(contact.name), contact.number};
  }
  return contents;
}

}  // namespace soak
