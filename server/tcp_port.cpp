#include "server/tcp_port.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>

namespace qalt::server {
namespace {

constexpr std::chrono::seconds kConnectTime{10};

// A peer that is gone without a word is noticed within two minutes, not the kernel's two hours.
void keep_alive(int socket) {
  const struct {
    int level, option, value;
  } rows[] = {
      {SOL_SOCKET, SO_KEEPALIVE, 1},
      {IPPROTO_TCP, TCP_KEEPIDLE, 60},
      {IPPROTO_TCP, TCP_KEEPINTVL, 15},
      {IPPROTO_TCP, TCP_KEEPCNT, 4},
      {IPPROTO_TCP, TCP_USER_TIMEOUT, 120'000},
  };
  for (const auto& row : rows) {
    ::setsockopt(socket, row.level, row.option, &row.value, sizeof row.value);
  }
}

}  // namespace

// A thread of its own that nobody waits for: the system may look for a name longer than the server
// is to end in.
struct TcpPort::Lookup {
  std::mutex mutex;
  TcpPort* port;  // none: nobody wants to know any more
};

TcpPort::~TcpPort() {
  if (!lookup_) return;
  const std::lock_guard lock(lookup_->mutex);
  lookup_->port = nullptr;
}

void TcpPort::open() {
  opening_ = true;
  timer_.expires_after(kConnectTime);
  timer_.async_wait([this, session = session_](const asio::error_code& error) {
    if (!error && session == session_) fail("no connection in time");
  });
  if (lookup_) return;
  try {
    look_up();
  } catch (const std::system_error& error) {
    lookup_.reset();
    fail(error.what());
  }
}

void TcpPort::look_up() {
  lookup_ = std::make_shared<Lookup>();
  lookup_->port = this;
  std::thread([lookup = lookup_, address = address_, executor = stream_.get_executor()] {
    addrinfo hints{};
    hints.ai_flags = AI_ADDRCONFIG;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int code = ::getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &list);
    Endpoints endpoints;
    for (const addrinfo* one = list; one != nullptr; one = one->ai_next) {
      std::memcpy(endpoints.emplace_back().data(), one->ai_addr, one->ai_addrlen);
    }
    if (list != nullptr) ::freeaddrinfo(list);
    const std::lock_guard lock(lookup->mutex);
    if (lookup->port == nullptr) return;
    asio::post(executor, [lookup, endpoints, why = code == 0 ? "" : ::gai_strerror(code)] {
      if (lookup->port != nullptr) lookup->port->found(why, endpoints);
    });
  }).detach();
}

void TcpPort::found(const std::string& why, const Endpoints& endpoints) {
  lookup_.reset();
  if (!opening_) return;
  if (!why.empty()) return fail(why);
  asio::async_connect(stream_, endpoints,
                      [this, session = session_](const asio::error_code& error, const auto&) {
                        if (session != session_) return;
                        if (error) return fail(error.message());
                        timer_.cancel();
                        asio::error_code ignored;
                        stream_.set_option(asio::ip::tcp::no_delay(true), ignored);
                        keep_alive(stream_.native_handle());
                        begin();
                      });
}

void TcpPort::close() {
  opening_ = false;
  timer_.cancel();
  StreamPort::close();
}

}  // namespace qalt::server
