// The commands beside contacts: at, reports, text.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <deque>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "cli/context.h"
#include "cli/failure.h"
#include "cli/interrupts.h"
#include "cli/terminal.h"
#include "qalt_at/report_receiver.hpp"
#include "sockets/socket_place.h"

namespace qalt::cli {
namespace {

const char* result_name(int type) {
  switch (type) {
    case AT_RES_OK:
      return "OK";
    case AT_RES_ERROR:
      return "ERROR";
    case AT_RES_CMS_ERROR:
      return "+CMS ERROR";
    case AT_RES_CME_ERROR:
      return "+CME ERROR";
    case AT_RES_PROMPT:
      return "PROMPT";
    case AT_RES_REPORT:
      return "REPORT";
    case AT_RES_NOT_SUPPORT:
      return "not support";
  }
  return "unknown";
}

struct Block {
  int type;
  std::string name;  // of a report
  std::string payload;
};

// What a text holds, block by block.
std::vector<Block> blocks_of(const std::string& answer) {
  std::string text = answer;  // the parser cuts each block out
  std::vector<Block> blocks;
  for (;;) {
    AtRes parsed = {};
    if (Bk_Parse_At_Res(text.data(), &parsed) != AT_PARSE_OK) return blocks;
    const bool report = parsed.ResType == AT_RES_REPORT;
    blocks.push_back(
        {parsed.ResType, report ? detail::command_name(parsed.CmdId) : "", parsed.Paras});
  }
}

// The error that the answer ends with.
detail::Answer error_of(const std::vector<Block>& blocks) {
  detail::Answer answer;
  if (blocks.empty() || blocks.back().type != AT_RES_CME_ERROR) return answer;
  answer.reply = detail::Reply::kCode;
  answer.payload = blocks.back().payload;
  answer.code = detail::error_code(answer.payload, false);
  return answer;
}

Json json_of_answer(const Block& block) {
  Json object = {{"result", result_name(block.type)}, {"payload", block.payload}};
  if (!block.name.empty()) object["name"] = block.name;
  return object;
}

std::string shown(const Block& block) {
  std::string text = block.name.empty() ? result_name(block.type) : block.name;
  if (!block.payload.empty()) text += "  " + printable(block.payload);
  return text + "\n";
}

// Reports on their way from the receiver's thread to the command.
class Inbox {
 public:
  Inbox() {
    if (pipe(ends_) != 0) throw Failure(Cause::kUsage, "too many open files");
  }
  int descriptor() const { return ends_[0]; }
  void put(const Report& report) {
    const std::lock_guard lock(mutex_);
    reports_.push_back(report.text);
    [[maybe_unused]] const ssize_t unused = write(ends_[1], "", 1);
  }
  std::string take() {
    char byte;
    [[maybe_unused]] const ssize_t unused = read(ends_[0], &byte, 1);
    const std::lock_guard lock(mutex_);
    std::string report = std::move(reports_.front());
    reports_.pop_front();
    return report;
  }

 private:
  std::mutex mutex_;
  std::deque<std::string> reports_;
  int ends_[2] = {-1, -1};
};

std::unique_ptr<SocketPlace> take_place(const std::string& path) try {
  return std::make_unique<SocketPlace>(path, "--module");
} catch (const std::runtime_error& error) {
  throw Failure(Cause::kUsage, error.what());
}

// A report that the parser does not list: named where the command table has its name, else as it
// came.
Block unlisted(const std::string& raw) {
  const size_t first = std::min(raw.find_first_not_of("\r\n"), raw.size());
  const std::string text = raw.substr(first, raw.find_last_not_of("\r\n") + 1 - first);
  const size_t colon = text.find(": ");
  int32_t row = 0;
  if (colon != text.npos && _Find_Cmd_By_Name(&row, text.substr(0, colon).c_str()) == AT_PARSE_OK) {
    return {AT_RES_REPORT, text.substr(0, colon), text.substr(colon + 2)};
  }
  return {AT_RES_REPORT, "", text};
}

void print_reports(Context& context, const std::string& text, unsigned& left) {
  std::vector<Block> blocks = blocks_of(text);
  if (blocks.empty()) blocks.push_back(unlisted(text));
  for (const Block& block : blocks) {
    context.print(context.json() ? line_of(json_of_answer(block)) + "\n" : shown(block));
    if (left > 0 && --left == 0) return;
  }
}

std::wstring wide(const std::string& text) {
  const auto codes = detail::code_points(text);
  if (!codes) throw Failure(Cause::kUsage, "the text is not valid UTF-8");
  return {codes->begin(), codes->end()};
}

}  // namespace

void run_at(Context& context) {
  Json results = Json::array();
  for (const std::string& line : context.arguments().lines) {
    if (context.output_failed()) return;
    if (interrupted()) throw Failure(Cause::kInterrupted, "interrupted before " + line);
    if (line.find_first_of("\r\n") != line.npos || line.size() >= QALT_AT_TEXT_SIZE) {
      throw Failure(Cause::kUsage, "a command is one line of at most 10239 characters");
    }
    AtMsg frame;
    const detail::Delivery delivery =
        detail::deliver(line, context.arguments().timeout_seconds * 1000, frame,
                        {{}, context.arguments().server_user});
    if (delivery != detail::Delivery::kAnswered) {
      Error error = detail::failure(detail::unanswered(delivery), "send " + line);
      if (delivery == detail::Delivery::kLost) error.fate = Fate::kUnknown;
      throw Failure(error);
    }
    const std::vector<Block> blocks = blocks_of(frame.aucDataBuf);
    Json answers = Json::array();
    std::string text;
    bool ok = false;
    for (const Block& block : blocks) {
      ok = block.type == AT_RES_OK || block.type == AT_RES_PROMPT;
      answers.push_back(json_of_answer(block));
      text += shown(block);
    }
    results.push_back({{"command", line}, {"answers", answers}});
    if (!context.json()) context.print(text);
    const detail::Answer last = error_of(blocks);
    if (last.away()) throw Failure(detail::failure(last, "send " + line));
    if (!ok) {
      const Cause cause = blocks.empty() ? Cause::kNoAnswer : Cause::kRefused;
      context.failed({cause, line + (blocks.empty() ? ": no answer" : " was refused"), ""});
    }
  }
  if (context.json()) context.print(line_of(results) + "\n");
}

void run_reports(Context& context) {
  Inbox inbox;
  const std::string& path = context.arguments().module;
  const auto place = take_place(path);
  ReportReceiver receiver;
  cli::take(receiver.start(path, [&](const Report& report) { inbox.put(report); }));
  unsigned left = context.arguments().count;
  const bool endless = left == 0;
  while (endless || left > 0) {
    if (!wait_readable(inbox.descriptor())) throw Failure(Cause::kInterrupted, "interrupted");
    print_reports(context, inbox.take(), left);
    if (context.output_failed()) break;
  }
}

void run_text(Context& context) {
  const Arguments& arguments = context.arguments();
  const int flag = arguments.vendor ? detail::kVendorItem : detail::kStandardItem;
  std::string result;
  if (arguments.decode) {
    const auto text = detail::decode_text(
        arguments.text, arguments.vendor ? detail::TextForm::kVendor : detail::TextForm::kUcs2);
    if (!text) throw Failure(Cause::kUsage, "these are no digits of a coded text");
    result = *text;
  } else {
    const std::wstring text = wide(arguments.text);
    std::vector<char> digits(4 * text.size() + 8);
    int gsm = 0;
    QL_808182CodeSupportSet(arguments.compact ? 1 : 0);
    if (QL_encodePBItem(text.c_str(), digits.data(), int(digits.size()), &gsm, flag) != 0) {
      throw Failure(Cause::kUsage,
                    "the text cannot be coded: it is too long, or has a character "
                    "above U+FFFF");
    }
    result = digits.data();
  }
  context.print(context.json() ? line_of(Json{{"text", result}}) + "\n" : result + "\n");
}

}  // namespace qalt::cli
