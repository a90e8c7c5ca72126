/*
 * discovery.hpp - what a modem tells of its phonebook: counts, commands, indices and lengths.
 *
 * QL_getPhonebookInfo finds out the same for the C functions; without an AT server, or with one
 * that dies in between, it takes more than an hour and a half.
 */
#ifndef QALT_AT_DETAIL_DISCOVERY_HPP
#define QALT_AT_DETAIL_DISCOVERY_HPP

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "qalt_at/detail/exchange.hpp"
#include "qalt_at/detail/range_reader.hpp"
#include "qalt_at/detail/wire_contact.hpp"

namespace qalt {
namespace detail {

constexpr uint32_t kCapabilityTimeoutMs = 10000;

/* What stands behind the range of the indices in the answer to a capability test, by PB_FIELD_ code
 * (for +CPBR=? 3GPP TS 27.007, 8.12). */
// clang-format off
constexpr std::array<int, PB_FIELD_TYPES> kCapabilities = {
    PB_FIELD_NUMBER, PB_FIELD_TEXT, PB_FIELD_NUMBER2, PB_FIELD_NUMBER3, PB_FIELD_EMAIL,
    PB_FIELD_EXTRA_TEXT};
// clang-format on

/* The numbers in a text, in their order. */
inline std::vector<int> numbers_in(std::string_view text) {
  constexpr const char* kDigits = "0123456789";
  std::vector<int> numbers;
  for (size_t at = text.find_first_of(kDigits); at != text.npos;
       at = text.find_first_of(kDigits, at)) {
    const size_t end = std::min(text.find_first_not_of(kDigits, at), text.size());
    const long value = std::strtol(std::string(text.substr(at, end - at)).c_str(), nullptr, 10);
    numbers.push_back(static_cast<int>(std::min<long>(value, INT32_MAX)));
    at = end;
  }
  return numbers;
}

/* A number alone, of at most nine digits; kUncounted where there is none. */
inline int count_of(const std::string& piece) {
  const std::string digits = without_blanks_around(piece);
  const bool number = !digits.empty() && digits.size() < 10 &&
                      digits.find_first_not_of("0123456789") == digits.npos;
  return number ? std::atoi(digits.c_str()) : kUncounted;
}

/* Takes the counts of `"SM",12,250`. Where they are not told, nothing may be concluded from them.
 */
inline void take_counts(Info& info, const std::string& answer) {
  std::vector<std::string> values = split_outside_quotes(answer, ",");
  values.resize(3);
  info.used = count_of(values[1]);
  info.total = std::max(count_of(values[2]), 0);
}

/* Takes "(1-250),40,18" and the like: the range of the indices, also as a list of ranges or without
 * brackets, and the lengths of fields. A length that is not there is 0: not told. */
inline void take_capabilities(Info& info, const std::string& answer) {
  const size_t open = answer.find('(');
  const size_t comma = answer.find(',');
  const size_t end = std::min(open < comma ? answer.find(')', open) : comma, answer.size());
  const std::vector<int> range = numbers_in(std::string_view(answer).substr(0, end));
  if (!range.empty()) {
    info.first = *std::min_element(range.begin(), range.end());
    info.last = *std::max_element(range.begin(), range.end());
  }
  const std::vector<std::string> lengths = split_outside_quotes(answer.substr(end), ",");
  for (size_t k = 1; k < lengths.size() && k <= kCapabilities.size(); ++k) {
    const std::vector<int> length = numbers_in(lengths[k]);
    info.lengths[static_cast<size_t>(kCapabilities[k - 1])] = length.empty() ? 0 : length.back();
  }
}

/* With ^SCPBR, "(1-300),40,16,64" or "(1-300),40,16,0,64": the last length is that of the address.
 * Further numbers have the first one's length; `query` tells which there are. */
inline void take_scpbr_capabilities(Info& info, const std::string& answer, int query) {
  take_capabilities(info, answer);
  auto& lengths = info.lengths;
  const int email =
      lengths[PB_FIELD_NUMBER3] != 0 ? lengths[PB_FIELD_NUMBER3] : lengths[PB_FIELD_NUMBER2];
  lengths[PB_FIELD_EMAIL] = email;
  lengths[PB_FIELD_EXTRA_TEXT] = 0;
  lengths[PB_FIELD_NUMBER2] = query == 1 ? 0 : lengths[PB_FIELD_NUMBER];
  lengths[PB_FIELD_NUMBER3] = query == 2 ? 0 : lengths[PB_FIELD_NUMBER];
}

/* Asks. An answer of "no" or none at all is what the modem has to say; where none can come, because
 * the server or the modem is gone, the first error ends it. */
class Discovery {
 public:
  Discovery(const Link& link, int platform) : link_(link), platform_(platform) {}

  Result<Info> find_out() {
    take_counts(info_, payload_of("AT+CPBS?"));
    if (platform_ == PB_PLATFORM_4) {
      find_out_scpbr();
    } else {
      find_out_others();
    }
    if (failed_) return failure(failure_, "find out what the phonebook is like");
    return info_;
  }

 private:
  void find_out_scpbr() {
    info_.family = Family::kScpbr;
    /* A card mode of 1 is a SIM; a modem that does not tell counts as one with a USIM. */
    info_.usim = number_of("AT^CARDMODE=?") != 1;
    const std::string answer = standard_capabilities();
    const auto query = split_outside_quotes(payload_of("AT+CPBR=1"), ",");
    const bool told = query.size() == 3 && query[1].find('"') == std::string::npos;
    take_scpbr_capabilities(info_, answer, told ? std::atoi(query[2].c_str()) : 0);
  }

  void find_out_others() {
    const bool probes =
        platform_ != PB_PLATFORM_5 && platform_ != PB_PLATFORM_7 && platform_ != PB_PLATFORM_8;
    bool vendor = false;
    std::string answer;
    if (probes) {
      answer = payload_of("AT+JCPBR=?");
      vendor = !answer.empty();
      info_.usim = number_of("AT+JUSIM=?") > 0;
    }
    /* On an ordinary platform the vendor commands are for the phonebook of a USIM. */
    vendor = vendor && (platform_ == PB_PLATFORM_1 || info_.usim);
    if (vendor) info_.family = Family::kJcpbr;
    take_capabilities(info_, vendor ? answer : standard_capabilities());
  }

  /* These are needed: a card that is still starting is waited for. */
  std::string standard_capabilities() {
    const Answer answer = ask("AT+CPBR=?", kCapabilityTimeoutMs, /*starting=*/true);
    if (!answer.ok()) fail(answer);
    return answer.payload;
  }

  /* The number of an answer of one. */
  int number_of(const char* line) { return count_of(payload_of(line)); }

  /* The information of an answer; empty where it is not OK. */
  std::string payload_of(const char* line) {
    const Answer answer = ask(line, kSelectTimeoutMs, /*starting=*/false);
    return answer.ok() ? answer.payload : "";
  }

  /* Nothing is asked any more after a failure. */
  Answer ask(const char* line, uint32_t timeout_ms, bool starting) {
    if (failed_) return failure_;
    const Answer answer = link_.ask(line, timeout_ms, {}, starting);
    if (!answer.sent() || answer.reply == Reply::kLost || answer.interrupted) fail(answer);
    return answer;
  }

  void fail(const Answer& answer) {
    if (!failed_) failure_ = answer;
    failed_ = true;
  }

  const Link& link_;
  int platform_;
  Info info_;
  bool failed_ = false;
  Answer failure_;
};

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_DISCOVERY_HPP */
