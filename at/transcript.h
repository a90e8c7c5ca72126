// transcript.h - the record of everything on the modem line, readable and good for a replay.
//
//   2026-01-31T12:00:00.123456Z > AT+CPBS?\r        to the modem
//   2026-01-31T12:00:00.125001Z < \r\n+CPBS: ...    from the modem, in the pieces it came in
//   2026-01-31T12:00:00.125040Z # client 7 ...      what the server has to say
#ifndef QALT_AT_TRANSCRIPT_H_
#define QALT_AT_TRANSCRIPT_H_

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "at/secrets.h"

namespace qalt::at {

struct TranscriptEntry {
  enum class Kind : char { kToModem = '>', kFromModem = '<', kRemark = '#' };
  Kind kind;
  std::string bytes;
};

// Reads one line of a transcript, without its line end.
std::optional<TranscriptEntry> parse_transcript_line(std::string_view line);

class Transcript {
 public:
  // Appends to `path`, which only its owner may read: phonebooks are private. It is a file of this
  // process's user with no other name, and no link; a pipe could hold the server up. An empty path:
  // nothing is recorded. Throws std::system_error.
  explicit Transcript(std::string path);

  // Digits of PINs are masked, in whatever pieces they come. A full disk loses the entry, not the
  // server.
  void add(TranscriptEntry::Kind kind, std::string_view bytes);
  // The file was moved away: begins a new one under the same name.
  void reopen();

 private:
  struct Closer {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  std::string path_;
  std::unique_ptr<FILE, Closer> file_;
  LineMask mask_;
};

}  // namespace qalt::at

#endif  // QALT_AT_TRANSCRIPT_H_
