// descriptors.h - descriptors that a program of ours was started with.
#ifndef QALT_COMMON_DESCRIPTORS_H_
#define QALT_COMMON_DESCRIPTORS_H_

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace qalt {

// The first thing in main(): a file or a connection that is opened later must not come to stand at
// a standard number, where messages and output go.
inline void open_standard_descriptors() {
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(number, F_GETFD) != -1) continue;
    // The wrong direction: reading the input or writing the output is an error then. The lowest
    // free number is this one.
    if (::open("/dev/null", number == STDOUT_FILENO ? O_RDONLY : O_WRONLY) == -1) {
      static_cast<void>(::open("/", O_RDONLY));
    }
  }
}

// Whoever started the program waits at this descriptor until it can be used. One that would have
// to be waited for itself, a full pipe, is only closed. Throws std::system_error.
inline void tell_ready(int descriptor) {
  constexpr std::string_view kReady = "ready\n";
  pollfd writable = {descriptor, POLLOUT, 0};
  if (::poll(&writable, 1, 0) != 0 &&
      ::write(descriptor, kReady.data(), kReady.size()) != ssize_t(kReady.size())) {
    throw std::system_error(errno, std::generic_category(), "--ready-fd");
  }
  ::close(descriptor);
}

}  // namespace qalt

#endif  // QALT_COMMON_DESCRIPTORS_H_
