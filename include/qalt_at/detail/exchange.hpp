/*
 * exchange.hpp - one command for one parsed answer, with the modem's error code kept.
 *
 * The command functions of commands.h reduce an answer to done or failed. Here the code is needed:
 * a busy card is waited for, an empty index is no fault, a too large answer is asked for in parts.
 */
#ifndef QALT_AT_DETAIL_EXCHANGE_HPP
#define QALT_AT_DETAIL_EXCHANGE_HPP

#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "qalt_at/detail/raw_answer.hpp"
#include "qalt_at/detail/result.hpp"
#include "qalt_at/link.h"
#include "qalt_at/parser.h"

namespace qalt {
namespace detail {

enum class Reply {
  kOk,
  kError,   /* ERROR, without a code */
  kCode,    /* +CME ERROR or +CMS ERROR */
  kOther,   /* "not support", a prompt */
  kGarbled, /* a text, but none that ends as an answer does */
  kSilent,  /* the server gave the modem up and answered nothing */
  kNoServer
};

/* Codes of +CME ERROR, 3GPP TS 27.007 clause 9.2; kInitialising is used by modems in the field. */
enum : int {
  kNoCode = -1,
  kPhSimPin = 5,
  kNoSim = 10,
  kSimPin = 11,
  kSimPuk = 12,
  kSimBusy = 14,
  kMemoryFull = 20,
  kInvalidIndex = 21,
  kNotFound = 22,
  kTextTooLong = 24,
  kInitialising = 515
};

struct CodeName {
  int code;
  std::string_view name;
};

// clang-format off
inline constexpr std::array<CodeName, 16> kCodeNames = {{
    {3,             "operation not allowed"},
    {kPhSimPin,     "PH-SIM PIN required"},
    {kNoSim,        "SIM not inserted"},
    {kSimPin,       "SIM PIN required"},
    {kSimPuk,       "SIM PUK required"},
    {13,            "SIM failure"},
    {kSimBusy,      "SIM busy"},
    {kMemoryFull,   "memory full"},
    {kInvalidIndex, "invalid index"},
    {kNotFound,     "not found"},
    {23,            "memory failure"},
    {kTextTooLong,  "text string too long"},
    {25,            "invalid characters in text string"},
    {26,            "dial string too long"},
    {27,            "invalid characters in dial string"},
    {kInitialising, "initialisation in progress"},
}};
// clang-format on

struct Answer {
  Reply reply = Reply::kNoServer;
  int code = kNoCode;
  std::string payload; /* the information, or what stands behind the error */
  size_t lines = 0;    /* lines of the raw answer that begin with the prefix asked for */

  bool ok() const { return reply == Reply::kOk; }
  bool busy() const { return reply == Reply::kCode && (code == kSimBusy || code == kInitialising); }
};

/* Whether an AT server listens. The library would wait five minutes for one. */
inline bool server_listens() {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (descriptor == -1) return false;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string_view path = QALT_AT_SERVER_PATH;
  std::copy(path.begin(), path.end(), address.sun_path);
  const int result =
      connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const bool listens = result == 0 || errno == EAGAIN; /* EAGAIN: its queue is full */
  close(descriptor);
  return listens;
}

/* The number of an error answer; the name of one, which +CMEE=2 gives, is looked up. */
inline int error_code(const std::string& payload) {
  char* end = nullptr;
  const long number = std::strtol(payload.c_str(), &end, 10);
  if (end != payload.c_str()) return static_cast<int>(number);
  for (const CodeName& row : kCodeNames) {
    if (payload == row.name) return row.code;
  }
  return kNoCode;
}

inline size_t count_lines(std::string_view raw, std::string_view prefix) {
  size_t count = 0;
  if (prefix.empty()) return count;
  const std::string start = "\n" + std::string(prefix);
  for (size_t at = raw.find(start); at != raw.npos; at = raw.find(start, at + start.size())) {
    ++count;
  }
  return count;
}

/* Sends `line` and parses the answer, passing over reports in front of it. */
inline Answer exchange(const std::string& line, uint32_t timeout_ms, std::string_view prefix = {}) {
  Answer answer;
  AtMsg frame;
  if (!server_listens() || ClientSendCmd(line.c_str(), &frame, timeout_ms) != 0) return answer;
  answer.reply = frame.aucDataBuf[0] == '\0' ? Reply::kSilent : Reply::kGarbled;
  answer.lines = count_lines(frame.aucDataBuf, prefix);
  const std::string own = without_unnamed_lines(frame.aucDataBuf, prefix);
  own.copy(frame.aucDataBuf, own.size());
  frame.aucDataBuf[own.size()] = '\0';
  for (;;) {
    AtRes parsed = {};
    if (Bk_Parse_At_Res(frame.aucDataBuf, &parsed) != AT_PARSE_OK) return answer;
    if (parsed.ResType == AT_RES_REPORT) continue;
    const bool coded = parsed.ResType == AT_RES_CME_ERROR || parsed.ResType == AT_RES_CMS_ERROR;
    answer.reply = parsed.ResType == AT_RES_OK      ? Reply::kOk
                   : parsed.ResType == AT_RES_ERROR ? Reply::kError
                   : coded                          ? Reply::kCode
                                                    : Reply::kOther;
    answer.payload = parsed.Paras;
    if (coded) answer.code = error_code(answer.payload);
    return answer;
  }
}

/* "answered +CME ERROR: 24 (text string too long)" */
inline std::string describe(const Answer& answer) {
  switch (answer.reply) {
    case Reply::kOk:
      return "answered OK";
    case Reply::kError:
      return "answered ERROR";
    case Reply::kCode: {
      std::string text = "answered +CME ERROR: " + answer.payload;
      for (const CodeName& row : kCodeNames) {
        if (row.code == answer.code && answer.payload != row.name) {
          text += " (" + std::string(row.name) + ")";
        }
      }
      return text;
    }
    case Reply::kOther:
      return "does not know the command";
    case Reply::kGarbled:
      return "gave an answer that cannot be read";
    case Reply::kSilent:
      return "did not answer in time";
    case Reply::kNoServer:
      break;
  }
  return "cannot be reached";
}

/* The error of an answer that is not OK. `job` completes "could not ...". */
inline Error failure(const Answer& answer, const std::string& job) {
  if (answer.reply == Reply::kNoServer) {
    return {Cause::kNoAnswer, "no AT server listens on " QALT_AT_SERVER_PATH,
            "start one: qalt-atd --modem tty:/dev/ttyUSB2, or --modem sim for a simulated one"};
  }
  const bool silent = answer.reply == Reply::kSilent || answer.reply == Reply::kGarbled;
  Error error{silent ? Cause::kNoAnswer : Cause::kRefused,
              "could not " + job + ": the modem " + describe(answer), ""};
  if (silent) error.advice = "look at the modem and at the log of the AT server";
  if (answer.busy()) error.advice = "the card is still starting: give it time with --wait 30";
  if (answer.code == kSimPin || answer.code == kSimPuk) error.advice = "unlock the card first";
  if (answer.code == kNoSim) error.advice = "insert a card";
  if (answer.code == kTextTooLong) {
    error.advice = "a name outside the GSM alphabet has room for fewer characters";
  }
  if (answer.code == kMemoryFull) {
    error.cause = Cause::kFull;
    error.advice = "delete a contact first";
  }
  return error;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_EXCHANGE_HPP */
