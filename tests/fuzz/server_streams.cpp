// The server's two inputs: the modem's bytes, whose events do not depend on how they were cut
// between two commands unless one asks for a text, and the request frames of clients.
#include "server/frame.h"
#include "server/stream_reader.h"
#include "tests/fuzz/property.h"

namespace {

using qalt::server::StreamEvent;
using qalt::server::StreamReader;

constexpr const char* kCommands[] = {"AT",        "AT+CPBR=1,5", "AT+CSQ",       "ATD123;",
                                     "AT+CGREG?", "AT+CMGR=5",   "AT^SCPBR=1,2", nullptr};

// The events as one text. A command is sent every kStride bytes, answered or not.
class Session {
 public:
  explicit Session(size_t command) : command_(command) {}

  void send() {
    const char* command = kCommands[command_++ % std::size(kCommands)];
    if (command != nullptr) return reader_.expect_answer(command);
    reader_.expect_nothing();
  }
  void feed(std::string_view bytes) {
    reader_.feed(bytes);
    while (const auto event = reader_.next()) {
      FUZZ_CHECK(event->text.size() <= StreamReader::kLongestAnswer);
      FUZZ_CHECK(event->text.find('\0') == event->text.npos);
      FUZZ_CHECK((!event->too_long && !event->unfit) || event->text.empty());
      events_ += std::to_string(static_cast<int>(event->kind)) + (event->too_long ? "L" : "") +
                 (event->unfit ? "U" : "") + (event->open_quote ? "Q" : "") + event->text + '\n';
    }
  }
  const std::string& events() const { return events_; }

 private:
  StreamReader reader_;
  std::string events_;
  size_t command_;
};

// Between two commands in pieces of 1 to 16 bytes; of one byte with seed 0, whole with kWhole.
constexpr size_t kStride = 150;
constexpr uint32_t kWhole = ~uint32_t{0};

std::string events_in_pieces(const std::string& bytes, size_t command, uint32_t seed) {
  Session session(command);
  const bool whole = seed == kWhole;
  for (size_t start = 0, end = 0; start < bytes.size(); start = end) {
    if (start % kStride == 0) session.send();
    const size_t next = std::min(start - start % kStride + kStride, bytes.size());
    if (seed != 0) seed = seed * 1664525 + 1013904223;
    end = whole ? next : std::min<size_t>(start + 1 + (seed >> 28), next);
    session.feed(std::string_view(bytes).substr(start, end - start));
  }
  return session.events();
}

void check_frame(const std::string& bytes) {
  AtMsg frame, expected{};
  std::memset(&frame, bytes.empty() ? 0 : bytes.back(), sizeof frame);
  std::memcpy(&frame, bytes.data(), std::min(bytes.size(), sizeof frame));
  const auto request = qalt::server::read_request(frame);
  FUZZ_CHECK(request.command.empty() != request.refusal.empty());
  FUZZ_CHECK(request.timeout.count() > 0 && request.timeout.count() <= 600'000);
  if (request.command.empty()) return;
  FUZZ_CHECK(request.command.size() < sizeof frame.aucDataBuf);
  for (const char c : request.command) {
    FUZZ_CHECK(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
  }
  // The rest of a frame is zero, whatever stood there.
  qalt::server::fill_frame(frame, request.command);
  request.command.copy(expected.aucDataBuf, sizeof expected.aucDataBuf);
  expected.usParaLen = static_cast<uint16_t>(request.command.size());
  FUZZ_CHECK(fuzz::same_bytes(frame, expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  check_frame(fuzz::Input(input).rest());
  const uint8_t command = input.byte();
  const uint32_t seed = input.word();
  const std::string stream = input.rest();
  const std::string whole = events_in_pieces(stream, command, kWhole);
  FUZZ_CHECK(events_in_pieces(stream, command, 0) == whole);
  FUZZ_CHECK(events_in_pieces(stream, command, seed % kWhole) == whole);
  return 0;
}
