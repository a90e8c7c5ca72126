/*
 * outcome.hpp - what became of a change, by the answer to it and by the look at its index behind
 * it: not sent or refused, not done, done and not seen, or unknown.
 */
#ifndef QALT_AT_DETAIL_OUTCOME_HPP
#define QALT_AT_DETAIL_OUTCOME_HPP

#include <string>

#include "qalt_at/detail/exchange.hpp"

namespace qalt {
namespace detail {

/* What a read of one index says of it. */
enum class Place { kHeld, kEmpty, kRefused /* ERROR or a code: empty, on some modems */, kUnseen };

inline Place place_of(const Answer& look) {
  if (!look.decided()) return Place::kUnseen;
  if (look.ok()) return look.lines != 0 ? Place::kHeld : Place::kEmpty;
  if (look.code == kNotFound || look.code == kInvalidIndex) return Place::kEmpty;
  const bool refused = look.reply == Reply::kError || look.reply == Reply::kCode;
  return refused ? Place::kRefused : Place::kUnseen;
}

/* The error of a command that was refused, or never sent. */
inline Error not_done(const Answer& answer, const std::string& job) {
  return failure(answer, answer.sent() ? job : job + ", nothing was sent");
}

/* The error of one that was not answered, where a look shows that it did not happen. */
inline Error unchanged(const Answer& answer, const std::string& job, const std::string& seen) {
  Error error = failure(answer, job);
  error.what += seen;
  return error;
}

/* The error of a command that was sent, where the look at its index failed. `done` is "written" or
 * "deleted". */
inline Error unseen(const Answer& answer, int index, const std::string& done, const Error& look) {
  const std::string place = "index " + std::to_string(index);
  if (answer.ok()) {
    return {look.cause, place + " was " + done + " and cannot be read back: " + look.what,
            look.advice, Fate::kDone};
  }
  const std::string before = look.advice.empty() ? "" : look.advice + "; then ";
  return {Cause::kNoAnswer,
          place + " may be " + done + " or not: " + describe(answer) + "; " + look.what,
          before + "look at the entry before trying again", Fate::kUnknown};
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_OUTCOME_HPP */
