#include "tests/simulation/handset.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "at/at_line.h"

namespace qalt::simulation {
namespace {

using at::Command;
using at::Form;
using Arguments = std::vector<at::Argument>;
using Lines = std::vector<std::string>;  // of information, without line ends

// Settings that are a number from 0 on.
struct Value {
  std::string_view name;
  int Settings::*place;
  int last;
};
constexpr std::array<Value, 4> kValues = {{
    {"E", &Settings::echo, 1},
    {"Q", &Settings::quiet, 1},
    {"V", &Settings::verbose, 1},
    {"+CMEE", &Settings::errors, 2},
}};

// Answers that are always the same: TS 27.007 5.2, 8.2, 8.3, 8.5.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kTexts = {{
    {"AT+CGMM", "Handset 2"},
    {"AT+CFUN?", "+CFUN: 1"},
    {"AT+CPIN?", "+CPIN: READY"},
    {"AT+CSQ", "+CSQ: 17,99"},
}};

// TS 27.007 9.2.1 and 9.2.2.
constexpr std::array<std::pair<Ending, std::string_view>, 7> kErrorWords = {{
    {Ending::kCardBusy, "SIM busy"},
    {Ending::kInvalidIndex, "invalid index"},
    {Ending::kNotFound, "not found"},
    {Ending::kTextTooLong, "text string too long"},
    {Ending::kTextInvalid, "invalid characters in text string"},
    {Ending::kNumberTooLong, "dial string too long"},
    {Ending::kNumberInvalid, "invalid characters in dial string"},
}};

// A result code without line ends: V.250 5.7.2, TS 27.007 9.1.
std::string words_of(Ending result, const Settings& now) {
  if (result == Ending::kOk) return now.verbose == 1 ? "OK" : "0";
  if (result == Ending::kError || now.errors == 0) return now.verbose == 1 ? "ERROR" : "4";
  if (now.errors == 1) return "+CME ERROR: " + std::to_string(int(result));
  for (const auto& [error, words] : kErrorWords) {
    if (error == result) return "+CME ERROR: " + std::string(words);
  }
  return "";
}

// The short message that +CMGR gives: it looks as if the modem asked for a text.
constexpr std::string_view kMessageHeader =
    "+CMGR: \"REC READ\",\"+4915112345678\",,\"26/11/23,18:00:00+04\"";
constexpr std::u16string_view kMessage = u"type behind\r\n> ";

std::optional<unsigned> number_of(std::string_view digits, int base = 10) {
  unsigned value = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, value, base);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return value;
}

// What +CPBW has behind the text: group, adnumber, adtype, secondtext, email, sip_uri, tel_uri,
// hidden. A +CPBR line has the last of them first.
constexpr size_t kPlain = 4;
constexpr size_t kFurther = 8;
constexpr size_t kAdType = 2;
constexpr size_t kHidden = 7;

// A dial string as TS 24.008 10.5.4.7 knows them.
Ending check_number(const std::string& number, int longest) {
  if (number.size() > size_t(longest)) return Ending::kNumberTooLong;
  const size_t digits = number.starts_with('+') ? 1 : 0;
  const bool dialled = number.find_first_not_of("0123456789*#ABCDPWpw?", digits) == number.npos;
  return dialled && number != "+" ? Ending::kOk : Ending::kNumberInvalid;
}

class Handset : public Machine {
 public:
  explicit Handset(HandsetOptions options) : options_(std::move(options)) {
    contacts_ = options_.contacts;
    power_cycle();
  }

  void power_cycle() override {
    now_ = options_.initial;
    busy_for_ = options_.busy_for;
    line_.clear();
    echo_.clear();
    said_.clear();
  }

  void change_by_itself(int index, const Content& contact) override {
    contacts_.erase(index);
    if (contact) contacts_.emplace(index, *contact);
  }

  void receive(std::string_view bytes) override {
    for (const char c : bytes) {
      if (now_.echo == 1) echo_ += c;
      if (c != '\r') {
        line_ += c;
        continue;
      }
      flush_echo();
      // V.250 5.2.1: what is before "AT" is passed over.
      const std::string line = std::exchange(line_, {});
      if (const size_t begin = line.find("AT"); begin != line.npos) run_line(line.substr(begin));
    }
    flush_echo();
  }

 private:
  void flush_echo() {
    if (!echo_.empty()) said_.push_back({{}, std::exchange(echo_, {})});
  }

  // V.250 5.2.2 and 5.7: the commands run in turn, up to the first that fails; the line has one
  // result code. In words, an answer has a line end before and behind it; otherwise behind it only,
  // and a result code as a number ends with a CR.
  void run_line(std::string_view line) {
    const auto commands = at::split_line(line);
    const bool fails = !commands || (commands->empty() && options_.bare_at_fails);
    Ending result = fails ? Ending::kError : Ending::kOk;
    for (size_t k = 0; result == Ending::kOk && k < commands->size(); ++k) {
      const Command& command = (*commands)[k];
      Lines lines;
      result = run(command, lines);
      const bool slow = command.name.starts_with("+CPB") || command.name == "+CSCS";
      if (slow) said_.push_back({options_.delay, ""});
      for (size_t i = 0; i < lines.size(); ++i) {
        const bool framed = now_.verbose == 1 && (i == 0 || options_.lines_framed);
        said_.push_back({{}, (framed ? "\r\n" : "") + lines[i] + "\r\n"});
      }
    }
    if (now_.quiet == 1) return;
    const std::string words = words_of(result, now_);
    said_.push_back({{}, now_.verbose == 1 ? "\r\n" + words + "\r\n" : words + "\r"});
  }

  Ending run(const Command& command, Lines& lines) {
    if (options_.unknown.contains(command.name)) return Ending::kError;
    for (const Value& value : kValues) {
      if (command.name != value.name) continue;
      if (command.form == Form::kQuery) {
        lines = {command.name + ": " + std::to_string(now_.*value.place)};
        return Ending::kOk;
      }
      const auto number = command.arguments.empty() ? 0 : number_of(command.arguments);
      if (command.form == Form::kTest || !number || int(*number) > value.last)
        return Ending::kError;
      now_.*value.place = int(*number);
      return Ending::kOk;
    }
    const std::string question = command.form == Form::kQuery ? "?" : "";
    for (const auto& [line, answer] : kTexts) {
      if (line != "AT" + command.name + question) continue;
      lines = {std::string(answer)};
      return Ending::kOk;
    }
    if (command.name == "+CMGR") {  // TS 27.005 3.4.3
      lines = {std::string(kMessageHeader), encoded(kMessage)};
      return Ending::kOk;
    }
    if (command.name == "+CSCS") return character_set(command, lines);
    if (command.name.starts_with("+CPB")) return phonebook(command, lines);
    return Ending::kError;
  }

  // TS 27.007 5.5.
  Ending character_set(const Command& command, Lines& lines) {
    if (command.form == Form::kQuery) {
      const std::u16string name(now_.set.begin(), now_.set.end());
      lines = {"+CSCS: \"" + (options_.set_named_in_itself ? encoded(name) : now_.set) + '"'};
      return Ending::kOk;
    }
    for (const char* const set : {"IRA", "UCS2"}) {
      if (!sets_to(command, set)) continue;
      now_.set = set;
      return Ending::kOk;
    }
    return Ending::kError;
  }

  // A text in the set of +CSCS.
  std::string encoded(std::u16string_view text) const {
    const char* const digits = options_.upper_hex ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string bytes;
    for (const char16_t c : text) {
      if (now_.set == "IRA") {
        bytes += c < 0x80 ? char(c) : '?';
      } else {
        for (const int shift : {12, 8, 4, 0}) bytes += digits[c >> shift & 15];
      }
    }
    return bytes;
  }

  std::optional<std::u16string> decoded(std::string_view bytes) const {
    if (now_.set == "IRA") return std::u16string(bytes.begin(), bytes.end());
    std::u16string text;
    for (; !bytes.empty(); bytes.remove_prefix(4)) {
      const auto code = number_of(bytes.substr(0, 4), 16);
      if (bytes.size() < 4 || !code) return std::nullopt;
      text += char16_t(*code);
    }
    return text;
  }

  // Whether the command sets to that word, plain or in the set of +CSCS.
  bool sets_to(const Command& command, std::string_view word) const {
    const auto arguments = at::split_arguments(command.arguments);
    if (command.form != Form::kSet || !arguments || arguments->size() != 1) return false;
    const std::string& value = arguments->front().value;
    return value == word || decoded(value) == std::u16string(word.begin(), word.end());
  }

  Ending phonebook(const Command& command, Lines& lines) {
    if (busy_for_ > 0) {
      --busy_for_;
      return Ending::kCardBusy;
    }
    if (command.name == "+CPBS") return storage(command, lines);
    if (command.name == "+CPBR") return read(command, lines);
    return command.name == "+CPBW" ? write(command) : Ending::kError;
  }

  // TS 27.007 8.11.
  Ending storage(const Command& command, Lines& lines) const {
    if (command.form == Form::kSet) return sets_to(command, "SM") ? Ending::kOk : Ending::kError;
    lines = {"+CPBS: \"SM\"" + comma() + std::to_string(contacts_.size()) + comma() +
             std::to_string(options_.size)};
    return Ending::kOk;
  }

  // 8.12.
  Ending read(const Command& command, Lines& lines) const {
    if (command.form == Form::kTest) {
      lines = {"+CPBR: (" + std::to_string(options_.first) + "-" +
               std::to_string(options_.first + options_.size - 1) + ")," +
               std::to_string(options_.number_length) + "," + std::to_string(options_.text_length)};
      return Ending::kOk;
    }
    const auto arguments = at::split_arguments(command.arguments);
    if (command.form != Form::kSet || !arguments || arguments->size() > 2) return Ending::kError;
    const auto from = number_of(arguments->front().value), to = number_of(arguments->back().value);
    if (!from || !to) return Ending::kError;
    const int first = int(*from), last = int(*to);
    if (!has_index(first) || !has_index(last) || last < first) return Ending::kInvalidIndex;
    const bool alone = arguments->size() == 1;
    const int largest = options_.largest_range;
    if (!alone && largest != 0 && last - first >= largest) return Ending::kError;

    const std::set<int>& refused = alone ? options_.refused_alone : options_.refused_in_range;
    const auto refusal = refused.lower_bound(first);
    const bool refuses = refusal != refused.end() && *refusal <= last;
    if (refuses && !options_.lines_before_refusal) return Ending::kError;
    for (const auto& [index, contact] : contacts_) {
      if (index < first || index > last || (refuses && index >= *refusal)) continue;
      const bool international = contact.number.starts_with('+');
      const bool bare = international && !options_.plus_in_numbers;
      lines.push_back("+CPBR: " + std::to_string(index) + comma() + '"' +
                      contact.number.substr(bare ? 1 : 0) + '"' + comma() +
                      (international ? "145" : "129") + comma() + '"' + encoded(contact.name) +
                      '"' + (options_.further ? contact.further : ""));
    }
    if (refuses) return Ending::kError;
    if (!lines.empty()) return Ending::kOk;
    return alone ? options_.empty_index : options_.empty_range;
  }

  // As a +CPBR line has it.
  std::optional<std::string> further_of(const Arguments& arguments) const {
    std::array<std::string, kFurther> values;
    for (size_t i = kPlain; i < arguments.size(); ++i) {
      const auto& [value, quoted] = arguments[i];
      const size_t place = i - kPlain;
      const bool number = place == kAdType || place == kHidden;
      if (value.empty() && !quoted) continue;
      if (number ? quoted || !number_of(value) : !quoted) return std::nullopt;
      values[(place + 1) % kFurther] = quoted ? '"' + value + '"' : value;
    }
    std::string further;
    for (const std::string& value : values) further += comma() + value;
    further.erase(further.find_last_not_of(", ") + 1);
    return further;
  }

  // 8.14.
  Ending write(const Command& command) {
    const auto given = at::split_arguments(command.arguments);
    const size_t known = kPlain + (options_.further ? kFurther : 0);
    if (command.form != Form::kSet || !given || given->size() > known) return Ending::kError;
    Arguments arguments = *given;
    arguments.resize(std::max(arguments.size(), kPlain));
    const auto index = number_of(arguments[0].value);
    if (!index) return Ending::kError;
    if (!has_index(int(*index))) return Ending::kInvalidIndex;
    const std::string& type = arguments[2].value;
    const auto further = further_of(arguments);
    if (!further || (!type.empty() && type != "129" && type != "145")) return Ending::kError;
    Stored contact{arguments[1].value, {}, *further};
    const Ending result = check_number(contact.number, options_.number_length);
    if (result != Ending::kOk) return result;
    const bool plus = type == "145" && !contact.number.empty() && !contact.number.starts_with('+');
    if (plus) contact.number.insert(0, 1, '+');
    const auto text = decoded(arguments[3].value);
    if (!text) return Ending::kTextInvalid;
    if (text->size() > size_t(options_.text_length)) return Ending::kTextTooLong;
    contact.name = *text;
    if (options_.writes_dropped.contains(int(*index))) return Ending::kOk;
    // A record that holds nothing is a free one.
    const Content content = contact == Stored{} ? Content() : contact;
    if (content == at(int(*index))) return Ending::kOk;
    change_by_itself(int(*index), content);
    changed(int(*index));
    return Ending::kOk;
  }

  bool has_index(int index) const {
    return index >= options_.first && index - options_.first < options_.size;
  }

  // Between values.
  std::string comma() const { return options_.blanks ? ", " : ","; }

  const HandsetOptions options_;
  Settings now_;
  int busy_for_ = 0;
  std::string line_;
  std::string echo_;  // not yet said
};

}  // namespace

std::unique_ptr<Machine> new_handset(HandsetOptions options) {
  return std::make_unique<Handset>(std::move(options));
}

}  // namespace qalt::simulation
