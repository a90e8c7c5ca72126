// fields.h - the contact's fields: which member of a PbItem a field type names, and its width.
#ifndef QALT_PB_FIELDS_H_
#define QALT_PB_FIELDS_H_

#include <cstddef>
#include <cstdint>

#include "qalt_at/phonebook_records.h"

namespace qalt {

struct FieldRow {
  size_t offset;
  size_t width;  // of the member, and the limit at which a caller's text is cut
};

#define QALT_FIELD_ROW(member) \
  { offsetof(PbItem, member), sizeof(PbItem::member) }
// clang-format off
// By field type.
inline constexpr FieldRow kFieldRows[PB_FIELD_TYPES] = {
    QALT_FIELD_ROW(number),     // PB_FIELD_NUMBER
    QALT_FIELD_ROW(text),       // PB_FIELD_TEXT
    QALT_FIELD_ROW(number2),    // PB_FIELD_NUMBER2
    QALT_FIELD_ROW(number3),    // PB_FIELD_NUMBER3
    QALT_FIELD_ROW(extraText),  // PB_FIELD_EXTRA_TEXT
    QALT_FIELD_ROW(email),      // PB_FIELD_EMAIL
};
// clang-format on
#undef QALT_FIELD_ROW

inline constexpr size_t kWidestField = PB_EMAIL_SIZE;

// Null for a type that does not exist.
inline const FieldRow* find_field(int32_t type) {
  return type >= 0 && type < PB_FIELD_TYPES ? &kFieldRows[type] : nullptr;
}

inline const char* member_of(const PbItem& item, const FieldRow& row) {
  return reinterpret_cast<const char*>(&item) + row.offset;
}

inline char* member_of(PbItem& item, const FieldRow& row) {
  return reinterpret_cast<char*>(&item) + row.offset;
}

}  // namespace qalt

#endif  // QALT_PB_FIELDS_H_
