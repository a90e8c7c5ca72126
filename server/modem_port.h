// modem_port.h - where the modem is: a simulated one, a terminal device, a TCP address or a replay.
#ifndef QALT_SERVER_MODEM_PORT_H_
#define QALT_SERVER_MODEM_PORT_H_

#include <functional>
#include <string>
#include <string_view>

namespace qalt::server {

class ModemPort {
 public:
  struct Handlers {
    std::function<void()> opened;
    std::function<void(std::string_view bytes)> received;
    // The port could not be opened, or is gone; said once per open().
    std::function<void(const std::string& why)> closed;
    // What await_device() waits for has happened.
    std::function<void()> returned;
  };

  virtual ~ModemPort() = default;
  void set_handlers(Handlers handlers) { handlers_ = std::move(handlers); }

  // Begins to open; ends in `opened` or `closed`, neither of them from inside this call.
  virtual void open() = 0;
  // Bytes are sent in order and as a whole, or the port ends in `closed`.
  virtual void write(std::string_view bytes) = 0;
  // Ends at once, without a call of `closed`; the port may be opened again.
  virtual void close() = 0;
  // The port is closed and to be opened again some time: `returned` is said once if its device
  // comes back before. open() and close() end this.
  virtual void await_device() {}
  // Nothing of an earlier time can be on the line when it opens.
  virtual bool clean_at_open() const = 0;
  virtual std::string name() const = 0;

 protected:
  Handlers handlers_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_MODEM_PORT_H_
