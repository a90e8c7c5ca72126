#include "sim/modem.h"

#include <utility>

namespace qalt::sim {
namespace {

constexpr size_t kLongestLine = 2048;
constexpr char kCtrlZ = '\x1A';
constexpr char kEsc = '\x1B';

// The V.250 frame around an information text or a result: "\r\n" on both sides.
std::string framed(std::string_view text) {
  return "\r\n" + std::string(text) + "\r\n";
}

std::string report(std::string_view text) {
  std::string lines;
  for (char c : text) {
    if (c == '\n' && !lines.ends_with('\r')) lines += '\r';
    lines += c;
  }
  return framed(lines);
}

}  // namespace

Modem::Modem(Config config)
    : state_(config), faults_(std::move(config.faults.rules), config.faults.seed) {}

void Modem::receive(std::string_view bytes) {
  for (char c : bytes) {
    if (prompting_) {
      if (c == kCtrlZ || c == kEsc) finish_prompt(c == kCtrlZ);
      continue;
    }
    if (c == '\r') {
      const std::string line = std::exchange(line_, {});
      if (std::exchange(too_long_, false)) {
        send(framed("ERROR"));
      } else {
        execute(line);
      }
    } else if (c == '\n' && line_.empty()) {
      continue;
    } else if (line_.size() < kLongestLine) {
      line_ += c;
    } else {
      too_long_ = true;
    }
  }
}

std::vector<Output> Modem::take() {
  return std::exchange(outputs_, {});
}

void Modem::inject_report(std::string_view text) {
  send(report(text));
}

void Modem::reopened() {
  line_.clear();
  outputs_.clear();
  too_long_ = prompting_ = false;
}

void Modem::execute(std::string_view line) {
  // Whatever stands before "AT" is noise of the line; without it there is no command to answer.
  size_t start = 0;
  while (start < line.size() && !at::starts_with_nocase(line.substr(start), "AT")) ++start;
  if (start == line.size()) return;

  if (state_.echo || state_.config.faults.always_echo) send(std::string(line) + "\r");
  line.remove_prefix(start);

  const FaultPlan plan = faults_.plan(line);
  Answer result = plan.answer ? Answer{*plan.answer, plan.answer->size()} : answer(line);
  // Behind the first information line, or before a final result that stands alone.
  const size_t inside = result.final_at > 0 ? result.text.find("\r\n", 2) + 2 : 0;
  for (const std::string& text : plan.reports_inside) result.text.insert(inside, report(text));
  if (plan.cut && *plan.cut < result.text.size()) result.text.resize(*plan.cut);

  for (const std::string& text : plan.reports_before) send(report(text));
  if (!plan.silent) send(result.text, state_.config.faults.delay + plan.delay);
  if (plan.hang_up) outputs_.push_back({Output::Kind::kHangUp, {}, {}});
  for (const std::string& text : plan.reports_after) send(report(text));
}

Modem::Answer Modem::answer(std::string_view line) {
  std::string text;
  // Closes the answer with a final result.
  const auto ended = [&](const std::string& result) {
    return Answer{text + final_text(result), text.size()};
  };
  const at::LineCommands read = at::read_line(line);
  for (size_t i = 0; i < read.before_fault; ++i) {
    const at::Command& command = read.commands[i];
    const Reply reply = run(state_, command);
    std::string lines;
    for (const std::string& information : reply.lines) lines += "\r\n" + information;
    if (!lines.empty()) text += (state_.verbose ? lines : lines.substr(2)) + "\r\n";
    switch (reply.final) {
      case Reply::Final::kOk:
        break;
      case Reply::Final::kError:
        return ended("ERROR");
      case Reply::Final::kCme:
        return ended(error_text(state_.cmee, reply.code));
      case Reply::Final::kNotSupported:
        return ended("not support");
      case Reply::Final::kPrompt:
        prompting_ = true;
        return {text + "\r\n> ", text.size()};
    }
  }
  return ended(read.whole ? "OK" : "ERROR");
}

// Digits stand for OK and ERROR where V is 0; the errors of the device have none (ITU-T
// V.250, 6.2.6; 3GPP TS 27.007, 9.2).
std::string Modem::final_text(const std::string& result) const {
  if (state_.quiet) return "";
  if (state_.verbose) return framed(result);
  if (result == "OK") return "0\r";
  return result == "ERROR" ? "4\r" : result + "\r\n";
}

void Modem::finish_prompt(bool send_message) {
  prompting_ = false;
  send((send_message ? framed("+CMGS: 1") : "") + final_text("OK"));
}

void Modem::send(std::string_view bytes, std::chrono::milliseconds delay) {
  const size_t step = state_.config.faults.single_bytes ? 1 : bytes.size();
  for (size_t i = 0; i < bytes.size(); i += step) {
    outputs_.push_back({Output::Kind::kData, i == 0 ? delay : std::chrono::milliseconds(0),
                        std::string(bytes.substr(i, step))});
  }
}

}  // namespace qalt::sim
