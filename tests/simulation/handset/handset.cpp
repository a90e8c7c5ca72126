#include "tests/simulation/handset/handset.h"

#include <utility>

namespace qalt::simulation {

Handset::Handset(Options options) : phone_{.options = std::move(options)} {
  power_up(phone_);
}

void Handset::receive(std::string_view bytes) {
  for (char c : bytes) receive(c);
}

std::vector<Said> Handset::take() {
  flush_echo();
  return std::exchange(said_, {});
}

void Handset::power_cycle() {
  power_up(phone_);
  part_ = Part::kNothing;
  body_.clear(), echo_.clear(), said_.clear();
  too_long_ = false;
  answer_time_ = {};
}

const std::map<int, Stored>& Handset::contacts() const {
  return phone_.options.storages[storage_place(phone_, "SM")].contacts;
}

void Handset::change_by_itself(int index, std::optional<Stored> contact) {
  place(phone_, phone_.options.storages[storage_place(phone_, "SM")], index, contact);
  phone_.changes.clear();
}

// V.250 5.2.1: "AT" or "at" begins a line, S3 ends it; 5.2.4: "A/" has no end.
void Handset::receive(char c) {
  const bool is_edit = part_ == Part::kBody && c == phone_.now.backspace;
  if (is_edit) return edit();
  if (phone_.now.echo == 1) echo_ += c;
  if (part_ != Part::kBody) {
    const bool after_a = part_ == Part::kA;
    part_ = c == 'A' || c == 'a' ? Part::kA : Part::kNothing;
    if (after_a && c == '/') run_line();
    if (!after_a || (c != 'T' && c != 't')) return;
    part_ = Part::kBody;
    body_.clear();
    too_long_ = false;
  } else if (c == phone_.now.end_of_line) {
    part_ = Part::kNothing;
    run_line();
  } else if (body_.size() < phone_.options.line_length) {
    body_ += c;
  } else {
    too_long_ = true;
  }
}

// V.250 6.2.3: the character before is gone, on the terminal's screen as well. Not the prefix.
void Handset::edit() {
  if (body_.empty()) return;
  body_.pop_back();
  const char backspace = static_cast<char>(phone_.now.backspace);
  if (phone_.now.echo == 1) echo_ += {backspace, ' ', backspace};
}

// V.250 5.2.2 and 5.7.2: the commands of a line run in turn, up to the first that fails; the line
// has one result code.
void Handset::run_line() {
  const std::string tidy = tidied(body_);
  std::string_view body = tidy;
  Result result =
      too_long_ || (tidy.empty() && phone_.options.bare_at_fails) ? Result::kError : Result::kOk;
  while (result == Result::kOk && !body.empty()) result = run_next(body);
  end_line(result);
}

Result Handset::run_next(std::string_view& body) {
  if (body.front() == ';') {
    body.remove_prefix(1);
    return Result::kOk;
  }
  const auto command = next_command(body);
  if (!command) return Result::kError;
  const auto& times = phone_.options.answer_times;
  if (const auto time = times.find(command->name); time != times.end())
    answer_time_ += time->second;
  Lines lines;
  const Result result = run(phone_, *command, lines);
  for (int index : std::exchange(phone_.changes, {}))
    if (changed) changed(index);
  say_lines(lines);
  // V.250 6.1.1: what is behind a Z may be ignored.
  if (command->name == "Z") body = {};
  return result;
}

// V.250 5.7.1: in words, an answer has a line end before and behind it; otherwise behind it only.
void Handset::say_lines(const Lines& lines) {
  const std::string line_end = {end_of_line(), static_cast<char>(phone_.now.line_feed)};
  for (size_t i = 0; i < lines.size(); ++i) {
    const bool framed = phone_.now.verbose == 1 && (i == 0 || phone_.options.lines_framed);
    say((framed ? line_end : "") + lines[i] + line_end, false);
  }
}

// A result code has both line ends or, as a number, S3 alone.
void Handset::end_line(Result result) {
  const std::string line_end = {end_of_line(), static_cast<char>(phone_.now.line_feed)};
  const std::string words = words_of(result, phone_.now);
  std::string code = phone_.now.verbose == 1 ? line_end + words + line_end : words + end_of_line();
  if (phone_.now.quiet == 1) code.clear();
  say(std::move(code), true);
}

void Handset::say(std::string bytes, bool ends_command) {
  flush_echo();
  said_.push_back({std::exchange(answer_time_, {}), std::move(bytes), ends_command});
}

void Handset::flush_echo() {
  if (!echo_.empty()) said_.push_back({{}, std::exchange(echo_, {}), false});
}

char Handset::end_of_line() const {
  return static_cast<char>(phone_.now.end_of_line);
}

}  // namespace qalt::simulation
