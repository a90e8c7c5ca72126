#include "server/command_answers.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qalt::server {
namespace {

// 3GPP TS 27.005: sending, storing, commands, and the acknowledgement with a text.
constexpr std::array<std::string_view, 4> kPrompting = {"+CMGS", "+CMGW", "+CMGC", "+CNMA"};

// Texts of messages and of networks (27.005, 4.1 and 4.2; 27.007, 7.15), identifications and
// listings, which are the maker's own (27.007, 5.1 to 5.4; V.250, 6.1).
constexpr std::array<std::string_view, 16> kFreeText = {
    "+CMGL", "+CMGR", "+CNMI", "+CMSS", "+CUSD", "+CGMI", "+CGMM", "+CGMR",
    "+CGSN", "+GMI",  "+GMM",  "+GMR",  "+GSN",  "+GCAP", "I",     "&V"};

// Of vendors' commands those of the phonebook.
constexpr std::array<std::string_view, 5> kNamedOfVendors = {"^SCPBR", "^SCPBW", "^CPBR", "^CPBW",
                                                             "^CARDMODE"};

// Names that no report has.
constexpr std::array<std::string_view, 8> kPhonebooks = {"+CPBR", "+CPBW",  "+CPBS",  "+CPBF",
                                                         "+CSCS", "+JCPBR", "+JCPBW", "^SCPBR"};
constexpr std::array<std::string_view, 3> kReads = {"+CPBR", "+JCPBR", "^SCPBR"};

constexpr std::string_view kNamePrefixes = "+^*%$#";

template <size_t kCount>
bool lists(const std::array<std::string_view, kCount>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_vendors(const at::Command& command) {
  const char first = command.name[0];
  return (first < 'A' || first > 'Z') && first != '+' && first != '&' && first != '\\';
}

}  // namespace

bool may_prompt(const at::Command& command) {
  if (command.form == at::Form::kQuery || command.form == at::Form::kTest) return false;
  return lists(kPrompting, command.name) ||
         (is_vendors(command) && !lists(kNamedOfVendors, command.name));
}

bool answers_by_name(const at::Command& command) {
  if (lists(kFreeText, command.name)) return false;
  return !is_vendors(command) || lists(kNamedOfVendors, command.name);
}

bool is_result(std::string_view line) {
  return line == "OK" || line == "ERROR" || line == kNotSupported || line == kCommandNotSupport ||
         line.starts_with("+CME ERROR:") || line.starts_with("+CMS ERROR:");
}

bool is_connect(std::string_view line) {
  constexpr std::string_view kConnect = "CONNECT";
  if (!line.starts_with(kConnect)) return false;
  line.remove_prefix(kConnect.size());
  return line.empty() || (line.size() > 1 && line[0] == ' ' && line[1] >= '0' && line[1] <= '9');
}

bool is_phonebooks(std::string_view line) {
  const size_t colon = line.find(':');
  return colon != line.npos && lists(kPhonebooks, line.substr(0, colon));
}

bool is_anothers(const at::Command& command, std::string_view line) {
  const size_t colon = line.find(':');
  const std::string_view name = line.substr(0, colon);
  if (colon == line.npos || !lists(kPhonebooks, name)) return false;
  if (name != command.name) return true;
  if (command.form != at::Form::kSet || !lists(kReads, name)) return false;
  const auto range = at::split_arguments(command.arguments);
  const size_t digits = line.find_first_not_of(' ', colon + 1);
  if (!range || digits == line.npos) return false;
  const auto number = [](std::string_view text) {
    int value = -1;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  };
  const int index = number(line.substr(digits));
  const int first = number(range->front().value);
  const int last = number(range->back().value);
  return index >= 0 && first >= 0 && last >= 0 && (index < first || index > last);
}

bool bears_name(std::string_view line) {
  if (line.empty() || kNamePrefixes.find(line[0]) == kNamePrefixes.npos) return false;
  size_t end = 1;
  while (end < line.size() && ((line[end] >= 'A' && line[end] <= 'Z') ||
                               (line[end] >= '0' && line[end] <= '9') || line[end] == '_')) {
    ++end;
  }
  return end > 1 && end < line.size() && line[end] == ':';
}

}  // namespace qalt::server
