// The commands that change single contacts: add, set, delete, clear.
#include <algorithm>
#include <utility>

#include "cli/context.h"
#include "cli/failure.h"
#include "cli/second_look.h"
#include "cli/write_turn.h"

namespace qalt::cli {
namespace {

void show_stored(Context& context, const Contact& contact) {
  context.print(context.json() ? line_of(json_of(contact)) + "\n"
                               : "index " + std::to_string(contact.index) + ": " +
                                     label_of(contact) + " is stored\n");
}

// Deletes and says how far it came, also when it ends early.
void erase_all(Context& context, const std::vector<int>& indices) {
  Phonebook& book = context.book();
  const Phonebook::Job job(book);
  take(job.result());
  std::vector<int> done;
  Remainder rest = {{}, indices.size()};
  for (const int index : indices) {
    const auto erased = book.erase(index);
    if (!context.goes_on(erased, index, rest)) break;
    if (!erased) continue;
    done.push_back(index);
    context.progress("deleting " + std::to_string(done.size()) + " of " +
                     std::to_string(indices.size()));
  }
  context.end_progress();
  context.print(
      context.json()
          ? line_of(Json{{"deleted", done}, {"unknown", rest.unknown}, {"left", rest.left}}) + "\n"
          : std::to_string(done.size()) + " of " + std::to_string(indices.size()) +
                (indices.size() == 1 ? " contact" : " contacts") + " deleted" + text_of(rest) +
                "\n");
}

}  // namespace

void run_add(Context& context) {
  const Arguments& arguments = context.arguments();
  Contact contact;
  contact.index = arguments.index.value_or(kNoIndex);
  for (const FieldRow& field : kFields) {
    contact.*field.member = arguments.fields.fields[size_t(field.type)].value_or("");
  }
  if (contact.name.empty() && contact.number.empty()) {
    throw Failure(Cause::kUsage, "a contact needs --name or --number");
  }
  Phonebook& book = context.book();
  const WriteTurn turn;
  const bool overwrite = arguments.force && arguments.index.has_value();
  show_stored(context, take(overwrite ? book.put(contact) : book.add(contact)));
}

void run_set(Context& context) {
  const Arguments& arguments = context.arguments();
  bool named = false;
  for (const auto& field : arguments.fields.fields) named = named || field.has_value();
  if (!named) throw Failure(Cause::kUsage, "no field is named", "say what to change, as --number");
  Phonebook& book = context.book();
  const WriteTurn turn;
  show_stored(context, take(book.change(*arguments.index, arguments.fields)));
}

void run_delete(Context& context) {
  Phonebook& book = context.book();
  // All are looked at before the first is deleted. One that is named twice counts once.
  std::vector<int> indices;
  Reading shown;
  std::string names;
  for (const int index : context.arguments().indices) {
    if (std::find(indices.begin(), indices.end(), index) != indices.end()) continue;
    indices.push_back(index);
    shown.contacts.push_back(take(book.get(index)));
    names += "  " + std::to_string(index) + " " + label_of(shown.contacts.back()) + "\n";
  }
  if (context.confirm(names + "delete?")) {
    Reading now;
    for (const int index : indices) {
      for (Contact& contact : take(book.read(index, index)).contacts) {
        now.contacts.push_back(std::move(contact));
      }
    }
    expect_same(shown, now);
  }
  erase_all(context, indices);
}

void run_clear(Context& context) {
  const Reading reading = take(context.book().read_all());
  std::vector<int> indices;
  for (const Contact& contact : reading.contacts) indices.push_back(contact.index);
  for (const Unreadable& gap : reading.unreadable) indices.push_back(gap.index);
  if (!indices.empty() &&
      context.confirm("delete all " + std::to_string(indices.size()) + " contacts?")) {
    expect_same(reading, take(context.book().read_all()));
  }
  erase_all(context, indices);
}

}  // namespace qalt::cli
