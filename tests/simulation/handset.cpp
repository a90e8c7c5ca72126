// A second modem, written apart from the first one by the standards alone: ITU-T V.250, 3GPP
// TS 27.007 and TS 27.005. What one does otherwise than another is by chance.
#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <utility>

#include "at/at_line.h"
#include "tests/simulation/scenario.h"

namespace qalt::simulation {
namespace {

using at::Command;
using at::Form;
using Arguments = std::vector<at::Argument>;
using Lines = std::vector<std::string>;  // of information, without line ends

// How a command ends: with the number of an error of the telephone, TS 27.007 9.2, or with another
// result code.
enum class Ending {
  kOk = -2,
  kError = -1,
  kCardBusy = 14,
  kInvalidIndex = 21,
  kNotFound = 22,
  kTextTooLong = 24,
  kTextInvalid = 25,
  kNumberTooLong = 26,
};

// What commands change, and what power-up brings back.
struct Settings {
  int echo = 1;             // V.250 6.2.4
  int quiet = 0;            // V.250 6.2.5
  int verbose = 1;          // V.250 6.2.6
  int errors = 0;           // TS 27.007 9.1, +CMEE
  std::string set = "IRA";  // TS 27.007 5.5, +CSCS: that or "UCS2"
};

// Settings that are a number.
constexpr std::array<std::pair<std::string_view, int Settings::*>, 4> kNumbers = {{
    {"E", &Settings::echo},
    {"Q", &Settings::quiet},
    {"V", &Settings::verbose},
    {"+CMEE", &Settings::errors},
}};

// Answers that are always the same: TS 27.007 5.2, 8.2, 8.3, 8.5.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kTexts = {{
    {"AT+CGMM", "Handset 2"},
    {"AT+CFUN?", "+CFUN: 1"},
    {"AT+CPIN?", "+CPIN: READY"},
    {"AT+CSQ", "+CSQ: 17,99"},
}};

// A result code without line ends: V.250 5.7.2, TS 27.007 9.1.
std::string words_of(Ending result, const Settings& now) {
  if (result == Ending::kOk) return now.verbose == 1 ? "OK" : "0";
  if (result == Ending::kError || now.errors == 0) return now.verbose == 1 ? "ERROR" : "4";
  return "+CME ERROR: " + std::to_string(int(result));
}

constexpr std::string_view kMessageHeader =
    "+CMGR: \"REC READ\",\"+4915112345678\",,\"26/11/23,18:00:00+04\"";

std::optional<int> number_of(std::string_view digits, int base = 10) {
  int value = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, value, base);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return value;
}

constexpr size_t kNumberLength = 20;

// To a read of empty indices.
constexpr std::array<Ending, 3> kEmpty = {Ending::kOk, Ending::kNotFound, Ending::kError};

// What +CPBW has behind the text: group, adnumber, adtype, secondtext, email, sip_uri, tel_uri,
// hidden. A +CPBR line has the last of them first.
constexpr size_t kPlain = 4;
constexpr size_t kFurther = 8;
constexpr size_t kAdType = 2;
constexpr size_t kHidden = 7;

class Handset : public Machine {
 public:
  Handset(Chance& chance, Scenario& scenario)
      : chance_(chance.branch()),
        first_(scenario.first),
        last_(scenario.first + scenario.size - 1),
        delay_(scenario.delay) {
    for (int k = chance_.below(scenario.size); k > 0; --k) {
      // What is stored may be longer than what is announced.
      Stored stored = new_contact(chance_, k, 0);
      if (further_ && chance_.one_in(2)) stored.further = some_further(k);
      contacts_[chance_.between(first_, last_)] = stored;
    }
    if (chance_.one_in(6)) unknown_ = {"+CMEE"};
    if (chance_.one_in(8)) unknown_ = {"+CFUN", "+CSQ"};
    if (chance_.one_in(4)) refused_in_range_ = some_indices(4);
    for (const int index : refused_in_range_) {
      if (!chance_.one_in(4)) refused_alone_.insert(index);
    }
    if (chance_.one_in(12)) writes_dropped_ = some_indices(10);
    power_cycle();

    scenario.plain = !further_ && !blanks_ && upper_hex_;
    scenario.hidden = refused_in_range_;
    scenario.drops = !writes_dropped_.empty();
    scenario.refuses = empty_index_ == Ending::kError || empty_range_ == Ending::kError ||
                       largest_range_ != 0 || !refused_in_range_.empty();
  }

  void power_cycle() override {
    now_ = initial_;
    busy_for_ = busy_after_start_;
    line_.clear();
    said_.clear();
  }

  void change_by_itself(int index, const Content& contact) override {
    contacts_.erase(index);
    if (contact) contacts_.emplace(index, *contact);
  }

  // A line comes with its end.
  void receive(std::string_view bytes) override {
    if (now_.echo == 1) said_.push_back({{}, std::string(bytes)});
    line_ += bytes;
    if (!bytes.ends_with('\r')) return;
    const std::string line = std::exchange(line_, {});
    // V.250 5.2.1: what is before "AT" is passed over.
    const size_t begin = line.find("AT");
    if (begin != line.npos) run_line(line.substr(begin, line.size() - 1 - begin));
  }

 private:
  // Further parameters as a phone has them, and as TS 27.007 8.14 orders them.
  std::string some_further(int number) {
    return ",0,\"group " + std::to_string(number) + "\",\"555" + std::to_string(number) +
           "\",129,\"" + (chance_.one_in(2) ? "" : "second") + "\",\"a@b;c\"";
  }

  std::set<int> some_indices(int most) {
    std::set<int> indices;
    for (int k = chance_.between(1, most); k > 0; --k) {
      indices.insert(chance_.between(first_, last_));
    }
    return indices;
  }

  // V.250 5.2.2 and 5.7: the commands run in turn, up to the first that fails; the line has one
  // result code. In words, an answer has a line end before and behind it; otherwise behind it only,
  // and a result code as a number ends with a CR.
  void run_line(std::string_view line) {
    const auto commands = at::split_line(line);
    const bool fails = !commands || (commands->empty() && bare_at_fails_);
    Ending result = fails ? Ending::kError : Ending::kOk;
    for (size_t k = 0; result == Ending::kOk && k < commands->size(); ++k) {
      const Command& command = (*commands)[k];
      Lines lines;
      result = run(command, lines);
      const bool slow = command.name.starts_with("+CPB") || command.name == "+CSCS";
      if (slow) said_.push_back({delay_, ""});
      for (size_t i = 0; i < lines.size(); ++i) {
        const bool framed = now_.verbose == 1 && (i == 0 || lines_framed_);
        said_.push_back({{}, (framed ? "\r\n" : "") + lines[i] + "\r\n"});
      }
    }
    if (now_.quiet == 1) return;
    const std::string words = words_of(result, now_);
    said_.push_back({{}, now_.verbose == 1 ? "\r\n" + words + "\r\n" : words + "\r"});
  }

  Ending run(const Command& command, Lines& lines) {
    if (unknown_.contains(command.name)) return Ending::kError;
    for (const auto& [name, place] : kNumbers) {
      if (command.name != name) continue;
      if (command.form == Form::kQuery) {
        lines = {command.name + ": " + std::to_string(now_.*place)};
        return Ending::kOk;
      }
      const auto number = command.arguments.empty() ? 0 : number_of(command.arguments);
      if (!number) return Ending::kError;
      now_.*place = *number;
      return Ending::kOk;
    }
    const std::string question = command.form == Form::kQuery ? "?" : "";
    for (const auto& [line, answer] : kTexts) {
      if (line != "AT" + command.name + question) continue;
      lines = {std::string(answer)};
      return Ending::kOk;
    }
    if (command.name == "+CMGR") {  // TS 27.005 3.4.3; the text is like a prompt
      lines = {std::string(kMessageHeader), encoded(u"type behind\r\n> ")};
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
      lines = {"+CSCS: \"" + (set_named_in_itself_ ? encoded(name) : now_.set) + '"'};
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
    const char* const digits = upper_hex_ ? "0123456789ABCDEF" : "0123456789abcdef";
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
             std::to_string(last_ - first_ + 1)};
    return Ending::kOk;
  }

  // 8.12.
  Ending read(const Command& command, Lines& lines) const {
    if (command.form == Form::kTest) {
      lines = {"+CPBR: (" + std::to_string(first_) + "-" + std::to_string(last_) + ")," +
               std::to_string(kNumberLength) + "," + std::to_string(text_length_)};
      return Ending::kOk;
    }
    const auto arguments = at::split_arguments(command.arguments);
    if (command.form != Form::kSet || !arguments || arguments->size() > 2) return Ending::kError;
    const auto from = number_of(arguments->front().value), to = number_of(arguments->back().value);
    if (!from || !to) return Ending::kError;
    const int first = *from, last = *to;
    if (!has_index(first) || !has_index(last) || last < first) return Ending::kInvalidIndex;
    const bool alone = arguments->size() == 1;
    if (!alone && largest_range_ != 0 && last - first >= largest_range_) return Ending::kError;

    const std::set<int>& refused = alone ? refused_alone_ : refused_in_range_;
    const auto refusal = refused.lower_bound(first);
    const bool refuses = refusal != refused.end() && *refusal <= last;
    if (refuses && !lines_before_refusal_) return Ending::kError;
    for (const auto& [index, contact] : contacts_) {
      if (index < first || index > last || (refuses && index >= *refusal)) continue;
      const bool international = contact.number.starts_with('+');
      const bool bare = international && !plus_in_numbers_;
      lines.push_back("+CPBR: " + std::to_string(index) + comma() + '"' +
                      contact.number.substr(bare ? 1 : 0) + '"' + comma() +
                      (international ? "145" : "129") + comma() + '"' + encoded(contact.name) +
                      '"' + (further_ ? contact.further : ""));
    }
    if (refuses) return Ending::kError;
    if (!lines.empty()) return Ending::kOk;
    return alone ? empty_index_ : empty_range_;
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
    const size_t known = kPlain + (further_ ? kFurther : 0);
    if (command.form != Form::kSet || !given || given->size() > known) return Ending::kError;
    Arguments arguments = *given;
    arguments.resize(std::max(arguments.size(), kPlain));
    const auto index = number_of(arguments[0].value);
    if (!index) return Ending::kError;
    if (!has_index(*index)) return Ending::kInvalidIndex;
    const std::string& type = arguments[2].value;
    const auto further = further_of(arguments);
    if (!further || (!type.empty() && type != "129" && type != "145")) return Ending::kError;
    Stored contact{arguments[1].value, {}, *further};
    if (contact.number.size() > kNumberLength) return Ending::kNumberTooLong;
    const bool plus = type == "145" && !contact.number.empty() && !contact.number.starts_with('+');
    if (plus) contact.number.insert(0, 1, '+');
    const auto text = decoded(arguments[3].value);
    if (!text) return Ending::kTextInvalid;
    if (text->size() > size_t(text_length_)) return Ending::kTextTooLong;
    contact.name = *text;
    if (writes_dropped_.contains(*index)) return Ending::kOk;
    // A record that holds nothing is a free one.
    const Content content = contact == Stored{} ? Content() : contact;
    if (content == at(*index)) return Ending::kOk;
    change_by_itself(*index, content);
    changed(*index);
    return Ending::kOk;
  }

  bool has_index(int index) const { return index >= first_ && index <= last_; }
  // Between values.
  std::string comma() const { return blanks_ ? ", " : ","; }

  Chance chance_;
  // As somebody left it.
  const Settings initial_ = {.echo = chance_.below(2),
                             .quiet = chance_.one_in(8),
                             .verbose = !chance_.one_in(5),
                             .errors = chance_.below(2)};
  std::set<std::string> unknown_;                 // commands; without +CMEE errors stay as they are
  const bool bare_at_fails_ = chance_.one_in(6);  // ERROR to AT alone
  const bool lines_framed_ = chance_.one_in(4);   // a line end before each line, too
  const bool blanks_ = chance_.one_in(3);         // after commas
  const bool upper_hex_ = !chance_.one_in(3);     // of UCS2
  const bool set_named_in_itself_ = chance_.one_in(3);  // as "0055004300530032" for UCS2

  // The phonebook.
  const int first_;
  const int last_;
  const Time delay_;
  const int text_length_ = chance_.between(8, 20);
  const int busy_after_start_ = chance_.one_in(5) ? chance_.below(8) : 0;  // so many commands
  const bool further_ = chance_.one_in(3);           // the parameters behind the text are known
  const bool plus_in_numbers_ = !chance_.one_in(3);  // "+49",145, not "49",145
  const Ending empty_index_ = chance_.of(kEmpty);
  const Ending empty_range_ = chance_.of(kEmpty);
  const int largest_range_ = chance_.one_in(3) ? chance_.between(1, 30) : 0;  // more: ERROR
  std::set<int> refused_alone_;  // reads that end with ERROR
  std::set<int> refused_in_range_;
  const bool lines_before_refusal_ = chance_.one_in(2);  // of the indices before it
  std::set<int> writes_dropped_;                         // with OK, silently

  Settings now_;
  int busy_for_ = 0;
  std::string line_;
};

}  // namespace

std::unique_ptr<Machine> make_handset(Chance& chance, Scenario& scenario) {
  return std::make_unique<Handset>(chance, scenario);
}

}  // namespace qalt::simulation
