/*
 * parameter_list.hpp - the parameters of an answer line, and those that 3GPP TS 27.007 (8.12, 8.14)
 * has behind the text of a contact: hidden, group, adnumber, adtype, secondtext, email, sip_uri and
 * tel_uri. A phone's own memory uses them, and a write without them clears them.
 */
#ifndef QALT_AT_DETAIL_PARAMETER_LIST_HPP
#define QALT_AT_DETAIL_PARAMETER_LIST_HPP

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qalt_at/parameters.h"

namespace qalt {
namespace detail {

/* Whether there is no <hidden>: the first is a text, and so in quotes. */
inline bool lacks_hidden(const std::string& further) {
  return further.compare(0, 2, ",\"") == 0;
}

/* Splits at a separator outside quotes. */
inline std::vector<std::string> split_outside_quotes(const std::string& text,
                                                     const char* separator) {
  std::vector<std::string> pieces;
  const char* start = text.c_str();
  for (;;) {
    const unsigned char* found =
        ATCodec_Find_Sub_Str(reinterpret_cast<const unsigned char*>(start), separator);
    if (found == nullptr) break;
    const char* end = reinterpret_cast<const char*>(found);
    pieces.emplace_back(start, end);
    start = end + 1;
  }
  pieces.emplace_back(start);
  return pieces;
}

inline std::string without_blanks_around(const std::string& piece) {
  const size_t first = piece.find_first_not_of(' ');
  if (first == piece.npos) return "";
  return piece.substr(first, piece.find_last_not_of(' ') - first + 1);
}

inline std::string unquoted(const std::string& piece) {
  std::string value = without_blanks_around(piece);
  const bool quoted = value.size() > 1 && value.front() == '"' && value.back() == '"';
  return quoted ? value.substr(1, value.size() - 2) : value;
}

/* What the further parameters say, from the first on. Empty is one that says nothing: one without a
 * value, "not hidden", the type of a number that is not there. None of these stands at the end. */
inline std::vector<std::string> values_of_further(const std::string& further) {
  constexpr size_t kHidden = 0;
  constexpr size_t kNumber = 2;
  constexpr size_t kType = 3;
  std::vector<std::string> values;
  if (further.empty()) return values;
  if (lacks_hidden(further)) values.emplace_back();
  for (const std::string& piece : split_outside_quotes(further.substr(1), ",")) {
    values.push_back(unquoted(piece));
  }
  if (values[kHidden] == "0") values[kHidden].clear();
  if (values.size() > kType && values[kNumber].empty()) values[kType].clear();
  while (!values.empty() && values.back().empty()) values.pop_back();
  return values;
}

/* The further parameters of a line's pieces, those from `first` on, as a contact has them: as the
 * modem gave them, each with its comma, but for those at the end that say nothing. */
inline std::string further_of(const std::vector<std::string>& pieces, size_t first) {
  const auto join = [&](size_t count) {
    std::string text;
    for (size_t k = first; k < pieces.size() && k - first < count; ++k) {
      text += ',' + without_blanks_around(pieces[k]);
    }
    return text;
  };
  const std::string all = join(pieces.size());
  const size_t telling = values_of_further(all).size();
  return join(lacks_hidden(all) && telling != 0 ? telling - 1 : telling);
}

/* Further parameters in the order of a write (8.14): there <hidden>, in an answer the first, stands
 * behind the seven others, and means 0 where it is missing. */
inline std::string in_order_of_write(const std::string& further) {
  constexpr size_t kOthers = 7;
  if (further.empty() || lacks_hidden(further)) return further;
  std::vector<std::string> pieces = split_outside_quotes(further.substr(1), ",");
  const std::string hidden = unquoted(pieces.front());
  pieces.erase(pieces.begin());
  if (!hidden.empty() && hidden != "0") {
    pieces.resize(std::max(pieces.size(), kOthers));
    pieces.push_back(hidden);
  }
  std::string text;
  for (const std::string& piece : pieces) text += ',' + piece;
  return text;
}

/* Whether further parameters may stand in a command as they are: each empty, in quotes, or a
 * word without blanks. Anything else could end the parameter, the line or the command. */
inline bool is_further(std::string_view text) {
  enum { kBehindComma, kInWord, kInQuotes, kBehindQuotes } place = kBehindQuotes;
  for (const char c : text) {
    const bool word = c > ' ' && c <= '~' && c != '"' && c != ';';
    if (place == kInQuotes) {
      if (static_cast<uint8_t>(c) < ' ' || c == 0x7F) return false;
      if (c == '"') place = kBehindQuotes;
    } else if (c == ',') {
      place = kBehindComma;
    } else if (c == '"' && place == kBehindComma) {
      place = kInQuotes;
    } else if (word && place != kBehindQuotes) {
      place = kInWord;
    } else {
      return false;
    }
  }
  return place != kInQuotes;
}

/* Whether all that `wanted` names is in `stored`. What it does not name the modem may have filled
 * in by itself. */
inline bool keeps_further(const std::string& stored, const std::string& wanted) {
  const std::vector<std::string> kept = values_of_further(stored);
  const std::vector<std::string> named = values_of_further(wanted);
  for (size_t k = 0; k < named.size(); ++k) {
    if (!named[k].empty() && (k >= kept.size() || kept[k] != named[k])) return false;
  }
  return true;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_PARAMETER_LIST_HPP */
