/*
 * report.hpp - a pushed report and its name.
 */
#ifndef QALT_AT_DETAIL_REPORT_HPP
#define QALT_AT_DETAIL_REPORT_HPP

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "qalt_at/parser.h"

namespace qalt {

struct Report {
  std::string name; /* "+CMTI": as the library's tables have it; of a report that they do not have
                       what stands before the colon of its first line, or that line: "RING" */
  std::string text; /* as it was sent, with its line ends */
};

namespace detail {

/* The name that the command table has for an identifier; empty for none. */
inline std::string command_name(uint32_t id) {
  int32_t row = 0;
  return _Find_Cmd_By_ID(&row, id) == AT_PARSE_OK ? QaltWcdma_AtCmdTable[row].CmdName : "";
}

/* What stands before the colon of the first line that is not empty, or the line. */
inline std::string first_name(const std::string& text) {
  const size_t first = std::min(text.find_first_not_of("\r\n"), text.size());
  return text.substr(first, std::min(text.find_first_of(":\r\n", first), text.size()) - first);
}

/* Two reports share an identifier in the tables: a name counts where the text has it. The record
 * is 100 KB, which the callback may need of the stack. */
inline std::string report_name(const std::string& text) {
  const auto parsed = std::make_unique<AtRes>();
  std::string changed = text;
  if (Bk_Parse_At_Res(changed.data(), parsed.get()) == AT_PARSE_OK &&
      parsed->ResType == AT_RES_REPORT) {
    std::string name = command_name(parsed->CmdId);
    if (!name.empty() && text.find(name) != text.npos) return name;
  }
  return first_name(text);
}

inline Report report_of(std::string text) {
  std::string name = report_name(text);
  return {std::move(name), std::move(text)};
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_REPORT_HPP */
