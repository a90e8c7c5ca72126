// failure.h - errors inside the tool: thrown to main, which says them and ends with their class.
#ifndef QALT_CLI_FAILURE_H_
#define QALT_CLI_FAILURE_H_

#include <exception>
#include <string>
#include <utility>

#include "qalt_at/detail/result.hpp"

namespace qalt::cli {

class Failure : public std::exception {
 public:
  explicit Failure(Error error) : error_(std::move(error)) {}
  Failure(Cause cause, std::string what, std::string advice = "")
      : error_{cause, std::move(what), std::move(advice)} {}
  const char* what() const noexcept override { return error_.what.c_str(); }
  const Error& error() const { return error_; }

 private:
  Error error_;
};

// The value of a result, or the failure that it is.
template <typename T>
T take(Result<T> result) {
  if (!result) throw Failure(result.error());
  return std::move(*result);
}

}  // namespace qalt::cli

#endif  // QALT_CLI_FAILURE_H_
