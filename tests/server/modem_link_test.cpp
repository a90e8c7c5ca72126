// The dispatcher on a real event loop: what a clock of the test's own cannot show.
#include "server/modem_link.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/socket.h>

#include <future>

#include "server/tcp_port.h"

namespace qalt::server {
namespace {

class PairPort : public StreamPort<asio::local::stream_protocol::socket> {
 public:
  PairPort(asio::io_context& context, int descriptor) : StreamPort(context) {
    stream_.assign(asio::local::stream_protocol(), descriptor);
  }
  void open() override {
    asio::post(stream_.get_executor(), [this] { begin(); });
  }
  bool clean_at_open() const override { return true; }
  std::string name() const override { return "pair"; }
};

// The process stands still over the end of a time-out, and the answer came before that.
TEST(ModemLink, AnAnswerThatCameInTimeIsInTime) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  asio::io_context context(1);
  at::Transcript transcript("");
  const Logger logger(Logger::Target::kNone);
  ModemLink link(context, std::make_unique<PairPort>(context, ends[0]), {}, kAnyWait, transcript,
                 logger);
  std::string answer = "none";
  link.set_handlers({[&](uint64_t, std::string_view text) { answer = text; }, [](auto) {}, [] {}});
  link.start();
  context.poll();
  link.submit({1, "ATI", std::chrono::milliseconds(1), {1, 1}});
  const std::string whole = "\r\n" + std::string(10'000, 'x') + "\r\n\r\nOK\r\n";
  ASSERT_EQ(::send(ends[1], whole.data(), whole.size(), 0), ssize_t(whole.size()));
  const auto late = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
  while (std::chrono::steady_clock::now() < late) continue;
  while (answer == "none") context.run_one();
  EXPECT_TRUE(answer == whole);
  // Bytes without an end hold nothing up.
  link.submit({2, "ATI", std::chrono::milliseconds(1), {1, 1}});
  for (answer = "none"; answer == "none"; context.run_one()) {
    ::send(ends[1], "x", 1, MSG_DONTWAIT);
  }
  EXPECT_EQ(answer, "");
  ::close(ends[1]);
}

std::promise<void> g_asked, g_told;

// The system does not end looking for a name while the port, and all else, does.
TEST(TcpPort, ANameThatIsLookedUpHoldsNoEndUp) {
  {
    asio::io_context context(1);
    TcpPort port(context, {"modem.invalid", "1"});
    port.open();
    g_asked.get_future().wait();
    port.close();
    context.poll();
  }
  g_told.set_value();
}

}  // namespace
}  // namespace qalt::server

// In the place of the C library's.
extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**) {
  qalt::server::g_asked.set_value();
  qalt::server::g_told.get_future().wait();
  return EAI_FAIL;
}
