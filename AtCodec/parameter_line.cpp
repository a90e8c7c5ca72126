// Rewriting one parameter line for a whitespace scan, and turning scanned fields back.
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "common/text.h"
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

// One member of each marker that is in use, turned into the other; any other byte stays.
uint8_t exchange(uint8_t byte, uint8_t Marker::*from, uint8_t Marker::*to, LineEnds line_ends) {
  for (const Marker& marker : kMarkers) {
    const bool used = marker.used_when == LineEnds::kPlain || line_ends == LineEnds::kMarked;
    if (used && byte == marker.*from) return marker.*to;
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

  // Appends what `byte` becomes, given its successor (NUL behind the last one).
  void take(uint8_t byte, uint8_t next) {
    if (byte == '"') {
      quoted_ = !quoted_;
      if (next == '"') append(ATCODEC_MARK_EMPTY);
    } else if (quoted_) {
      append(exchange(byte, &Marker::character, &Marker::mark, line_ends_));
    } else if (byte == ',') {
      append(' ');
      if (next == ',' || next == '\0') append(ATCODEC_MARK_EMPTY);
    } else {
      append(byte);
    }
  }

  bool fits() const { return length_ < sizeof text_; }

  void write_to(unsigned char* line) {
    std::memcpy(line, text_, length_);
    line[length_] = '\0';
  }

 private:
  void append(uint8_t byte) {
    if (length_ < sizeof text_) text_[length_++] = byte;
  }

  LineEnds line_ends_;
  bool quoted_ = false;
  size_t length_ = 0;
  uint8_t text_[ATCODEC_PARA_LEN];
};

void rewrite(unsigned char* line, LineEnds line_ends) {
  const size_t length = line_length(line);
  if (length == 0) return;
  Rewrite result(line_ends);
  for (size_t i = 0; i < length; ++i) result.take(line[i], line[i + 1]);
  if (result.fits()) result.write_to(line);
}

void restore(char* text, LineEnds line_ends) {
  if (text == nullptr) return;
  uint8_t* field = reinterpret_cast<uint8_t*>(text);
  if (field[0] == ATCODEC_MARK_EMPTY && field[1] == '\0') {
    field[0] = '\0';
    return;
  }
  for (; *field != '\0'; ++field) {
    *field = exchange(*field, &Marker::mark, &Marker::character, line_ends);
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
  std::vsnprintf(pCmdPara, INT_MAX, pFormat, arguments);
  va_end(arguments);
  return 0;
}
