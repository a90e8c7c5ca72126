#include "sim/pty_line.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qalt::sim {
namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

bool is_link_to(const std::string& link, const std::string& target) {
  char text[256];
  const ssize_t length = ::readlink(link.c_str(), text, sizeof text);
  return length > 0 && target == std::string_view(text, size_t(length));
}

}  // namespace

PtyLine::PtyLine(asio::io_context& context, std::string link)
    : modem_end_(context), link_(std::move(link)) {
  open();
}

PtyLine::~PtyLine() {
  close();
}

void PtyLine::open() {
  const int modem = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (modem < 0) fail("no pseudo-terminal");
  modem_end_.assign(modem);
  char name[128];
  if (::grantpt(modem) != 0 || ::unlockpt(modem) != 0 ||
      ::ptsname_r(modem, name, sizeof name) != 0) {
    fail("no pseudo-terminal");
  }
  terminal_ = name;
  terminal_end_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal_end_ < 0) fail(name);
  // Raw from the start: a terminal that echoes would send the modem its own words.
  termios settings{};
  ::tcgetattr(terminal_end_, &settings);
  ::cfmakeraw(&settings);
  ::tcsetattr(terminal_end_, TCSANOW, &settings);

  struct stat file {};
  if (::lstat(link_.c_str(), &file) == 0 && !S_ISLNK(file.st_mode)) {
    throw std::runtime_error(link_ + " is there and is no link; choose another --pty");
  }
  ::unlink(link_.c_str());
  if (::symlink(name, link_.c_str()) != 0) fail(link_);
}

void PtyLine::close() {
  ++session_;
  asio::error_code ignored;
  modem_end_.close(ignored);
  if (terminal_end_ >= 0) ::close(std::exchange(terminal_end_, -1));
  if (is_link_to(link_, terminal_)) ::unlink(link_.c_str());
  unsent_.clear();
  sending_.clear();
}

void PtyLine::start(std::function<void(std::string_view)> received) {
  received_ = std::move(received);
  receive();
}

void PtyLine::hang_up() {
  close();
  open();
  receive();
}

void PtyLine::receive() {
  modem_end_.async_read_some(asio::buffer(buffer_),
                             [this, session = session_](const asio::error_code& error, size_t n) {
                               if (error || session != session_) return;
                               // A program that took the line for itself alone would keep it
                               // from the next one too: this end never closes. Whoever is not
                               // root could not open it again.
                               ::ioctl(terminal_end_, TIOCNXCL);
                               received_(std::string_view(buffer_.data(), n));
                               if (session == session_) receive();
                             });
}

void PtyLine::write(std::string_view bytes) {
  unsent_.append(bytes);
  if (sending_.empty()) send();
}

void PtyLine::send() {
  sending_ = std::exchange(unsent_, {});
  asio::async_write(modem_end_, asio::buffer(sending_),
                    [this, session = session_](const asio::error_code& error, size_t) {
                      if (error || session != session_) return;
                      sending_.clear();
                      if (!unsent_.empty()) send();
                    });
}

}  // namespace qalt::sim
