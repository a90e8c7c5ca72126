/*
 * wire_contact.hpp - a contact as the AT commands carry it, the lines of the three command families
 * that read and write it, and the coding of its texts.
 *
 * Names travel as hexadecimal digits: UCS2 with the standard commands while the modem's character
 * set is UCS2, a SIM alpha identifier (ETSI TS 102 221, Annex A) with the vendor commands.
 */
#ifndef QALT_AT_DETAIL_WIRE_CONTACT_HPP
#define QALT_AT_DETAIL_WIRE_CONTACT_HPP

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qalt_at/detail/contact.hpp"
#include "qalt_at/detail/parameter_list.hpp"
#include "qalt_at/text.h"
#include "qalt_at/text_items.h"

namespace qalt {
namespace detail {

/* Texts are coded; numbers have their "+"; an address is as it is. */
struct WireContact {
  int index = kNoIndex;
  std::array<std::string, PB_FIELD_TYPES> fields; /* by PB_FIELD_ code */
  int coding = 0;
  std::string type; /* of the number, as it was read with the standard commands; else by its "+" */
  std::string further; /* behind the last parameter, with the standard commands; see Contact */
};

/* A parameter of a line: a field by its PB_FIELD_ code, or one of these. A type of number belongs
 * to the number in front of it. */
enum Parameter : signed char { kEnd = -1, kIndex = -2, kType = -3, kSkip = -4, kCoding = -5 };

constexpr size_t kMostParameters = 13;
using Parameters = std::array<signed char, kMostParameters>;

struct FamilyRow {
  std::string_view prefix; /* of an answer line */
  std::string_view read;   /* command lines, up to the first parameter */
  std::string_view write;
  Parameters answer; /* of an answer line */
  Parameters record; /* of a write */
  uint32_t write_timeout_ms;
};

// clang-format off
inline constexpr std::array<FamilyRow, 3> kFamilies = {{
    {"+CPBR:", "AT+CPBR=", "AT+CPBW=",
     {kIndex, PB_FIELD_NUMBER, kType, PB_FIELD_TEXT, kEnd},
     {kIndex, PB_FIELD_NUMBER, kType, PB_FIELD_TEXT, kEnd},
     10000},
    {"+JCPBR:", "AT+JCPBR=", "AT+JCPBW=",
     {kIndex, PB_FIELD_NUMBER, PB_FIELD_TEXT, PB_FIELD_NUMBER2, PB_FIELD_NUMBER3, PB_FIELD_EMAIL,
      PB_FIELD_EXTRA_TEXT, kEnd},
     {kIndex, PB_FIELD_NUMBER, kType, PB_FIELD_TEXT, PB_FIELD_NUMBER2, PB_FIELD_NUMBER3,
      PB_FIELD_EMAIL, PB_FIELD_EXTRA_TEXT, kEnd},
     5000},
    // The third number stands before the second, and a fourth one is written as the second again.
    {"^SCPBR:", "AT^SCPBR=", "AT^SCPBW=",
     {kIndex, PB_FIELD_NUMBER, kType, PB_FIELD_NUMBER3, kType, PB_FIELD_NUMBER2, kType, kSkip,
      kSkip, PB_FIELD_TEXT, kCoding, PB_FIELD_EMAIL, kEnd},
     {kIndex, PB_FIELD_NUMBER, kType, PB_FIELD_NUMBER3, kType, PB_FIELD_NUMBER2, kType,
      PB_FIELD_NUMBER2, kType, PB_FIELD_TEXT, kCoding, PB_FIELD_EMAIL, kEnd},
     5000},
}};
// clang-format on

inline const FamilyRow& row_of(Family family) {
  return kFamilies[static_cast<size_t>(family)];
}

inline std::string read_line(Family family, int first, int last) {
  return std::string(row_of(family).read) + std::to_string(first) + "," + std::to_string(last);
}

/* A second an index, since a modem may search the card for each; never less than for one alone. */
inline uint32_t read_timeout_ms(Family family, int first, int last) {
  if (family != Family::kStandard) return 5000;
  return std::max<uint32_t>(20000, static_cast<uint32_t>(last - first + 1) * 1000);
}

inline std::string erase_line(Family family, int index) {
  return std::string(row_of(family).write) + std::to_string(index);
}

inline bool is_international(const std::string& number) {
  return !number.empty() && number.front() == '+';
}

inline std::string write_line(Family family, const WireContact& contact) {
  std::string line(row_of(family).write);
  const std::string* number = nullptr;
  for (const int parameter : row_of(family).record) {
    if (parameter == kEnd) break;
    if (line.back() != '=') line += ',';
    if (parameter == kIndex) {
      line += std::to_string(contact.index);
    } else if (parameter == kType) {
      const std::string by_sign = is_international(*number) ? "145" : "129";
      line += contact.type.empty() ? by_sign : contact.type;
    } else if (parameter == kCoding) {
      line += '1';
    } else {
      number = &contact.fields[static_cast<size_t>(parameter)];
      line += '"' + *number + '"';
    }
  }
  return line + in_order_of_write(contact.further);
}

/* The longest answer line that the parser is sure to give whole, the name of the command taken off.
 */
constexpr size_t kLongestLine = 1000;

/* The contact of an answer line, the name of the command taken off; none when it is no such line,
 * or one so long that the parser may have cut it. */
inline std::optional<WireContact> read_answer_line(Family family, const std::string& line) {
  const std::vector<std::string> pieces = split_outside_quotes(line, ",");
  const Parameters& parameters = row_of(family).answer;
  const auto count = static_cast<size_t>(std::find(parameters.begin(), parameters.end(), kEnd) -
                                         parameters.begin());
  if (line.size() > kLongestLine || pieces.size() + 1 < count) return std::nullopt;

  WireContact contact;
  std::string* number = nullptr;
  for (size_t k = 0; k < count; ++k) {
    const std::string value = k < pieces.size() ? unquoted(pieces[k]) : "";
    const int parameter = parameters[k];
    if (parameter == kIndex) {
      char* end = nullptr;
      const long index = std::strtol(value.c_str(), &end, 10);
      if (end == value.c_str() || *end != '\0' || index < 0 || index > INT32_MAX) {
        return std::nullopt;
      }
      contact.index = static_cast<int>(index);
    } else if (parameter == kType) {
      /* A type says that a number without "+" is international; of ^SCPBR one of 0, that there is
       * none. Others (TS 24.008, 10.5.4.7) are kept. */
      const bool plain = !number->empty() && number->front() >= '0' && number->front() <= '9';
      if (plain && value == std::to_string(PB_TYPE_INTERNATIONAL)) number->insert(0, 1, '+');
      if (value == "0" && family == Family::kScpbr) number->clear();
      const bool digits = value.find_first_not_of("0123456789") == value.npos;
      if (family == Family::kStandard && digits && value.size() <= 3) contact.type = value;
    } else if (parameter == kCoding) {
      contact.coding = static_cast<int>(std::strtol(value.c_str(), nullptr, 10));
    } else if (parameter != kSkip) {
      number = &contact.fields[static_cast<size_t>(parameter)];
      *number = value;
    }
  }
  if (family == Family::kStandard) contact.further = further_of(pieces, count);
  return contact;
}

/* How a phonebook's texts are coded. */
enum class TextForm { kUcs2, kVendor, kPlain };

inline TextForm text_form(const Info& info) {
  if (info.family != Family::kStandard) return TextForm::kVendor;
  return info.plain ? TextForm::kPlain : TextForm::kUcs2;
}

constexpr int kStandardItem = 0; /* the flag of QL_decodePBItem and QL_encodePBItem */
constexpr int kVendorItem = 1;

/* Where the next U+0000 of UCS2 digits stands; the decoder would take it for the end. */
inline size_t find_nul(std::string_view digits) {
  for (size_t at = 0; at + 4 <= digits.size(); at += 4) {
    if (digits.compare(at, 4, "0000") == 0) return at;
  }
  return digits.size();
}

/* The library reads upper-case digits; some modems send the others. */
inline std::string upper_digits(std::string_view digits) {
  std::string upper(digits);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

/* Tagless UCS2 digits, in portions that the decoder takes. */
inline std::optional<std::string> decode_ucs2(std::string_view digits) {
  constexpr size_t kPortion = 240;
  const bool hex = digits.find_first_not_of("0123456789ABCDEFabcdef") == digits.npos;
  if (!hex || digits.size() % 4 != 0) return std::nullopt;
  std::wstring text;
  while (!digits.empty()) {
    const std::string portion =
        upper_digits(digits.substr(0, find_nul(digits.substr(0, kPortion))));
    if (portion.empty()) {
      text += L'\0';
      digits.remove_prefix(4);
      continue;
    }
    wchar_t wide[2 * kPortion] = {};
    if (QL_decodePBItem(portion.c_str(), wide, 2 * kPortion, kStandardItem) != 0) {
      return std::nullopt;
    }
    text.append(wide, portion.size() / 4);
    digits.remove_prefix(portion.size());
  }
  return utf8_of(text);
}

inline std::optional<std::string> decode_identifier(const std::string& digits) {
  if (digits.size() % 4 == 2 && digits.compare(0, 2, "80") == 0) {
    return decode_ucs2(std::string_view(digits).substr(2));
  }
  constexpr int kRoom = 512;
  wchar_t wide[kRoom];
  const bool hex = digits.find_first_not_of("0123456789ABCDEFabcdef") == digits.npos;
  if (!hex || digits.size() % 2 != 0) return std::nullopt;
  if (QL_decodePBItem(upper_digits(digits).c_str(), wide, kRoom, kVendorItem) != 0)
    return std::nullopt;
  return utf8_of(wide);
}

/* The text of coded digits, none when they are not in the form. */
inline std::optional<std::string> decode_text(const std::string& wire, TextForm form) {
  if (wire.empty()) return std::string();
  if (form == TextForm::kUcs2) return decode_ucs2(wire);
  if (form == TextForm::kVendor) return decode_identifier(wire);
  std::string text;
  for (const char c : wire) {
    append_utf8(text, static_cast<uint8_t>(c) < 0x80 ? static_cast<uint32_t>(c) : kReplacement);
  }
  return text;
}

/* Four digits a character; one above U+FFFF is a pair of surrogates, as it was read. */
inline std::string encode_ucs2(const std::u32string& text) {
  std::string digits;
  const auto append = [&digits](uint32_t unit) {
    for (int shift = 12; shift >= 0; shift -= 4) digits += "0123456789ABCDEF"[unit >> shift & 0xF];
  };
  for (const uint32_t code : text) {
    if (code > kLastUcs2) append(0xD800 + ((code - 0x10000) >> 10));
    append(code > kLastUcs2 ? 0xDC00 + (code & 0x3FF) : code);
  }
  return digits;
}

/* The digits of a checked text, none when the form cannot carry it. A vendor record has two digits
 * for each of its `limit` characters, and no more than the library's own record; where the coding
 * 0x80 needs more, 0x81 may still fit. */
inline std::optional<std::string> encode_text(const std::string& utf8, TextForm form, int limit) {
  const auto codes = code_points(utf8);
  if (!codes) return std::nullopt;
  if (form != TextForm::kVendor) return encode_ucs2(*codes);
  const std::wstring text(codes->begin(), codes->end());
  std::string digits(4 * text.size() + 7, '\0');
  int gsm = 0;
  if (text.empty()) return std::string();
  const bool done = QL_encodePBItem(text.c_str(), digits.data(), static_cast<int>(digits.size()),
                                    &gsm, kVendorItem) == 0;
  if (done) digits.resize(std::char_traits<char>::length(digits.c_str()));
  uint32_t base = 0;
  const size_t room = std::min(2 * static_cast<size_t>(limit), sizeof(JcpbwRecord::text) - 1);
  const bool wide = gsm == 0 && (!done || digits.size() > room);
  if (wide && ChoosePhoneBookTextCodecType(text.c_str(), &base) == TEXT_CODING_UCS2_81) {
    std::string compact(4 * text.size() + 7, '\0');
    if (PB808182EncodeItem(text.c_str(), compact.data()) == 1) {
      compact.resize(std::char_traits<char>::length(compact.c_str()));
      return compact;
    }
  }
  if (!done) return std::nullopt;
  return digits;
}

/* The contact of a wire contact; on a text that cannot be decoded, its key instead. */
inline Result<Contact> contact_of(const WireContact& wire, TextForm form) {
  Contact contact;
  contact.index = wire.index;
  contact.coding = wire.coding;
  contact.further = wire.further;
  for (const FieldRow& field : kFields) {
    const std::string& value = wire.fields[static_cast<size_t>(field.type)];
    std::optional<std::string> text = value;
    if (field.kind == FieldKind::kText) text = decode_text(value, form);
    if (!text) return Error{Cause::kRefused, std::string("its ") + field.key + " is not coded", ""};
    contact.*field.member = *text;
  }
  return contact;
}

/* Puts one field of a contact into its wire form; false when the form cannot carry it. */
inline bool put_field(const Info& info, const FieldRow& field, const std::string& value,
                      WireContact& wire) {
  std::optional<std::string> coded = value;
  if (field.kind == FieldKind::kText) {
    coded = encode_text(value, text_form(info), length_limit(info, field));
  }
  if (coded) wire.fields[static_cast<size_t>(field.type)] = *coded;
  if (field.type == PB_FIELD_NUMBER) wire.type.clear();
  return coded.has_value();
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_WIRE_CONTACT_HPP */
