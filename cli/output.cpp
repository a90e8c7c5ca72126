#include "cli/output.h"

#include <algorithm>
#include <iostream>

#include "cli/terminal.h"

namespace qalt::cli {
namespace {

const char* class_name(Cause cause) {
  switch (cause) {
    case Cause::kRefused:
      return "refused";
    case Cause::kUsage:
      return "usage";
    case Cause::kNoAnswer:
      return "no-answer";
    case Cause::kNotFound:
      return "not-found";
    case Cause::kFull:
      return "full";
    case Cause::kDiffers:
      return "differs";
    case Cause::kBadInput:
      return "bad-file";
    case Cause::kOutput:
      return "output";
    case Cause::kCollision:
      return "collision";
    case Cause::kInterrupted:
      return "interrupted";
  }
  return "";
}

// What a contact has beside name and number, each with its key, in lines of at most `width`
// columns.
std::vector<std::string> other_fields(const Contact& contact, int width) {
  std::vector<std::string> lines;
  const auto add = [&](const char* key, const std::string& value) {
    if (value.empty()) return;
    const std::string item = std::string(key) + " " + printable(value);
    if (!lines.empty() && display_width(lines.back()) + 2 + display_width(item) <= width) {
      lines.back() += "  " + item;
      return;
    }
    for (const std::string& piece : wrapped(item, width)) lines.push_back(piece);
  };
  for (const FieldRow& field : kFields) {
    const bool in_columns = field.member == &Contact::name || field.member == &Contact::number;
    if (!in_columns) add(field.key, contact.*field.member);
  }
  add("further", contact.further);
  return lines;
}

std::string without_trailing_blanks(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

Json json_of(const Contact& contact) {
  Json object;
  object["index"] = contact.index;
  for (const FieldRow& field : kFields) object[field.key] = contact.*field.member;
  object["coding"] = contact.coding;
  object["further"] = contact.further;
  return object;
}

std::string line_of(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string array_of(const std::vector<Contact>& contacts) {
  std::string text = "[";
  for (const Contact& contact : contacts) {
    text += (text.size() == 1 ? "\n " : ",\n ") + line_of(json_of(contact));
  }
  return text + (contacts.empty() ? "]\n" : "\n]\n");
}

std::string table_of(const std::vector<Contact>& contacts, int columns) {
  const std::string kIndex = "Index";
  const std::string kName = "Name";
  const std::string kNumber = "Number";
  constexpr int kGap = 2;
  const int index_width = int(kIndex.size());
  const int indent = index_width + kGap;
  int name_width = int(kName.size());
  int number_width = int(kNumber.size());
  for (const Contact& contact : contacts) {
    name_width = std::max(name_width, display_width(printable(contact.name)));
    number_width = std::max(number_width, int(contact.number.size()));
  }
  // A long number does not push the names away: it may end in a wider line.
  const int room = columns - indent - kGap - std::min(number_width, columns / 3);
  name_width = std::min(name_width, room);

  const auto row = [&](const std::string& index, const std::string& name,
                       const std::string& number) {
    const std::string left(size_t(std::max(0, index_width - int(index.size()))), ' ');
    return without_trailing_blanks(left + index + "  " + padded(name, name_width) + "  " + number) +
           "\n";
  };
  std::string text = row(kIndex, kName, kNumber);
  for (const Contact& contact : contacts) {
    const std::vector<std::string> name = wrapped(printable(contact.name), name_width);
    text += row(std::to_string(contact.index), name.front(), printable(contact.number));
    for (size_t i = 1; i < name.size(); ++i) text += row("", name[i], "");
    for (const std::string& line : other_fields(contact, columns - indent - 2)) {
      text += std::string(size_t(indent) + 2, ' ') + line + "\n";
    }
  }
  return text;
}

std::string label_of(const Contact& contact) {
  std::string text;
  if (!contact.name.empty()) text = "\"" + printable(contact.name) + "\"";
  if (!contact.number.empty()) text += (text.empty() ? "" : " ") + printable(contact.number);
  return text;
}

std::string text_of(const Remainder& rest) {
  std::string text;
  for (const int index : rest.unknown) {
    text += (text.empty() ? "; what became of index " : ", ") + std::to_string(index);
  }
  if (!rest.unknown.empty()) text += " is not known";
  if (rest.left > 0) text += "; " + std::to_string(rest.left) + " left to do";
  return text;
}

void say_error(const Error& error, bool json) {
  if (json) {
    Json object;
    object["error"] = {{"code", int(error.cause)},
                       {"class", class_name(error.cause)},
                       {"message", error.what},
                       {"advice", error.advice}};
    if (error.fate != Fate::kNotDone) {
      object["error"]["fate"] = error.fate == Fate::kDone ? "done" : "unknown";
    }
    std::cerr << line_of(object) << "\n";
    return;
  }
  // The library's words may hold what a modem sent; line ends are the tool's own.
  std::string text = "qalt-pb: " + error.what;
  if (!error.advice.empty()) text += "; " + error.advice;
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    std::cerr << printable(text.substr(start, end - start)) << "\n";
    start = end + 1;
  }
}

void say_warning(const std::string& text, bool json) {
  if (json) {
    std::cerr << line_of(Json{{"warning", {{"message", text}}}}) << "\n";
  } else {
    std::cerr << "qalt-pb: warning: " << printable(text) << "\n";
  }
}

}  // namespace qalt::cli
