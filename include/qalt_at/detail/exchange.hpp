/*
 * exchange.hpp - one command for one parsed answer, with the modem's error code kept.
 *
 * The command functions of commands.h reduce an answer to done or failed. Here the code is needed:
 * a busy card is waited for, an empty index is no fault, a too large answer is asked for in parts.
 */
#ifndef QALT_AT_DETAIL_EXCHANGE_HPP
#define QALT_AT_DETAIL_EXCHANGE_HPP

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include "qalt_at/detail/delivery.hpp"
#include "qalt_at/detail/raw_answer.hpp"
#include "qalt_at/detail/result.hpp"
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
  kLost,    /* the server gave no answer: it ended, or the time for it did */
  kNoServer /* nothing was sent */
};

/* Codes of +CME ERROR, 3GPP TS 27.007 clause 9.2; kInitialising is used by modems in the field. */
enum : int {
  kNoCode = -1,
  kNoConnection = 1,
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
  int cms; /* the code of +CMS ERROR that says the same (3GPP TS 27.005 clause 3.2.5) */
  std::string_view name;
};

// clang-format off
inline constexpr std::array<CodeName, 17> kCodeNames = {{
    {kNoConnection, kNoCode, "no connection to phone"},
    {3,             302,     "operation not allowed"},
    {kPhSimPin,     312,     "PH-SIM PIN required"},
    {kNoSim,        310,     "SIM not inserted"},
    {kSimPin,       311,     "SIM PIN required"},
    {kSimPuk,       316,     "SIM PUK required"},
    {13,            313,     "SIM failure"},
    {kSimBusy,      314,     "SIM busy"},
    {kMemoryFull,   322,     "memory full"},
    {kInvalidIndex, 321,     "invalid index"},
    {kNotFound,     kNoCode, "not found"},
    {23,            320,     "memory failure"},
    {kTextTooLong,  kNoCode, "text string too long"},
    {25,            kNoCode, "invalid characters in text string"},
    {26,            kNoCode, "dial string too long"},
    {27,            kNoCode, "invalid characters in dial string"},
    {kInitialising, 515,     "initialisation in progress"},
}};
// clang-format on

struct Answer {
  Reply reply = Reply::kNoServer;
  int code = kNoCode;  /* of +CME ERROR; of +CMS ERROR the one that says the same */
  std::string payload; /* the information, or what stands behind the error */
  size_t lines = 0;    /* lines of the raw answer that begin with the prefix asked for */
  bool cms = false;
  int cause = 0;             /* kNoServer, kLost: errno, see Delivery */
  bool of_selection = false; /* of a selection in front of the command, which was not sent */
  bool interrupted = false;  /* the client asked to stop while it was waited for another one */

  bool ok() const { return reply == Reply::kOk; }
  bool busy() const { return reply == Reply::kCode && (code == kSimBusy || code == kInitialising); }
  /* No modem behind the server: what the server says while the modem's port is closed. */
  bool away() const { return reply == Reply::kCode && code == kNoConnection; }
  /* Whether the modem can have got the command. */
  bool sent() const { return reply != Reply::kNoServer && !of_selection && !away(); }
  /* The command was sent, and the answer leaves open what the modem did. */
  bool untold() const {
    return !of_selection &&
           (reply == Reply::kGarbled || reply == Reply::kSilent || reply == Reply::kLost);
  }
  /* The modem said yes or no. */
  bool decided() const { return sent() && !untold() && !busy(); }
};

/* The code of an error answer; the name of one, which +CMEE=2 gives, is looked up. */
inline int error_code(const std::string& payload, bool cms) {
  char* end = nullptr;
  const long number = std::strtol(payload.c_str(), &end, 10);
  const bool named = end == payload.c_str();
  if (!named && !cms) return static_cast<int>(number);
  for (const CodeName& row : kCodeNames) {
    if (named ? payload == row.name : row.cms == number) return row.code;
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

/* Takes the raw answer in `frame` apart, passing over reports in front of it. */
inline Answer parse_answer(AtMsg& frame, std::string_view prefix) {
  Answer answer;
  answer.reply = frame.aucDataBuf[0] == '\0' ? Reply::kSilent : Reply::kGarbled;
  answer.lines = count_lines(frame.aucDataBuf, prefix);
  const std::string own = without_unnamed_lines(frame.aucDataBuf, prefix);
  own.copy(frame.aucDataBuf, own.size());
  frame.aucDataBuf[own.size()] = '\0';
  for (;;) {
    AtRes parsed = {};
    if (Bk_Parse_At_Res(frame.aucDataBuf, &parsed) != AT_PARSE_OK) return answer;
    if (parsed.ResType == AT_RES_REPORT) continue;
    answer.cms = parsed.ResType == AT_RES_CMS_ERROR;
    const bool coded = parsed.ResType == AT_RES_CME_ERROR || answer.cms;
    answer.reply = parsed.ResType == AT_RES_OK      ? Reply::kOk
                   : parsed.ResType == AT_RES_ERROR ? Reply::kError
                   : coded                          ? Reply::kCode
                                                    : Reply::kOther;
    answer.payload = parsed.Paras;
    if (coded) answer.code = error_code(answer.payload, answer.cms);
    return answer;
  }
}

/* What stands for an answer where none came. */
inline Answer unanswered(Delivery delivery) {
  Answer answer;
  answer.cause = errno;
  if (delivery == Delivery::kLost) {
    answer.reply = Reply::kLost;
    answer.interrupted = answer.cause == ECANCELED;
  }
  return answer;
}

inline Answer exchange(const std::string& line, uint32_t timeout_ms, std::string_view prefix = {},
                       const Terms& terms = {}) {
  AtMsg frame;
  const Delivery delivery = deliver(line, timeout_ms, frame, terms);
  return delivery == Delivery::kAnswered ? parse_answer(frame, prefix) : unanswered(delivery);
}

/* Why nothing was sent, and what to do. */
struct NoServer {
  int cause; /* errno */
  std::string_view what;
  std::string_view advice;
};

// clang-format off
inline constexpr std::array<NoServer, 8> kNoServerCauses = {{
    {ENOENT,       "no AT server listens on " QALT_AT_SERVER_PATH,
     "start one: qalt-atd --modem tty:/dev/ttyUSB2, or --modem sim for a simulated one"},
    {ECONNREFUSED, "no AT server listens on " QALT_AT_SERVER_PATH " any more",
     "start one: qalt-atd --modem tty:/dev/ttyUSB2, or --modem sim for a simulated one"},
    {EACCES,       "this user may not connect to the AT server on " QALT_AT_SERVER_PATH,
     "its socket's group and mode say who may: qalt-atd --socket-group"},
    {EPERM,        "this user may not connect to the AT server on " QALT_AT_SERVER_PATH,
     "its socket's group and mode say who may: qalt-atd --socket-group"},
    {EAGAIN,       "the AT server on " QALT_AT_SERVER_PATH " takes no more connections",
     "see whether it is stopped, or who has so many connections"},
    {EMFILE,       "this process has too many open files to reach the AT server",
     "close some, or raise the limit: ulimit -n"},
    {ENFILE,       "the system has too many open files to reach the AT server",
     "see who has so many"},
    {kStrangersServer, "who listens on " QALT_AT_SERVER_PATH " is neither root nor this user",
     "if that is the AT server's user, name it: --server-user, Options::server_user"},
}};
// clang-format on

inline const NoServer* no_server(int cause) {
  for (const NoServer& row : kNoServerCauses) {
    if (row.cause == cause) return &row;
  }
  return nullptr;
}

/* "the modem answered +CME ERROR: 24 (text string too long)" */
inline std::string describe(const Answer& answer) {
  switch (answer.reply) {
    case Reply::kOk:
      return "the modem answered OK";
    case Reply::kError:
      return "the modem answered ERROR";
    case Reply::kCode: {
      std::string text = answer.away() ? "the modem is away: " : "the modem answered ";
      text += (answer.cms ? "+CMS ERROR: " : "+CME ERROR: ") + answer.payload;
      for (const CodeName& row : kCodeNames) {
        if (row.code == answer.code && answer.payload != row.name) {
          text += " (" + std::string(row.name) + ")";
        }
      }
      return text;
    }
    case Reply::kOther:
      return "the modem does not know the command";
    case Reply::kGarbled:
      return "the modem gave an answer that cannot be read";
    case Reply::kSilent:
      return "the modem did not answer in time";
    case Reply::kLost:
      return answer.cause == ETIMEDOUT ? "the AT server does not answer"
             : answer.interrupted      ? "its answer was not waited for"
                                       : "the AT server ended before it answered";
    case Reply::kNoServer:
      break;
  }
  if (const NoServer* const row = no_server(answer.cause)) return std::string(row->what);
  return "the AT server on " QALT_AT_SERVER_PATH " cannot be reached: " +
         std::generic_category().message(answer.cause);
}

inline std::string advice_on(const Answer& answer) {
  if (answer.reply == Reply::kNoServer) {
    const NoServer* const row = no_server(answer.cause);
    return row != nullptr ? std::string(row->advice) : "";
  }
  if (answer.away()) return "see that the device is there, and what the log of the AT server says";
  if (answer.busy()) return "the card is still starting: give it time with --wait 30";
  switch (answer.code) {
    case kPhSimPin:
    case kSimPin:
    case kSimPuk:
      return "unlock the card first";
    case kNoSim:
      return "insert a card";
    case kTextTooLong:
      return "a name outside the GSM alphabet has room for fewer characters";
    case kMemoryFull:
      return "delete a contact first";
    default:
      break;
  }
  const bool told = answer.reply == Reply::kOk || answer.reply == Reply::kError ||
                    answer.reply == Reply::kCode || answer.reply == Reply::kOther;
  return told ? "" : "look at the modem and at the log of the AT server";
}

/* The error of an answer that is not OK. `job` completes "could not ...". */
inline Error failure(const Answer& answer, const std::string& job) {
  const bool gone = answer.reply == Reply::kNoServer || answer.reply == Reply::kLost ||
                    answer.reply == Reply::kSilent || answer.reply == Reply::kGarbled ||
                    answer.away();
  const Cause cause = answer.interrupted           ? Cause::kInterrupted
                      : gone                       ? Cause::kNoAnswer
                      : answer.code == kMemoryFull ? Cause::kFull
                                                   : Cause::kRefused;
  std::string what = "could not " + job + ": ";
  if (answer.interrupted) what = "interrupted, " + what;
  if (answer.of_selection) what += "while selecting the storage, ";
  return {cause, what + describe(answer), advice_on(answer)};
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_EXCHANGE_HPP */
