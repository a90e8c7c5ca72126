#include "server/report_names.h"

#include <algorithm>
#include <array>

#include "qalt_at/parser.h"

namespace qalt::server {
namespace {

struct Name {
  std::string_view text;
  bool whole_line;
};

// Reports of 3GPP TS 27.005 and 27.007 and of V.250 that the library's table does not list.
// clang-format off
constexpr std::array<Name, 6> kFurtherNames = {{
    {"+CMT:",      false},
    {"+CLIP:",     false},
    {"+CRING:",    false},
    {"+CCWA:",     false},
    {"RING",       true},
    {"NO CARRIER", true},
}};
// clang-format on

// Each is a maker's own; the card is ready anew after a restart, or where it was changed.
// clang-format off
constexpr std::array<Name, 9> kStarts = {{
    {"RDY",          true},
    {"APP RDY",      true},
    {"START",        true},
    {"SYSSTART",     true},
    {"^SYSSTART",    false},
    {"*EBOOT",       false},
    {"*EMRDY:",      false},
    {"+KSUP:",       false},
    {"+CPIN: READY", true},
}};
// clang-format on

bool matches(std::string_view line, const Name& name) {
  return name.whole_line ? line == name.text : line.starts_with(name.text);
}

// A flag "\r\n+CMTI: " names the lines that begin with "+CMTI:", a flag "\r\n+JEND\r\n" the line
// "+JEND" alone.
Name name_of(const AtEndFlgEntry& row) {
  std::string_view text(row.EndFlag, std::find(std::begin(row.EndFlag), std::end(row.EndFlag), 0) -
                                         std::begin(row.EndFlag));
  while (text.starts_with('\r') || text.starts_with('\n')) text.remove_prefix(1);
  while (!text.empty() && std::string_view("\r\n ").find(text.back()) != text.npos) {
    text.remove_suffix(1);
  }
  return {text, row.HavePara == 0};
}

}  // namespace

bool is_report(std::string_view line) {
  for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
    const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[i];
    if (row.ResType == AT_RES_REPORT && matches(line, name_of(row))) return true;
  }
  return std::any_of(kFurtherNames.begin(), kFurtherNames.end(),
                     [&](const Name& name) { return matches(line, name); });
}

bool announces_start(std::string_view line) {
  return std::any_of(kStarts.begin(), kStarts.end(),
                     [&](const Name& name) { return matches(line, name); });
}

bool has_data_line(std::string_view line) {
  if (line.starts_with("+CMT:") || line.starts_with("+CBM:")) return true;
  // In text mode a status report is one line of several values; in PDU mode its header is a length.
  return line.starts_with("+CDS:") && line.find(',') == line.npos;
}

}  // namespace qalt::server
