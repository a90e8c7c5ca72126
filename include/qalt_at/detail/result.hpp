/*
 * result.hpp - what a call of phonebook.hpp gives back: a value, or an error and its class.
 */
#ifndef QALT_AT_DETAIL_RESULT_HPP
#define QALT_AT_DETAIL_RESULT_HPP

#include <string>
#include <utility>
#include <variant>

namespace qalt {

/* The class of an error. The numbers are the exit codes of qalt-pb. */
enum class Cause {
  kRefused = 1,      /* the modem answered the command with an error */
  kUsage = 2,        /* a bad argument: nothing was sent to change the phonebook */
  kNoAnswer = 3,     /* no AT server, no modem behind it, or no answer */
  kNotFound = 4,     /* the index holds no contact */
  kFull = 5,         /* no free index */
  kDiffers = 6,      /* what was read back is not what was written */
  kBadInput = 7,     /* a file that cannot be read or written, or does not hold contacts */
  kOutput = 8,       /* standard output took no more; what was to be done is done */
  kCollision = 9,    /* another client was faster, nothing was sent: the same call may do it now */
  kInterrupted = 130 /* the client asked to stop */
};

/* What is known of the change that a failed call was to make. */
enum class Fate {
  kNotDone, /* never sent, refused, or a read shows that it did not happen; so for calls that read
             */
  kUnknown, /* sent, and neither an answer nor a read tells: look before doing it again */
  kDone     /* the modem said OK; what it stores is not what was sent, or could not be read back */
};

struct Error {
  Cause cause = Cause::kRefused;
  std::string what;   /* what happened */
  std::string advice; /* what to do, empty when there is nothing to say */
  Fate fate = Fate::kNotDone;
};

/* The value of a call that has none. */
struct Done {};

/* A value or an error. Look before taking the value: taking a missing one is undefined. */
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::move(value)) {}     /* NOLINT: a value is a result */
  Result(Error error) : content_(std::move(error)) {} /* NOLINT: so is an error */

  explicit operator bool() const { return content_.index() == 0; }
  T& operator*() { return *std::get_if<0>(&content_); }
  const T& operator*() const { return *std::get_if<0>(&content_); }
  T* operator->() { return std::get_if<0>(&content_); }
  const T* operator->() const { return std::get_if<0>(&content_); }
  const Error& error() const { return *std::get_if<1>(&content_); }

 private:
  std::variant<T, Error> content_;
};

} /* namespace qalt */

#endif /* QALT_AT_DETAIL_RESULT_HPP */
