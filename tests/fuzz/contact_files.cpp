// Contacts in files of any bytes: what a reader takes and a phonebook could hold comes back when it
// is written and read again; what a reader does not take, it names with its line.
#include "cli/contact_file.h"
#include "tests/fuzz/property.h"

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
  for (const auto& problem : contents.problems) {
    FUZZ_CHECK(problem.line >= 0 && problem.line <= lines && !problem.what.empty());
  }
}

bool same(const Contact& a, const Contact& b) {
  return qalt::same_fields(a, b) && a.index == b.index && a.coding == b.coding &&
         a.further == b.further;
}

// Whether a phonebook could hold it, so that a file of such contacts is one that was exported. All
// fields are those of a vendor's, further parameters those of the standard commands.
bool storable(Contact contact) {
  if (!qalt::detail::is_further(std::exchange(contact.further, ""))) return false;
  qalt::Info info;
  info.family = qalt::Family::kJcpbr;
  return qalt::detail::check_contact(info, contact).empty();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  constexpr Format kFormats[] = {Format::kJsonLines, Format::kVcard, Format::kCsv};
  fuzz::Input input(bytes, size);
  const Format format = kFormats[input.byte() % 3];
  const std::string text = input.rest();
  const FileContents contents = read_contacts(format, text);
  check_lines(contents, text);
  const auto contacts = contacts_of(contents);
  if (!contents.problems.empty() || !std::all_of(contacts.begin(), contacts.end(), storable)) {
    return 0;
  }
  const std::string written = write_contacts(format, contacts);
  const FileContents read = read_contacts(format, written);
  const auto again = contacts_of(read);
  FUZZ_CHECK(read.problems.empty() && write_contacts(format, again) == written);
  // A vCard knows neither places nor which of the numbers are empty.
  FUZZ_CHECK(format == Format::kVcard ||
             std::equal(again.begin(), again.end(), contacts.begin(), contacts.end(), same));
  return 0;
}
