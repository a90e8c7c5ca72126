// result.h - how a command ends.
#ifndef QALT_TESTS_SIMULATION_HANDSET_RESULT_H_
#define QALT_TESTS_SIMULATION_HANDSET_RESULT_H_

#include <string>

namespace qalt::simulation {

struct Settings;

// TS 27.007 9.2: errors of the telephone. What is wrong with a command line is a mere kError, 9.1.
enum class Result {
  kOk,
  kError,
  kNotAllowed,
  kNoCard,
  kPinNeeded,
  kCardBusy,
  kWrongPassword,
  kMemoryFull,
  kInvalidIndex,
  kNotFound,
  kTextTooLong,
  kTextInvalid,
  kNumberTooLong,
  kNumberInvalid,
  kNoSuchMessage,  // TS 27.005 3.2.5
};

// The words or digits of a result code, as +CMEE and ATV want them.
std::string words_of(Result result, const Settings& now);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_RESULT_H_
