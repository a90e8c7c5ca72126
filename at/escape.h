// escape.h - bytes of the wire as readable text, for transcripts, logs and fault rules.
#ifndef QALT_AT_ESCAPE_H_
#define QALT_AT_ESCAPE_H_

#include <optional>
#include <string>
#include <string_view>

namespace qalt::at {

// Printable ASCII as it is; "\r", "\n", "\t", "\\"; every other byte "\xHH".
std::string escaped(std::string_view bytes);
// The bytes of an escaped text, none if it is not one.
std::optional<std::string> unescaped(std::string_view text);

}  // namespace qalt::at

#endif  // QALT_AT_ESCAPE_H_
