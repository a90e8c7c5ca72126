#include "server/replay_port.h"

#include <fstream>
#include <stdexcept>
#include <utility>

#include "at/secrets.h"

namespace qalt::server {

namespace {

using Kind = at::TranscriptEntry::Kind;

}  // namespace

ReplayPort::ReplayPort(asio::io_context& context, const std::string& path)
    : context_(context), path_(path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be read");
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    auto entry = at::parse_transcript_line(line);
    if (!entry) {
      throw std::runtime_error(path + ", line " + std::to_string(number) +
                               ": no transcript as --log writes it");
    }
    if (entry->kind != Kind::kRemark) entries_.push_back(std::move(*entry));
  }
  // A folder opens, too, and reads as nothing.
  if (entries_.empty()) throw std::runtime_error(path + ": no transcript, nothing stands in it");
}

void ReplayPort::open() {
  asio::post(context_, [this, session = ++session_] {
    if (session == session_) handlers_.opened();
  });
}

void ReplayPort::write(std::string_view bytes) {
  // Secrets are masked in the transcript.
  const std::string wanted = at::without_secrets(bytes);
  for (size_t step = 0; step < entries_.size(); ++step) {
    const size_t found = (position_ + step) % entries_.size();
    if (entries_[found].kind != Kind::kToModem || entries_[found].bytes != wanted) continue;
    position_ = found + 1;
    std::string answer;
    for (; position_ < entries_.size() && entries_[position_].kind == Kind::kFromModem;
         ++position_) {
      answer += entries_[position_].bytes;
    }
    // What was masked in the command is masked in its echo.
    if (answer.starts_with(wanted)) answer.replace(0, wanted.size(), bytes);
    return say(std::move(answer));
  }
  say("\r\nERROR\r\n");
}

void ReplayPort::say(std::string bytes) {
  asio::post(context_, [this, bytes = std::move(bytes), session = session_] {
    if (session == session_) handlers_.received(bytes);
  });
}

}  // namespace qalt::server
