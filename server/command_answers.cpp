#include "server/command_answers.h"

#include <algorithm>
#include <array>

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

constexpr std::string_view kNamePrefixes = "+^*%$#";

template <size_t kCount>
bool lists(const std::array<std::string_view, kCount>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_vendors(const at::Command& command) {
  return kNamePrefixes.find(command.name[0]) != kNamePrefixes.npos && command.name[0] != '+';
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
