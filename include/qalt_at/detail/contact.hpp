/*
 * contact.hpp - a contact as clients see it, the phonebook that holds it, and its checks: what does
 * not fit is refused with the length it may have, never cut.
 */
#ifndef QALT_AT_DETAIL_CONTACT_HPP
#define QALT_AT_DETAIL_CONTACT_HPP

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "qalt_at/detail/parameter_list.hpp"
#include "qalt_at/detail/result.hpp"
#include "qalt_at/detail/unicode.hpp"
#include "qalt_at/phonebook_records.h"

namespace qalt {

constexpr int kNoIndex = -1;

struct Contact {
  int index = kNoIndex; /* kNoIndex: not placed yet */
  std::string name;     /* UTF-8, as extra is */
  std::string number;   /* an international number has its "+" */
  std::string number2;
  std::string number3;
  std::string email;
  std::string extra;
  int coding = 0; /* as ^SCPBR reports it; never written */
  /* What a +CPBR line has behind the name, as the modem gave it, such as `,0,"00460072"`: 3GPP
   * TS 27.007, 8.12, from <hidden> on. Without those at the end that say nothing: empty ones, a
   * <hidden> of 0, the type of an empty number. Mostly empty. */
  std::string further = {};
};

enum class FieldKind { kText, kNumber, kEmail };

/* The fields of a contact, in the order in which people read them. */
struct FieldRow {
  int type;        /* PB_FIELD_ code: its place in Info::lengths and Changes::fields */
  const char* key; /* in JSON, in CSV, and with "--" on the command line */
  std::string Contact::*member;
  FieldKind kind;
};

// clang-format off
inline constexpr std::array<FieldRow, PB_FIELD_TYPES> kFields = {{
    {PB_FIELD_TEXT,       "name",    &Contact::name,    FieldKind::kText},
    {PB_FIELD_NUMBER,     "number",  &Contact::number,  FieldKind::kNumber},
    {PB_FIELD_NUMBER2,    "number2", &Contact::number2, FieldKind::kNumber},
    {PB_FIELD_NUMBER3,    "number3", &Contact::number3, FieldKind::kNumber},
    {PB_FIELD_EMAIL,      "email",   &Contact::email,   FieldKind::kEmail},
    {PB_FIELD_EXTRA_TEXT, "extra",   &Contact::extra,   FieldKind::kText},
}};
// clang-format on

/* Whether the fields say the same; places, codings and further parameters do not count. */
inline bool same_fields(const Contact& a, const Contact& b) {
  for (const FieldRow& field : kFields) {
    if (a.*field.member != b.*field.member) return false;
  }
  return true;
}

/* Whether `stored` says all that `wanted` does. Of the further parameters only those count that
 * `wanted` names, since modems fill in others by themselves. */
inline bool says_all(const Contact& stored, const Contact& wanted) {
  return same_fields(stored, wanted) && detail::keeps_further(stored.further, wanted.further);
}

/* The fields to change of a contact, by PB_FIELD_ code; the others stay as they are. */
struct Changes {
  std::array<std::optional<std::string>, PB_FIELD_TYPES> fields;
};

/* The commands that read and write contacts. */
enum class Family { kStandard, kJcpbr, kScpbr };

constexpr int kUncounted = -1;

/* What the modem told of its phonebook. */
struct Info {
  int used = 0; /* kUncounted: not told */
  int total = 0;
  int first = 0; /* range of the indices, both ends included */
  int last = 0;
  std::array<int, PB_FIELD_TYPES> lengths{}; /* by PB_FIELD_ code, characters; 0 unknown */
  Family family = Family::kStandard;
  bool usim = false;
  bool plain = false; /* the modem has no UCS2 set: names are ASCII, and nothing is written */

  bool has_index(int index) const { return index >= first && index <= last; }
};

/* What a contact that is to be written has to keep to. Phonebooks hold longer names than they
 * announce and numbers with other digits: a contact that stood in one is tried as it is. */
enum class Limits {
  kAnnounced, /* the lengths that the modem announces, the characters of numbers that people dial */
  kSendable   /* what a command can carry and a read can bring back; the rest the modem judges */
};

/* What a write may replace. */
enum class Over {
  kAnything,
  kNothing /* the index was just seen empty: seen again before the write is sent once more */
};

namespace detail {

/* Longest text the read side is sure to bring back whole: an answer line counts with its first 1023
 * characters, of which a text character takes four. */
constexpr int kLongestText = 220;
constexpr int kLongestNumber = 80;
constexpr int kLongestEmail = 128;

inline const char* family_name(Family family) {
  constexpr const char* kNames[] = {"+CPBR", "+JCPBR", "^SCPBR"};
  return kNames[static_cast<int>(family)];
}

inline bool carries(Family family, int type) {
  if (family == Family::kStandard) return type == PB_FIELD_NUMBER || type == PB_FIELD_TEXT;
  return family == Family::kJcpbr || type != PB_FIELD_EXTRA_TEXT;
}

inline int length_limit(const Info& info, const FieldRow& field) {
  const int most = field.kind == FieldKind::kText     ? kLongestText
                   : field.kind == FieldKind::kNumber ? kLongestNumber
                                                      : kLongestEmail;
  const int told = info.lengths[static_cast<size_t>(field.type)];
  return told > 0 && told < most ? told : most;
}

/* What keeps a command from carrying a field, empty when nothing does. Texts of the standard
 * commands are coded, whatever is in them; the vendors' coder takes no NUL and nothing above
 * U+FFFF. */
inline std::string check_sendable(const Info& info, const FieldRow& field,
                                  const std::string& value) {
  if (field.kind != FieldKind::kText) {
    const bool plain = std::all_of(value.begin(), value.end(),
                                   [](char c) { return c >= ' ' && c <= '~' && c != '"'; });
    return plain ? "" : "may hold ASCII characters without quotes only";
  }
  const auto text = code_points(value);
  if (!text) return "is not valid UTF-8";
  const bool coded = info.family == Family::kStandard ||
                     std::all_of(text->begin(), text->end(),
                                 [](char32_t code) { return code != 0 && code <= kLastUcs2; });
  return coded ? "" : "holds a character that no command carries";
}

/* What is wrong with one text, empty when nothing is; its characters go to *length. */
inline std::string check_text(const std::string& value, int* length) {
  const auto text = code_points(value);
  if (!text) return "is not valid UTF-8";
  *length = static_cast<int>(text->size());
  for (const char32_t code : *text) {
    if (code == 0) return "holds a NUL character";
    if (code > kLastUcs2) {
      std::string shown;
      append_utf8(shown, code);
      return "holds \"" + shown + "\", which a SIM cannot store (above U+FFFF)";
    }
  }
  return "";
}

/* The digits 0-9, *, #, the pause p, the wait w and the wild card ?, with a "+" in front. */
inline std::string check_number(std::string_view value, int* length) {
  if (!value.empty() && value.front() == '+') value.remove_prefix(1);
  *length = static_cast<int>(value.size());
  if (value.find_first_not_of("0123456789*#pPwW?") == value.npos) return "";
  return "may hold 0-9, *, #, p, w, ? and a leading + only";
}

/* What keeps one field from being stored, empty when nothing does. */
inline std::string check_field(const Info& info, const FieldRow& field, const std::string& value,
                               Limits limits = Limits::kAnnounced) {
  if (value.empty()) return "";
  const std::string name = field.key;
  if (!carries(info.family, field.type)) {
    return "this phonebook (" + std::string(family_name(info.family)) + ") has no " + name;
  }
  const bool announced = limits == Limits::kAnnounced;
  int length = static_cast<int>(value.size());
  const std::string wrong = announced && field.kind == FieldKind::kText ? check_text(value, &length)
                            : announced && field.kind == FieldKind::kNumber
                                ? check_number(value, &length)
                                : check_sendable(info, field, value);
  if (!wrong.empty()) return name + " " + wrong;
  if (!announced) return "";
  const int limit = length_limit(info, field);
  if (length <= limit) return "";
  return name + " has " + std::to_string(length) + " characters, the phonebook takes " +
         std::to_string(limit);
}

/* What keeps the further parameters from being sent. */
inline std::string check_further(const Info& info, const std::string& further) {
  if (further.empty()) return "";
  if (info.family != Family::kStandard) {
    return "this phonebook (" + std::string(family_name(info.family)) +
           ") has no further parameters";
  }
  return is_further(further) ? "" : "further is no list of parameters such as ,0,\"00460072\"";
}

/* What keeps a contact from being stored; all fields that are wrong, "; " between them. */
inline std::string check_contact(const Info& info, const Contact& contact,
                                 Limits limits = Limits::kAnnounced) {
  if (contact.name.empty() && contact.number.empty()) return "a contact needs a name or a number";
  std::string wrong;
  const auto note = [&wrong](const std::string& found) {
    if (!found.empty()) wrong += (wrong.empty() ? "" : "; ") + found;
  };
  for (const FieldRow& field : kFields) {
    note(check_field(info, field, contact.*field.member, limits));
  }
  note(check_further(info, contact.further));
  return wrong;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_CONTACT_HPP */
