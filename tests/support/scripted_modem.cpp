#include "tests/support/scripted_modem.h"

#include <errno.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "qalt_at/link.h"

namespace test {
namespace {

ScriptedModem* g_modem = nullptr;
std::string g_answer;

// Whether a signal comes first.
bool interrupted() {
  if (g_modem->interrupts == 0) return false;
  --g_modem->interrupts;
  errno = EINTR;
  return true;
}

}  // namespace

ScriptedModem::ScriptedModem() {
  g_modem = this;
}
ScriptedModem::~ScriptedModem() {
  g_modem = nullptr;
}

void ScriptedModem::on(std::string start, Answer answer) {
  rules_.insert(rules_.begin(), {std::move(start), std::move(answer)});
}

void ScriptedModem::on(std::string start, std::string answer) {
  on(std::move(start), [answer](const std::string&) { return answer; });
}

std::vector<std::string> ScriptedModem::lines() const {
  std::vector<std::string> lines;
  for (const SentCommand& command : sent_) lines.push_back(command.line);
  return lines;
}

std::string ScriptedModem::receive(const std::string& line, uint32_t timeout_ms) {
  sent_.push_back({line, timeout_ms});
  for (const auto& [start, answer] : rules_) {
    if (line.rfind(start, 0) == 0) return answer(line);
  }
  return kError;
}

std::string information(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "\r\n" + line;
  return text + "\r\n" + kOk;
}

}  // namespace test

extern "C" {

int connect(int, const sockaddr*, socklen_t) {
  if (test::g_modem != nullptr && test::g_modem->listening) {
    return test::interrupted() ? -1 : 0;
  }
  errno = ECONNREFUSED;
  return -1;
}

int getsockopt(int, int, int, void* value, socklen_t*) noexcept {
  const ucred peer = {getpid(), test::g_modem->user, 0};
  std::memcpy(value, &peer, sizeof peer);
  return 0;
}

ssize_t send(int, const void* bytes, size_t size, int) {
  if (test::interrupted()) return -1;
  AtMsg frame;
  std::memcpy(&frame, bytes, sizeof frame);
  test::g_answer = test::g_modem->receive(frame.aucDataBuf, frame.ulTimeout);
  return static_cast<ssize_t>(size);
}

ssize_t recv(int, void* bytes, size_t size, int) {
  if (test::interrupted()) return -1;
  if (test::g_answer == test::kHangUp) return 0;
  AtMsg frame = {};
  const size_t length = test::g_answer.copy(frame.aucDataBuf, sizeof frame.aucDataBuf - 1);
  frame.usParaLen = static_cast<uint16_t>(length);
  std::memcpy(bytes, &frame, size < sizeof frame ? size : sizeof frame);
  return static_cast<ssize_t>(size);
}

}  // extern "C"
