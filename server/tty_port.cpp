#include "server/tty_port.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>

namespace qalt::server {
namespace {

struct Speed {
  unsigned baud;
  speed_t code;
};

constexpr std::array<Speed, 10> kSpeeds = {{{1200, B1200},
                                            {2400, B2400},
                                            {4800, B4800},
                                            {9600, B9600},
                                            {19200, B19200},
                                            {38400, B38400},
                                            {57600, B57600},
                                            {115200, B115200},
                                            {460800, B460800},
                                            {921600, B921600}}};

const Speed* find_speed(unsigned baud) {
  for (const Speed& speed : kSpeeds) {
    if (speed.baud == baud) return &speed;
  }
  return nullptr;
}

// Raw, without modem control lines: a modem without carrier is read and written all the same.
bool make_raw(int descriptor, const TtyAddress& address) {
  termios settings{};
  if (::tcgetattr(descriptor, &settings) != 0) return false;
  ::cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  if (address.rtscts) {
    settings.c_cflag |= CRTSCTS;
  } else {
    settings.c_cflag &= ~tcflag_t(CRTSCTS);
  }
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  ::cfsetspeed(&settings, find_speed(address.baud)->code);
  return ::tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

// Closing a device whose modem is gone must not wait for bytes that nobody takes.
void close_at_once(int descriptor) {
  serial_struct serial{};
  if (::ioctl(descriptor, TIOCGSERIAL, &serial) != 0) return;
  serial.closing_wait = ASYNC_CLOSING_WAIT_NONE;
  ::ioctl(descriptor, TIOCSSERIAL, &serial);
}

}  // namespace

bool is_baud_rate(unsigned baud) {
  return find_speed(baud) != nullptr;
}

void TtyPort::open() {
  watch_.stop();
  const int descriptor =
      ::open(address_.device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  missing_ = descriptor < 0 && errno == ENOENT;
  if (descriptor < 0) return fail(std::generic_category().message(errno));
  asio::error_code error;
  stream_.assign(descriptor, error);
  // Programs that know flock are told so; TIOCEXCL keeps out the others.
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) return fail("another program has it open");
  ::ioctl(descriptor, TIOCEXCL);
  if (!make_raw(descriptor, address_)) return fail("it is no terminal device");
  close_at_once(descriptor);
  ::tcflush(descriptor, TCIOFLUSH);
  asio::post(stream_.get_executor(), [this, session = session_] {
    if (session == session_) begin();
  });
}

void TtyPort::close() {
  watch_.stop();
  StreamPort::close();
}

void TtyPort::await_device() {
  watch_.start(missing_, [this] { handlers_.returned(); });
}

}  // namespace qalt::server
