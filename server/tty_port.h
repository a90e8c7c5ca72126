// tty_port.h - a modem on a terminal device.
#ifndef QALT_SERVER_TTY_PORT_H_
#define QALT_SERVER_TTY_PORT_H_

#include "server/node_watch.h"
#include "server/stream_port.h"

namespace qalt::server {

struct TtyAddress {
  std::string device;
  unsigned baud = 115200;
  bool rtscts = false;
};

// Whether a terminal can be set to this speed.
bool is_baud_rate(unsigned baud);

class TtyPort : public StreamPort<asio::posix::stream_descriptor> {
 public:
  TtyPort(asio::io_context& context, TtyAddress address)
      : StreamPort(context), address_(std::move(address)), watch_(context, address_.device) {}

  // Locks the device against other programs, makes it raw and drops what waits in it.
  void open() override;
  void close() override;
  void await_device() override;
  std::string name() const override { return address_.device; }

 private:
  TtyAddress address_;
  NodeWatch watch_;
  bool missing_ = false;  // at the last opening
};

}  // namespace qalt::server

#endif  // QALT_SERVER_TTY_PORT_H_
