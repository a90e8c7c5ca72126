// report_names.h - which lines of the modem are unsolicited reports.
#ifndef QALT_SERVER_REPORT_NAMES_H_
#define QALT_SERVER_REPORT_NAMES_H_

#include <string_view>

namespace qalt::server {

// Whether a line (without its line end) is a report: its name is that of a report row of the
// library's end-flag table, or one of the few that the table leaves to the server.
bool is_report(std::string_view line);

// Whether a line is what modems say when they have begun anew, so that their settings are gone.
bool announces_start(std::string_view line);

// Whether the report goes on with one line of data: the headers of a delivered message (3GPP TS
// 27.005, +CMT, +CDS in PDU mode, +CBM).
bool has_data_line(std::string_view line);

}  // namespace qalt::server

#endif  // QALT_SERVER_REPORT_NAMES_H_
