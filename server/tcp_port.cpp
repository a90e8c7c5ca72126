#include "server/tcp_port.h"

namespace qalt::server {
namespace {

constexpr std::chrono::seconds kConnectTime{10};

}  // namespace

void TcpPort::open() {
  timer_.expires_after(kConnectTime);
  timer_.async_wait([this, session = session_](const asio::error_code& error) {
    if (!error && session == session_) fail("no connection in time");
  });
  resolver_.async_resolve(
      address_.host, address_.port,
      [this, session = session_](const asio::error_code& error,
                                 const asio::ip::tcp::resolver::results_type& found) {
        if (session != session_) return;
        if (error) return fail(error.message());
        connect(found);
      });
}

void TcpPort::connect(const asio::ip::tcp::resolver::results_type& endpoints) {
  asio::async_connect(stream_, endpoints,
                      [this, session = session_](const asio::error_code& error, const auto&) {
                        if (session != session_) return;
                        if (error) return fail(error.message());
                        timer_.cancel();
                        asio::error_code ignored;
                        stream_.set_option(asio::ip::tcp::no_delay(true), ignored);
                        stream_.set_option(asio::socket_base::keep_alive(true), ignored);
                        begin();
                      });
}

void TcpPort::close() {
  resolver_.cancel();
  timer_.cancel();
  StreamPort::close();
}

}  // namespace qalt::server
