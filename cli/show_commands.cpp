// The commands that show contacts: info, list, get, find.
#include <algorithm>
#include <cwctype>

#include "cli/context.h"
#include "cli/failure.h"

namespace qalt::cli {
namespace {

const char* family_text(Family family) {
  constexpr const char* kTexts[] = {"standard (+CPBR, +CPBW)", "vendor (+JCPBR, +JCPBW)",
                                    "vendor (^SCPBR, ^SCPBW)"};
  return kTexts[int(family)];
}

void show(Context& context, const std::vector<Contact>& contacts) {
  context.end_progress();
  context.print(context.json() ? array_of(contacts) : table_of(contacts, context.columns()));
}

// Names of a modem without UCS2 come in ASCII, with marks for what that does not have.
void warn_if_plain(Context& context) {
  if (!context.book().info().plain) return;
  context.warn("the modem has no character set UCS2: characters outside ASCII are missing");
}

std::u32string folded(const std::string& text) {
  std::u32string result = detail::code_points(text).value_or(U"");
  for (char32_t& c : result) c = char32_t(std::towlower(wint_t(c)));
  return result;
}

bool contains(const std::u32string& text, const std::u32string& part) {
  return text.find(part) != text.npos;
}

// A number is found by its digits, however the user groups them.
std::string digits_of(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (std::string_view(" -./()").find(c) == std::string_view::npos) digits += c;
  }
  const bool number = digits.find_first_not_of("+0123456789*#pPwW?") == digits.npos;
  return number ? digits : "";
}

bool matches(const Contact& contact, const std::u32string& text, const std::string& digits) {
  for (const FieldRow& field : kFields) {
    const std::string& value = contact.*field.member;
    if (field.kind == FieldKind::kNumber) {
      if (!digits.empty() && value.find(digits) != value.npos) return true;
    } else if (contains(folded(value), text)) {
      return true;
    }
  }
  return false;
}

}  // namespace

void run_info(Context& context) {
  Phonebook& book = context.book();
  {
    const Phonebook::Job job(book);  // tells whether names come whole
    take(job.result());
  }
  const Info& info = book.info();
  if (context.json()) {
    Json object = {{"used", info.used == kUncounted ? Json() : Json(info.used)},
                   {"total", info.total},
                   {"first", info.first},
                   {"last", info.last},
                   {"family", detail::family_name(info.family)},
                   {"usim", info.usim},
                   {"ucs2", !info.plain},
                   {"lengths", Json::object()}};
    for (const FieldRow& field : kFields) {
      if (detail::carries(info.family, field.type)) {
        object["lengths"][field.key] = info.lengths[size_t(field.type)];
      }
    }
    context.print(line_of(object) + "\n");
    return;
  }
  std::string lengths;
  for (const FieldRow& field : kFields) {
    if (!detail::carries(info.family, field.type)) continue;
    const int length = info.lengths[size_t(field.type)];
    lengths += (lengths.empty() ? "" : ", ") + std::string(field.key) + " " +
               (length > 0 ? std::to_string(length) : "not told");
  }
  const std::string used = info.used == kUncounted ? "? (not told)" : std::to_string(info.used);
  context.print("Entries   " + used + " of " + std::to_string(info.total) + " used\nIndices   " +
                std::to_string(info.first) + " to " + std::to_string(info.last) + "\nCommands  " +
                family_text(info.family) + "\nCard      " +
                (info.usim ? "USIM phonebook" : "SIM phonebook") + "\nLengths   " + lengths + "\n");
  warn_if_plain(context);
}

void run_list(Context& context) {
  const Arguments& arguments = context.arguments();
  Phonebook& book = context.book();
  const int first = arguments.from.value_or(book.info().first);
  const int last = arguments.to.value_or(book.info().last);
  if (first > last && arguments.from && arguments.to) {
    throw Failure(Cause::kUsage, "--from is greater than --to");
  }
  if (first > last) {
    throw Failure(Cause::kUsage,
                  arguments.from ? "--from " + std::to_string(first) + " is behind the last index"
                                 : "--to " + std::to_string(last) + " is before the first index",
                  "the phonebook has the indices " + std::to_string(book.info().first) + " to " +
                      std::to_string(book.info().last));
  }
  const Reading reading = take(book.read(first, last));
  show(context, reading.contacts);
  warn_if_plain(context);
  context.warn_unreadable(reading.unreadable, reading.missing);
}

void run_get(Context& context) {
  Phonebook& book = context.book();
  const Phonebook::Job job(book);
  take(job.result());
  std::vector<Contact> contacts;
  std::vector<Error> errors;
  for (const int index : context.arguments().indices) {
    auto contact = book.get(index);
    if (contact) {
      contacts.push_back(std::move(*contact));
    } else {
      errors.push_back(contact.error());
    }
  }
  if (!contacts.empty() || context.json()) show(context, contacts);
  for (const Error& error : errors) context.failed(error);
}

void run_find(Context& context) {
  const std::string& wanted = context.arguments().text;
  const std::u32string text = folded(wanted);
  if (text.empty()) throw Failure(Cause::kUsage, "there is nothing to look for");
  Reading reading = take(context.book().read_all());
  std::vector<Contact>& contacts = reading.contacts;
  const std::string digits = digits_of(wanted);
  contacts.erase(
      std::remove_if(contacts.begin(), contacts.end(),
                     [&](const Contact& contact) { return !matches(contact, text, digits); }),
      contacts.end());
  if (!contacts.empty() || context.json()) show(context, contacts);
  context.warn_unreadable(reading.unreadable, reading.missing);
  if (contacts.empty()) {
    context.failed({Cause::kNotFound, "no contact has \"" + wanted + "\"", ""});
  }
}

}  // namespace qalt::cli
