// escape.h - bytes of the wire as readable text, for the transcript and the log.
#ifndef QALT_SERVER_ESCAPE_H_
#define QALT_SERVER_ESCAPE_H_

#include <optional>
#include <string>
#include <string_view>

#include "sim/log_text.h"

namespace qalt::server {

using sim::escaped;
// The bytes of an escaped text, none if it is not one.
std::optional<std::string> unescaped(std::string_view text);

// The text with the digits of PINs and passwords as '*': behind "+CPIN=", "+CPWD=", "+CLCK=" and
// "^CPIN=" up to the end of the command.
std::string without_secrets(std::string_view text);

}  // namespace qalt::server

#endif  // QALT_SERVER_ESCAPE_H_
