// Contacts in files of any bytes: what a reader takes and a phonebook could hold comes back when it
// is written and read again; what a reader does not take, it names with its line.
#include <string>

#include "cli/contact_file.h"
#include "fuzz/property.h"

namespace {

using qalt::Contact;
using qalt::cli::FileContents;
using qalt::cli::Format;

// As they would be exported: every contact has its place.
std::vector<Contact> contacts_of(const FileContents& contents) {
  std::vector<Contact> contacts;
  for (const auto& record : contents.records) {
    contacts.push_back(record.contact);
    if (contacts.back().index == qalt::kNoIndex) contacts.back().index = 1;
  }
  return contacts;
}

void check_lines(const FileContents& contents, const std::string& text) {
  const auto lines = 1 + std::count(text.begin(), text.end(), '\n');
  int last = 0;
  for (const auto& record : contents.records) {
    FUZZ_CHECK(record.line > last && record.line <= lines);
    last = record.line;
  }
  for (const auto& problem : contents.problems) {
    FUZZ_CHECK(problem.line >= 0 && problem.line <= lines && !problem.what.empty());
  }
}

bool same(const std::vector<Contact>& a, const std::vector<Contact>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Contact& x, const Contact& y) {
    return qalt::same_fields(x, y) && x.index == y.index && x.coding == y.coding;
  });
}

// Whether a phonebook could hold all of these, so that a file of them is one that was exported.
bool storable(const std::vector<Contact>& contacts) {
  qalt::Info info;
  info.family = qalt::Family::kJcpbr;
  return std::all_of(contacts.begin(), contacts.end(), [&](const Contact& contact) {
    return qalt::detail::check_contact(info, contact).empty();
  });
}

void check_file(Format format, const std::string& text) {
  const FileContents contents = read_contacts(format, text);
  check_lines(contents, text);
  if (!contents.problems.empty()) return;
  const std::vector<Contact> contacts = contacts_of(contents);
  if (!storable(contacts)) return;
  const std::string written = write_contacts(format, contacts);
  const FileContents read = read_contacts(format, written);
  const std::vector<Contact> again = contacts_of(read);
  FUZZ_CHECK(read.problems.empty());
  FUZZ_CHECK(write_contacts(format, again) == written);
  // A vCard knows neither places nor which of the numbers are empty.
  if (format != Format::kVcard) FUZZ_CHECK(same(again, contacts));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  constexpr Format kFormats[] = {Format::kJsonLines, Format::kVcard, Format::kCsv};
  const Format format = kFormats[input.byte() % 3];
  check_file(format, input.rest());
  return 0;
}
