// contact_file.h - contacts in files: JSON Lines keeps everything, CSV what people edit in tables,
// vCard what address books exchange. Readers take any bytes and say what is wrong, line by line.
#ifndef QALT_CLI_CONTACT_FILE_H_
#define QALT_CLI_CONTACT_FILE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qalt_at/detail/contact.hpp"

namespace qalt::cli {

enum class Format { kJsonLines, kVcard, kCsv };

// A contact of a file, and the line on which it begins, counted from 1.
struct Record {
  int line = 0;
  Contact contact;
  std::vector<std::string> surplus;  // what of it a contact has no field for
  bool tells_further = false;        // whether it has further parameters, or says that it has none
};

struct Problem {
  int line;
  std::string what;
};

struct FileContents {
  std::vector<Record> records;
  std::vector<Problem> problems;
  std::vector<std::string> ignored;  // names of properties that were passed over
};

// By "jsonl", "vcf", "csv"; by the ending of a path, which may be a synonym. None for others.
std::optional<Format> format_named(std::string_view name);
std::optional<Format> format_of_path(std::string_view path);

FileContents read_contacts(Format format, const std::string& text);
std::string write_contacts(Format format, const std::vector<Contact>& contacts);

// What of these contacts the format does not carry, for a message; empty when it carries all.
std::string loss_of(Format format, const std::vector<Contact>& contacts);

// The formats, one file each.
FileContents read_json_lines(const std::string& text);
std::string write_json_lines(const std::vector<Contact>& contacts);
FileContents read_vcards(const std::string& text);
std::string write_vcards(const std::vector<Contact>& contacts);
// A card has no control characters but tabs and line ends.
bool fits_vcard(char c);
FileContents read_csv(const std::string& text);
std::string write_csv(const std::vector<Contact>& contacts);

// A whole number that may stand as an index or coding; none for other texts.
std::optional<int> whole_number(std::string_view text);

}  // namespace qalt::cli

#endif  // QALT_CLI_CONTACT_FILE_H_
