// vCard 3.0 (RFC 2426) and 4.0 (RFC 6350), as address books write them; written as 4.0.
//
// A name (FN, else N), telephone numbers (TEL), an address (EMAIL) and a note (NOTE) are taken.
// Preferred numbers come first, PREF=1 before PREF=2, others in their order. Both names are
// written: phones take N, and a card of version 4 has to have FN.
#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "cli/contact_file.h"

namespace qalt::cli {
namespace {

constexpr size_t kFoldedLength = 75;  // bytes of a line, its end not counted

struct Property {
  int line = 0;
  std::string name;        // upper case, without its group
  std::string parameters;  // upper case
  std::string value;
};

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
  }
  return text;
}

// The content lines: a line that begins with a blank goes on with the one before it.
std::vector<std::pair<int, std::string>> unfolded(const std::string& text) {
  std::vector<std::pair<int, std::string>> lines;
  int number = 1;
  for (size_t start = 0; start < text.size(); ++number) {
    const size_t end = std::min(text.find('\n', start), text.size());
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!lines.empty() && !line.empty() && (line[0] == ' ' || line[0] == '\t')) {
      lines.back().second.append(line, 1);
    } else if (!line.empty()) {
      lines.emplace_back(number, std::move(line));
    }
    start = end + 1;
  }
  return lines;
}

// The first of `characters` outside double quotes, or the end.
size_t find_unquoted(const std::string& text, std::string_view characters) {
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (!quoted && characters.find(text[i]) != characters.npos) return i;
  }
  return text.npos;
}

bool read_property(int line, const std::string& text, Property& property) {
  const size_t colon = find_unquoted(text, ":");
  if (colon == text.npos) return false;
  const std::string head = text.substr(0, colon);
  const size_t semicolon = std::min(find_unquoted(head, ";"), head.size());
  const size_t dot = head.substr(0, semicolon).find('.');
  const size_t start = dot == head.npos ? 0 : dot + 1;
  property = {line, upper(head.substr(start, semicolon - start)), upper(head.substr(semicolon)),
              text.substr(colon + 1)};
  return !property.name.empty();
}

// The components of a value at unescaped semicolons, each without its escapes.
std::vector<std::string> components(const std::string& value) {
  std::vector<std::string> parts(1);
  for (size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == ';') {
      parts.emplace_back();
    } else if (c != '\\' || i + 1 == value.size()) {
      parts.back() += c;
    } else {
      const char meant = value[++i];
      parts.back() += meant == 'n' || meant == 'N' ? '\n' : meant;
    }
  }
  return parts;
}

// A text has no components: a semicolon that is not escaped belongs to it.
std::string plain_text(const std::string& value) {
  std::string text;
  for (const std::string& part : components(value)) text += ";" + part;
  return text.substr(1);
}

// N is family; given; additional; prefixes; suffixes: read as people say it.
std::string spoken_name(const std::string& value) {
  const std::vector<std::string> parts = components(value);
  std::string name;
  for (const size_t k : {3, 1, 2, 0, 4}) {
    if (k < parts.size() && !parts[k].empty()) name += (name.empty() ? "" : " ") + parts[k];
  }
  return name;
}

// A number without what people write between its digits; "tel:" is the form of a URI.
std::string dialled(std::string value) {
  if (upper(value.substr(0, 4)) == "TEL:") value.erase(0, 4);
  std::string number;
  for (const char c : value) {
    if (std::string_view(" -.()/").find(c) == std::string_view::npos) number += c;
  }
  // A no-break space, which some address books group digits with.
  for (size_t at; (at = number.find("\xC2\xA0")) != number.npos;) number.erase(at, 2);
  return number;
}

// How much a property is preferred: 1 the most, as vCard 4 has it ("PREF=1" to "PREF=100"). Version
// 3 has a type of that name ("TYPE=cell,pref", "TYPE=pref").
int preference(const std::string& parameters) {
  constexpr int kNone = 101;
  const auto cut = [](const std::string& text, std::string_view separator) {
    std::vector<std::string> parts;
    for (std::string rest = text;;) {
      const size_t end = find_unquoted(rest, separator);
      parts.push_back(rest.substr(0, end));
      if (end == rest.npos) return parts;
      rest.erase(0, end + 1);
    }
  };
  int best = kNone;
  for (const std::string& parameter : cut(parameters, ";")) {
    const size_t equals = std::min(parameter.find('='), parameter.size());
    const std::string name = parameter.substr(0, equals);
    std::string values = equals < parameter.size() ? parameter.substr(equals + 1) : name;
    values.erase(std::remove(values.begin(), values.end(), '"'), values.end());
    if (name == "PREF") {
      const auto rank = whole_number(values);
      best = std::min(best, rank && *rank > 0 ? *rank : 1);
    } else if (name == "TYPE") {
      const std::vector<std::string> types = cut(values, ",");
      if (std::find(types.begin(), types.end(), "PREF") != types.end()) best = 1;
    }
  }
  return best;
}

class CardReader {
 public:
  explicit CardReader(FileContents& contents) : contents_(contents) {}

  void take(const Property& property) {
    const std::string value = upper(property.value);
    if (property.name == "BEGIN" && value == "VCARD") {
      if (open_) problem(property.line, "BEGIN:VCARD before the END of the card before");
      open_ = true;
      record_ = {};
      record_.line = property.line;
      numbers_.clear();
      name_.clear();
      return;
    }
    if (!open_) {
      problem(property.line, "stands outside a card");
    } else if (property.name == "END" && value == "VCARD") {
      finish();
    } else {
      take_inside(property);
    }
  }

  void end() {
    if (open_) problem(record_.line, "this card has no END:VCARD");
  }

 private:
  void problem(int line, const std::string& what) { contents_.problems.push_back({line, what}); }

  void take_inside(const Property& property) {
    Contact& contact = record_.contact;
    if (property.parameters.find("QUOTED-PRINTABLE") != std::string::npos) {
      problem(property.line, "quoted-printable is not read; save the file as vCard 3.0 or 4.0");
    } else if (property.name == "VERSION") {
      if (property.value != "3.0" && property.value != "4.0") {
        problem(property.line, "vCard version " + property.value + " is not read; save the file " +
                                   "as vCard 3.0 or 4.0");
      }
    } else if (property.name == "FN") {
      take_text(property, contact.name);
    } else if (property.name == "N") {
      name_ = spoken_name(property.value);
    } else if (property.name == "TEL") {
      numbers_.emplace(preference(property.parameters), dialled(property.value));
    } else if (property.name == "EMAIL") {
      take_text(property, contact.email);
    } else if (property.name == "NOTE") {
      take_text(property, contact.extra);
    } else {
      ignore(property.name);
    }
  }

  // Of several values the first is taken.
  void take_text(const Property& property, std::string& member) {
    const std::string value = plain_text(property.value);
    if (member.empty()) {
      member = value;
    } else if (!value.empty() && value != member) {
      record_.surplus.push_back("a second " + property.name + " \"" + value + "\"");
    }
  }

  void ignore(const std::string& name) {
    constexpr std::array<std::string_view, 4> kAboutTheCard = {"UID", "PRODID", "REV", "KIND"};
    const auto& known = contents_.ignored;
    if (std::find(kAboutTheCard.begin(), kAboutTheCard.end(), name) == kAboutTheCard.end() &&
        std::find(known.begin(), known.end(), name) == known.end()) {
      contents_.ignored.push_back(name);
    }
  }

  void finish() {
    Contact& contact = record_.contact;
    if (contact.name.empty()) contact.name = name_;
    std::string* const members[] = {&contact.number, &contact.number2, &contact.number3};
    size_t used = 0;
    for (const auto& [rank, number] : numbers_) {
      if (number.empty()) continue;
      if (used < 3) {
        *members[used++] = number;
      } else {
        record_.surplus.push_back("a further number " + number);
      }
    }
    contents_.records.push_back(std::move(record_));
    open_ = false;
  }

  FileContents& contents_;
  Record record_;
  std::multimap<int, std::string> numbers_;  // by preference
  std::string name_;
  bool open_ = false;
};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (!fits_vcard(c)) continue;
    if (c == '\\' || c == ',' || c == ';') result += '\\';
    if (c == '\n') {
      result += "\\n";
    } else {
      result += c;
    }
  }
  return result;
}

// A content line, folded between characters.
std::string folded_line(const std::string& line) {
  std::string result;
  size_t length = 0;
  for (size_t i = 0; i < line.size();) {
    size_t next = i + 1;
    while (next < line.size() && (uint8_t(line[next]) & 0xC0) == 0x80) ++next;
    if (length + next - i > kFoldedLength) {
      result += "\r\n ";
      length = 1;
    }
    result.append(line, i, next - i);
    length += next - i;
    i = next;
  }
  return result + "\r\n";
}

}  // namespace

bool fits_vcard(char c) {
  return uint8_t(c) >= ' ' ? c != 0x7F : c == '\t' || c == '\n';
}

FileContents read_vcards(const std::string& text) {
  FileContents contents;
  CardReader reader(contents);
  for (const auto& [line, content] : unfolded(text)) {
    Property property;
    if (read_property(line, content, property)) {
      reader.take(property);
    } else {
      contents.problems.push_back({line, "is no vCard property (NAME:value)"});
    }
  }
  reader.end();
  return contents;
}

std::string write_vcards(const std::vector<Contact>& contacts) {
  std::string text;
  for (const Contact& contact : contacts) {
    text += "BEGIN:VCARD\r\nVERSION:4.0\r\n" + folded_line("FN:" + escaped(contact.name)) +
            folded_line("N:" + escaped(contact.name) + ";;;;");
    for (const std::string& number : {contact.number, contact.number2, contact.number3}) {
      if (!number.empty()) text += folded_line("TEL:" + escaped(number));
    }
    if (!contact.email.empty()) text += folded_line("EMAIL:" + escaped(contact.email));
    const std::string note = escaped(contact.extra);
    if (!note.empty()) text += folded_line("NOTE:" + note);
    text += "END:VCARD\r\n";
  }
  return text;
}

}  // namespace qalt::cli
