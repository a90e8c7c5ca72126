#include "at/transcript.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <system_error>
#include <utility>

#include "at/escape.h"

namespace qalt::at {
namespace {

// "2026-01-31T12:00:00.123456Z"
constexpr size_t kTimeLength = 27;

std::string time_now() {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  const std::time_t whole = duration_cast<seconds>(now).count();
  const long fraction = long(duration_cast<microseconds>(now).count() % 1'000'000);
  std::tm utc{};
  gmtime_r(&whole, &utc);
  char text[64];
  const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(text + length, sizeof text - length, ".%06ldZ", fraction);
  return text;
}

}  // namespace

std::optional<TranscriptEntry> parse_transcript_line(std::string_view line) {
  if (line.size() < kTimeLength + 3 || line[kTimeLength] != ' ' || line[kTimeLength + 2] != ' ') {
    return std::nullopt;
  }
  const char kind = line[kTimeLength + 1];
  if (std::string_view("><#").find(kind) == std::string_view::npos) return std::nullopt;
  auto bytes = unescaped(line.substr(kTimeLength + 3));
  if (!bytes) return std::nullopt;
  return TranscriptEntry{TranscriptEntry::Kind(kind), std::move(*bytes)};
}

Transcript::Transcript(std::string path) : path_(std::move(path)) {
  reopen();
}

void Transcript::reopen() {
  if (path_.empty()) return;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int descriptor = ::open(path_.c_str(), kFlags, 0600);
  if (descriptor < 0) {
    const bool link = errno == ELOOP;
    throw std::system_error(errno, std::generic_category(),
                            path_ + (link ? " is a link, and none is followed" : ""));
  }
  std::unique_ptr<FILE, Closer> file(::fdopen(descriptor, "a"));
  struct stat found {};
  if (::fstat(descriptor, &found) != 0 || !S_ISREG(found.st_mode) || found.st_uid != ::geteuid() ||
      found.st_nlink > 1 || ::fchmod(descriptor, 0600) != 0) {
    throw std::system_error(EPERM, std::generic_category(),
                            path_ + " is no file of this user alone, with one name");
  }
  file_ = std::move(file);
}

void Transcript::add(TranscriptEntry::Kind kind, std::string_view bytes) {
  if (!file_) return;
  using Kind = TranscriptEntry::Kind;
  const std::string text = kind == Kind::kToModem     ? mask_.to_modem(bytes)
                           : kind == Kind::kFromModem ? mask_.from_modem(bytes)
                                                      : without_secrets(bytes);
  std::fprintf(file_.get(), "%s %c %s\n", time_now().c_str(), char(kind), escaped(text).c_str());
  std::fflush(file_.get());
}

}  // namespace qalt::at
