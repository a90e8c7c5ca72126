// The server's two inputs: the modem's bytes, whose events do not depend on how they were cut
// between two commands unless one asks for a text, and the frames of clients; and both dispatched.
#include <map>

#include "server/dispatcher.h"
#include "server/frame.h"
#include "server/stream_reader.h"
#include "tests/fuzz/property.h"

namespace {

using qalt::server::StreamEvent;
using qalt::server::StreamReader;
using qalt::server::TimePoint;
using std::chrono::milliseconds;

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

// Clients, time and a modem, by steps. Every request has one answer in time, whatever the modem
// says; from one that answers in order, however late or never, this request's, or an error.
class Service : qalt::server::Dispatcher::Host {
 public:
  explicit Service(bool in_order) : in_order_(in_order) { dispatcher_.opened(now_, false); }

  void run(fuzz::Input input) {
    while (input.size() > 0) {
      const uint8_t step = input.byte(), value = input.byte();
      if (step < 80) submit(kNames[step % std::size(kNames)], value);
      if (step >= 80 && step < 140) pass(milliseconds(value * value));
      if (step >= 140 && step < 155) pace_ = milliseconds(value * 15);
      if (step >= 155 && step < 170) late_ = milliseconds(value * 100);
      if (step >= 170 && step < 185) ++unheard_;
      if (step >= 185 && step < 200) open_.erase(value), dispatcher_.cancel(value, now_);
      if (step >= 200 && step < 205) dispatcher_.closed(), reopen_ = true;
      if (step >= 205 && step < 220) hear(step % 2 ? "\r\n+CREG: 1\r\n" : "\r\nRDY\r\n");
      if (step >= 220 && !in_order_) hear(value % 2 ? input.text() : "\r\n> ");
    }
    while (!open_.empty()) pass(std::chrono::seconds(10));
  }

 private:
  static constexpr const char* kNames[] = {"CSQ", "CMGS", "CPBR", "CMEE", "CFUN", "CPAS;D;+CSQ"};
  void submit(const std::string& line, uint8_t value) {
    open_[++last_] = now_ + int(open_.size() + 2) * std::chrono::seconds(1200);
    const std::string text = "AT+" + line + "=" + std::to_string(last_);
    dispatcher_.submit({last_, text, milliseconds(value * 100 + 1), {value % 4 + 1, 1}}, now_);
  }
  void hear(std::string_view bytes) {
    dispatcher_.receive(bytes, now_);
    if (std::exchange(reopen_, false)) dispatcher_.opened(now_, false);
  }
  void pass(milliseconds time) {
    for (const TimePoint end = now_ + time; now_ < end;) {
      hear("");
      const TimePoint said = said_.empty() ? end : said_.front().first;
      now_ = std::max(now_, std::min({end, said, dispatcher_.deadline().value_or(end)}));
      dispatcher_.tick(now_);
      if (said_.empty() || said > now_) continue;
      hear(std::exchange(said_.front().second, ""));
      said_.erase(said_.begin());
    }
    for (const auto& [id, until] : open_) FUZZ_CHECK(now_ <= until);
  }
  void write_modem(std::string_view bytes) override {
    if (!bytes.ends_with('\r') || (unheard_ > 0 && unheard_-- > 0)) return;
    const std::string name(bytes.substr(std::min(bytes.rfind('+'), bytes.size())));
    const size_t end = std::min(name.find_first_of("=?\r"), name.size() - 1);
    const TimePoint last = said_.empty() ? now_ : said_.back().first;
    said_.emplace_back(std::max(last, now_ + pace_ + std::exchange(late_, {})), "\r\nOK\r\n");
    if (name.empty()) return;
    said_.back().second =
        "\r\n" + name.substr(0, end) + ": " + name.substr(end + 1) + "\n\r\nOK\r\n";
  }
  void answer(uint64_t id, std::string_view text) override {
    FUZZ_CHECK(open_.erase(id) == 1);
    FUZZ_CHECK(text.size() <= StreamReader::kLongestAnswer && text.find('\0') == text.npos);
    const std::string own = ": " + std::to_string(id) + "\r\n\r\nOK\r\n";
    FUZZ_CHECK(!in_order_ || text.empty() || text.starts_with("\r\n+CME ERROR") ||
               text.rfind(own) == std::min(text.find(": "), text.size()));
  }
  void report(std::string_view) override {}
  void note(int, const std::string&) override {}
  void give_up_port() override { reopen_ = true; }
  bool in_order_, reopen_ = false;
  TimePoint now_{};
  milliseconds pace_{}, late_{};
  uint64_t last_ = 0, unheard_ = 0;
  std::map<uint64_t, TimePoint> open_;  // requests, and when they must be answered
  std::vector<std::pair<TimePoint, std::string>> said_;
  qalt::server::Dispatcher dispatcher_{*this, {"ATE0", "AT+CMEE=1"}};
};

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
  for (const bool in_order : {false, true}) Service(in_order).run({bytes, size});
  return 0;
}
