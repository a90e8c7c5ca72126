#include "cli/contact_file.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qalt::cli {
namespace {

struct FormatName {
  std::string_view name;
  Format format;
};

constexpr std::array<FormatName, 6> kNames = {{{"jsonl", Format::kJsonLines},
                                               {"vcf", Format::kVcard},
                                               {"csv", Format::kCsv},
                                               {"ndjson", Format::kJsonLines},
                                               {"json", Format::kJsonLines},
                                               {"vcard", Format::kVcard}}};

bool has_unfit_characters(const Contact& contact) {
  return std::any_of(kFields.begin(), kFields.end(), [&](const FieldRow& field) {
    const std::string& text = contact.*field.member;
    return !std::all_of(text.begin(), text.end(), fits_vcard);
  });
}

bool is_malformed(const Contact& contact) {
  return !detail::code_points(contact.further) ||
         std::any_of(kFields.begin(), kFields.end(), [&](const FieldRow& field) {
           return !detail::code_points(contact.*field.member);
         });
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

std::optional<Format> format_named(std::string_view name) {
  for (const FormatName& row : kNames) {
    const bool same = std::equal(name.begin(), name.end(), row.name.begin(), row.name.end(),
                                 [](char a, char b) { return a == b || a == b - 'a' + 'A'; });
    if (same) return row.format;
  }
  return std::nullopt;
}

std::optional<Format> format_of_path(std::string_view path) {
  const size_t dot = path.rfind('.');
  if (dot == path.npos) return std::nullopt;
  return format_named(path.substr(dot + 1));
}

FileContents read_contacts(Format format, const std::string& text) {
  const bool marked = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
  const std::string content = marked ? text.substr(kByteOrderMark.size()) : text;
  switch (format) {
    case Format::kJsonLines:
      return read_json_lines(content);
    case Format::kVcard:
      return read_vcards(content);
    case Format::kCsv:
      return read_csv(content);
  }
  return {};
}

std::string write_contacts(Format format, const std::vector<Contact>& contacts) {
  switch (format) {
    case Format::kJsonLines:
      return write_json_lines(contacts);
    case Format::kVcard:
      return write_vcards(contacts);
    case Format::kCsv:
      return write_csv(contacts);
  }
  return "";
}

std::string loss_of(Format format, const std::vector<Contact>& contacts) {
  const auto any = [&](auto&& holds) {
    return std::any_of(contacts.begin(), contacts.end(), holds);
  };
  if (format == Format::kJsonLines) {
    return any(is_malformed) ? "JSON does not carry bytes that are no UTF-8" : "";
  }
  const bool further = any([](const Contact& c) { return !c.further.empty(); });
  if (format == Format::kCsv) {
    return further
               ? "CSV does not carry the further parameters; JSON Lines (.jsonl) keeps everything"
               : "";
  }
  if (contacts.empty()) return "";
  std::string loss = "vCard does not carry the indices";
  if (any([](const Contact& c) { return c.coding != 0; })) loss += ", the codings";
  if (further) loss += ", the further parameters";
  if (any(has_unfit_characters)) loss += ", control characters";
  // Numbers are counted from the first one that is there.
  if (any([](const Contact& c) {
        return (c.number.empty() && !(c.number2.empty() && c.number3.empty())) ||
               (c.number2.empty() && !c.number3.empty());
      })) {
    loss += ", which of a contact's numbers are empty";
  }
  return loss + "; JSON Lines (.jsonl) keeps everything";
}

std::optional<int> whole_number(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool digits = text.find_first_not_of("0123456789") == text.npos;  // no sign
  if (error != std::errc() || end != text.data() + text.size() || !digits) return std::nullopt;
  return value;
}

}  // namespace qalt::cli
