// tcp_port.h - a modem behind a TCP address, such as a serial device server.
#ifndef QALT_SERVER_TCP_PORT_H_
#define QALT_SERVER_TCP_PORT_H_

#include "server/stream_port.h"

namespace qalt::server {

struct TcpAddress {
  std::string host;
  std::string port;
};

class TcpPort : public StreamPort<asio::ip::tcp::socket> {
 public:
  TcpPort(asio::io_context& context, TcpAddress address)
      : StreamPort(context), address_(std::move(address)), resolver_(context), timer_(context) {}

  void open() override;
  void close() override;
  std::string name() const override { return address_.host + ":" + address_.port; }

 private:
  void connect(const asio::ip::tcp::resolver::results_type& endpoints);

  TcpAddress address_;
  asio::ip::tcp::resolver resolver_;
  asio::steady_timer timer_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_TCP_PORT_H_
