#include "server/stream_reader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "at/at_line.h"
#include "server/command_answers.h"
#include "server/report_names.h"

namespace qalt::server {
namespace {

// A line beyond this can be neither a report that fits a frame nor part of an answer that does.
constexpr size_t kLongestLine = 2 * StreamReader::kLongestAnswer;
// Consumed input is given up in steps, so that it is not moved once a line.
constexpr size_t kGiveUp = 4096;

constexpr std::array<std::string_view, 5> kCallResults = {"NO CARRIER", "BUSY", "NO ANSWER",
                                                          "NO DIALTONE", "NO DIAL TONE"};

// An answer or a report as it may go into a frame: whole or not at all.
StreamEvent checked(StreamEvent event, bool cut) {
  event.too_long = cut || event.text.size() > StreamReader::kLongestAnswer;
  event.unfit = !event.too_long && event.text.find('\0') != std::string::npos;
  if (event.too_long || event.unfit) event.text.clear();
  return event;
}

std::string_view without_line_end(std::string_view line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.remove_suffix(1);
  while (!line.empty() && line.front() == '\r') line.remove_prefix(1);
  return line;
}

}  // namespace

void StreamReader::expect_answer(std::string_view command) {
  own_names_.clear();
  const at::LineCommands read = at::read_line(command);
  const std::vector<at::Command>& parts = read.commands;
  dialling_ = false;
  prompting_ = !read.whole;
  named_ = read.whole && std::all_of(parts.begin(), parts.end(), answers_by_name);
  for (const at::Command& part : parts) {
    own_names_.push_back(part.name + ":");
    prompting_ |= may_prompt(part);
    dialling_ |= part.name == "D" || part.name == "A" || part.name == "O";
  }
  sole_.reset();
  if (named_ && parts.size() == 1) sole_ = parts.front();
  begin(command);
}

void StreamReader::expect_resync(std::string_view command) {
  for (const at::Command& part : at::read_line(command).commands) {
    std::string name = part.name + ":";
    if (!is_own(name)) own_names_.push_back(std::move(name));
  }
  sole_.reset();
  begin(command);
  resyncing_ = true;
}

void StreamReader::expect_nothing() {
  expecting_ = prompting_ = false;
  own_names_.clear();
}

void StreamReader::begin(std::string_view command) {
  expecting_ = echo_possible_ = true;
  command_ = command;
  answer_.clear();
  too_long_ = odd_quotes_ = anothers_ = owed_ = echoed_ = resyncing_ = false;
  blank_ = 0;
  stale_ = input_.size();
}

void StreamReader::reset() {
  *this = StreamReader();
}

std::optional<StreamEvent> StreamReader::next() {
  while (const auto line = next_line()) {
    auto event = take_line(*line);
    if (event) return event;
  }
  if (expecting_ && prompting_ && !line_cut_ && consumed_ >= stale_ &&
      std::string_view(input_).substr(consumed_) == "> ") {
    consumed_ = scanned_ = input_.size();
    append("> ");
    return finish(StreamEvent::Kind::kPrompt);
  }
  return std::nullopt;
}

// The next whole line with its line end. A line that grows too long is cut to its beginning, which
// is enough to tell what it was; what is left out is not kept.
std::optional<std::string_view> StreamReader::next_line() {
  if (consumed_ == input_.size() || consumed_ >= kGiveUp) {
    input_.erase(0, consumed_);
    scanned_ -= consumed_;
    stale_ -= std::min(stale_, consumed_);
    consumed_ = 0;
  }
  // A NUL before a line is noise of the line, not part of a text.
  while (consumed_ < input_.size() && input_[consumed_] == '\0') ++consumed_;
  scanned_ = std::max(scanned_, consumed_);
  const size_t end = input_.find('\n', scanned_);
  if (end == input_.npos) {
    scanned_ = input_.size();
    if (input_.size() - consumed_ > kLongestLine) {
      input_.resize(consumed_ + kLongestLine);
      scanned_ = input_.size();
      line_cut_ = true;
    }
    return std::nullopt;
  }
  const std::string_view line = std::string_view(input_).substr(consumed_, end + 1 - consumed_);
  consumed_ = scanned_ = end + 1;
  return line;
}

std::optional<StreamEvent> StreamReader::take_line(std::string_view line) {
  const bool cut = std::exchange(line_cut_, false) || line.size() > kLongestLine;
  const std::string_view content = without_line_end(line);
  const bool stale = size_t(line.data() - input_.data()) < stale_;
  if (!headline_.empty()) {
    StreamEvent report{StreamEvent::Kind::kReport, std::exchange(headline_, {})};
    if (content.empty()) {
      // The data never came; the empty line belongs to whatever follows.
      if (expecting_) append_blank(line);
      return checked(std::move(report), false);
    }
    report.text.append(content).append("\r\n");
    return checked(std::move(report), cut);
  }
  // What began before the command was written is no part of its answer, even where it ends later.
  if (expecting_ && (resyncing_ || !stale)) return take_answer_line(line, content, cut, stale);
  if (content.empty()) return std::nullopt;
  // Late, or of the program that had the modem before.
  if (is_phonebooks(content)) return std::nullopt;
  if (is_report(content) && !is_own(content)) return report_head(content);
  // With its frame it must still fit.
  StreamEvent event = checked({StreamEvent::Kind::kLine, std::string(content)},
                              cut || content.size() + 4 > kLongestAnswer);
  event.restart = announces_start(content);
  event.connected = is_connect(content);
  return event;
}

std::optional<StreamEvent> StreamReader::take_answer_line(std::string_view line,
                                                          std::string_view content, bool cut,
                                                          bool stale) {
  if (content.empty()) {
    append_blank(line);
    return std::nullopt;
  }
  if (take_echo(line, content)) return std::nullopt;
  const bool final = is_final(content);
  if (sole_ && is_anothers(*sole_, content)) {
    anothers_ = true;
    return std::nullopt;
  }
  if (!final && !is_own(content) && is_phonebooks(content)) return std::nullopt;
  if (!final && !is_own(content) &&
      (is_report(content) || (named_ && (bears_name(content) || announces_start(content))))) {
    withdraw_blank();
    return report_head(content);
  }
  if (stale && !final) return std::nullopt;
  // The empty line was not the report's own after all where it opens the answer or its result.
  if (owed_ && (final || answer_.empty())) append("\r\n");
  owed_ = false;
  echo_possible_ = false;
  too_long_ |= cut;
  // A report came behind it before it could be seen at the end.
  if (prompting_ && content == "> ") {
    append("> ");
    return finish(StreamEvent::Kind::kPrompt);
  }
  append(content == kCommandNotSupport ? std::string(kNotSupported) + "\r\n" : line);
  if (!final) return std::nullopt;
  StreamEvent event = finish(StreamEvent::Kind::kAnswer);
  event.connected = connects(content);
  return event;
}

// The echo is the command and its carriage return; what stood before it is of no command, and the
// rest of its line already belongs to the answer.
bool StreamReader::take_echo(std::string_view line, std::string_view content) {
  // A wake line's has an escape before it.
  if (resyncing_ && content.starts_with('\x1B')) content.remove_prefix(1);
  if (!echo_possible_ || content != command_) return false;
  echo_possible_ = false;
  echoed_ = true;
  answer_.clear();
  line.remove_prefix(size_t(content.data() - line.data()) + content.size());
  if (line.starts_with("\r\r")) line.remove_prefix(1);
  append_blank(line);
  return true;
}

std::optional<StreamEvent> StreamReader::report_head(std::string_view content) {
  std::string text = "\r\n" + std::string(content) + "\r\n";
  if (text.size() > kLongestAnswer || !has_data_line(content)) {
    StreamEvent event = checked({StreamEvent::Kind::kReport, std::move(text)}, false);
    event.restart = announces_start(content);
    return event;
  }
  headline_ = std::move(text);
  return std::nullopt;
}

StreamEvent StreamReader::finish(StreamEvent::Kind kind) {
  expecting_ = false;
  StreamEvent event = checked({kind, std::exchange(answer_, {})}, too_long_);
  event.anothers = anothers_;
  event.open_quote = odd_quotes_ && !event.too_long;
  event.echoed = echoed_;
  return event;
}

void StreamReader::append(std::string_view line) {
  blank_ = 0;
  odd_quotes_ ^= std::count(line.begin(), line.end(), '"') % 2 != 0;
  if (too_long_ || answer_.size() + line.size() > kLongestAnswer) {
    too_long_ = true;
    answer_.clear();
    return;
  }
  answer_.append(line);
}

void StreamReader::append_blank(std::string_view line) {
  append(line);
  blank_ = too_long_ ? 0 : line.size();
  owed_ = false;
}

// A report brings the empty line before it along.
void StreamReader::withdraw_blank() {
  if (blank_ == 0) return;
  answer_.resize(answer_.size() - blank_);
  blank_ = 0;
  owed_ = true;
}

bool StreamReader::is_own(std::string_view content) const {
  return std::any_of(own_names_.begin(), own_names_.end(), [&](const std::string& name) {
    return at::starts_with_nocase(content, name);
  });
}

bool StreamReader::is_final(std::string_view content) const {
  if (is_result(content) || connects(content)) return true;
  return dialling_ &&
         std::find(kCallResults.begin(), kCallResults.end(), content) != kCallResults.end();
}

// Vendors have commands that take data or begin a call, too; in a text it is a word.
bool StreamReader::connects(std::string_view content) const {
  return (named_ || prompting_) && is_connect(content);
}

}  // namespace qalt::server
