#include "tests/simulation/handset/result.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tests/simulation/handset/options.h"

namespace qalt::simulation {
namespace {

struct Row {
  Result result;
  int number;
  std::string_view words;
};

// TS 27.007 9.2.1 and 9.2.2.
constexpr std::array<Row, 12> kPhoneErrors = {{
    {Result::kNotAllowed, 3, "operation not allowed"},
    {Result::kNoCard, 10, "SIM not inserted"},
    {Result::kPinNeeded, 11, "SIM PIN required"},
    {Result::kCardBusy, 14, "SIM busy"},
    {Result::kWrongPassword, 16, "incorrect password"},
    {Result::kMemoryFull, 20, "memory full"},
    {Result::kInvalidIndex, 21, "invalid index"},
    {Result::kNotFound, 22, "not found"},
    {Result::kTextTooLong, 24, "text string too long"},
    {Result::kTextInvalid, 25, "invalid characters in text string"},
    {Result::kNumberTooLong, 26, "dial string too long"},
    {Result::kNumberInvalid, 27, "invalid characters in dial string"},
}};

}  // namespace

std::string words_of(Result result, const Settings& now) {
  // TS 27.005 3.2.5: whatever +CMEE says.
  if (result == Result::kNoSuchMessage) return "+CMS ERROR: 321";
  const auto* row = std::find_if(kPhoneErrors.begin(), kPhoneErrors.end(),
                                 [&](const Row& each) { return each.result == result; });
  if (row != kPhoneErrors.end() && now.errors == 1)
    return "+CME ERROR: " + std::to_string(row->number);
  if (row != kPhoneErrors.end() && now.errors == 2) return "+CME ERROR: " + std::string(row->words);
  // V.250 5.7.2.
  if (result == Result::kOk) return now.verbose == 1 ? "OK" : "0";
  return now.verbose == 1 ? "ERROR" : "4";
}

}  // namespace qalt::simulation
