// tcp_port.h - a modem behind a TCP address, such as a serial device server.
#ifndef QALT_SERVER_TCP_PORT_H_
#define QALT_SERVER_TCP_PORT_H_

#include <memory>
#include <string>
#include <vector>

#include "server/stream_port.h"

namespace qalt::server {

struct TcpAddress {
  std::string host;
  std::string port;
};

class TcpPort : public StreamPort<asio::ip::tcp::socket> {
 public:
  TcpPort(asio::io_context& context, TcpAddress address)
      : StreamPort(context), address_(std::move(address)), timer_(context) {}
  ~TcpPort() override;

  void open() override;
  void close() override;
  std::string name() const override { return address_.host + ":" + address_.port; }

 private:
  using Endpoints = std::vector<asio::ip::tcp::endpoint>;
  struct Lookup;

  void look_up();
  void found(const std::string& why, const Endpoints& endpoints);

  TcpAddress address_;
  asio::steady_timer timer_;
  std::shared_ptr<Lookup> lookup_;  // while a name is looked up, for this opening or one before it
  bool opening_ = false;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_TCP_PORT_H_
