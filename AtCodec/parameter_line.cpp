// Rewriting one parameter line for a whitespace scan, and turning scanned fields back.
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "common/text.h"
#include "common/word_scan.h"
#include "qalt_at/parameters.h"

namespace {

// Whether carriage return and line feed inside quotes are protected like space and tab.
enum class LineEnds { kPlain, kMarked };

// The characters that a scanner would take for a gap, and the markers that stand for them.
struct Marker {
  uint8_t mark;
  uint8_t character;
  LineEnds used_when;
};
constexpr Marker kMarkers[] = {
    {ATCODEC_MARK_SPACE, ' ', LineEnds::kPlain},
    {ATCODEC_MARK_TAB, '\t', LineEnds::kPlain},
    {ATCODEC_MARK_CR, '\r', LineEnds::kMarked},
    {ATCODEC_MARK_LF, '\n', LineEnds::kMarked},
};

bool in_use(const Marker& marker, LineEnds line_ends) {
  return marker.used_when == LineEnds::kPlain || line_ends == LineEnds::kMarked;
}

// The marker of a byte inside quotes, if it has one; any other byte stays.
uint8_t marked(uint8_t byte, LineEnds line_ends) {
  for (const Marker& marker : kMarkers) {
    if (byte == marker.character && in_use(marker, line_ends)) return marker.mark;
  }
  return byte;
}

// Length of a line that the rewrites take; 0 for one that they leave alone.
size_t line_length(const void* line) {
  if (line == nullptr) return 0;
  const size_t length = qalt::bounded_length(static_cast<const char*>(line), ATCODEC_PARA_LEN);
  return length == ATCODEC_PARA_LEN ? 0 : length;
}

// The rewritten line; one that would outgrow its field is not written back.
class Rewrite {
 public:
  explicit Rewrite(LineEnds line_ends) : line_ends_(line_ends) {}

  // Appends what the bytes of a line become.
  void take(const uint8_t* line, size_t length) {
    for (const uint8_t *byte = line, *end = line + length; byte != end;) {
      const uint8_t* special = find_special(byte, end);
      append(byte, static_cast<size_t>(special - byte));
      if (special == end) return;
      take_special(*special, special[1]);
      byte = special + 1;
    }
  }

  bool fits() const { return fits_; }

  void write_to(unsigned char* line) const {
    std::memcpy(line, text_, length_);
    line[length_] = '\0';
  }

 private:
  // Every byte with a rule of its own - quote, comma, blanks, line ends - is at most a comma.
  static constexpr uint8_t kLastSpecial = ',';

  static const uint8_t* find_special(const uint8_t* byte, const uint8_t* end) {
    while (end - byte >= static_cast<ptrdiff_t>(qalt::kWordSize) &&
           !qalt::has_byte_below(qalt::load_word(byte), kLastSpecial + 1)) {
      byte += qalt::kWordSize;
    }
    while (byte != end && *byte > kLastSpecial) ++byte;
    return byte;
  }

  // `next` is the byte behind it, NUL behind the last one.
  void take_special(uint8_t byte, uint8_t next) {
    if (byte == '"') {
      quoted_ = !quoted_;
      if (next == '"') append(ATCODEC_MARK_EMPTY);
    } else if (quoted_) {
      append(marked(byte, line_ends_));
    } else if (byte == ',') {
      append(' ');
      if (next == ',' || next == '\0') append(ATCODEC_MARK_EMPTY);
    } else {
      append(byte);
    }
  }

  void append(uint8_t byte) { append(&byte, 1); }
  void append(const uint8_t* bytes, size_t count) {
    fits_ = fits_ && count < sizeof text_ - length_;
    if (!fits_) return;
    std::memcpy(text_ + length_, bytes, count);
    length_ += count;
  }

  LineEnds line_ends_;
  bool quoted_ = false;
  bool fits_ = true;
  size_t length_ = 0;
  uint8_t text_[ATCODEC_PARA_LEN];
};

void rewrite(unsigned char* line, LineEnds line_ends) {
  const size_t length = line_length(line);
  if (length == 0) return;
  Rewrite result(line_ends);
  result.take(line, length);
  if (result.fits()) result.write_to(line);
}

void restore(char* field, LineEnds line_ends) {
  if (field == nullptr) return;
  if (static_cast<uint8_t>(field[0]) == ATCODEC_MARK_EMPTY && field[1] == '\0') {
    field[0] = '\0';
    return;
  }
  for (const Marker& marker : kMarkers) {
    if (!in_use(marker, line_ends)) continue;
    for (char* c = field; (c = std::strchr(c, marker.mark)) != nullptr; ++c) {
      *c = static_cast<char>(marker.character);
    }
  }
}

}  // namespace

void ATCodec_PreProc_Res_ParaLine(unsigned char* pLine) {
  rewrite(pLine, LineEnds::kPlain);
}

void ATCodec_PreProc_Res_ParaLine_Special(unsigned char* pLine) {
  rewrite(pLine, LineEnds::kMarked);
}

void ATCodec_Restore_String_Para(char* pField) {
  restore(pField, LineEnds::kPlain);
}

void ATCodec_Restore_String_Para_Special(char* pField) {
  restore(pField, LineEnds::kMarked);
}

void ATCodec_ProcRes_ParaLineEx(char* pLine) {
  const size_t length = line_length(pLine);
  size_t written = 0;
  for (size_t i = 0; i < length; ++i) {
    if (pLine[i] == ')' && pLine[i + 1] == ',') {
      pLine[written++] = ';';
      ++i;
    } else if (pLine[i] != '(' && pLine[i] != ')') {
      pLine[written++] = pLine[i];
    }
  }
  if (length != 0) std::memset(pLine + written, 0, length - written);
}

int ATCodec_TranslateToCmdPara(char* pCmdPara, const char* pFormat, ...) {
  if (pCmdPara == nullptr || pFormat == nullptr) return 0;
  va_list arguments;
  va_start(arguments, pFormat);
  static_cast<void>(std::vsnprintf(pCmdPara, INT_MAX, pFormat, arguments));
  va_end(arguments);
  return 0;
}
