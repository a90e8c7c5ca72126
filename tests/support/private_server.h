// private_server.h - what the link tests share: a directory of their own for sockets, the count of
// open descriptors, what other threads tell, and frames as bytes.
#ifndef QALT_TESTS_SUPPORT_PRIVATE_SERVER_H_
#define QALT_TESTS_SUPPORT_PRIVATE_SERVER_H_

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "qalt_at/link.h"

namespace test {

class PrivateDirectory {
 public:
  PrivateDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qalt-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~PrivateDirectory() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

// The real calls, past the test program's own definitions.
inline int really_connect(int descriptor, const sockaddr_un& address) {
  return static_cast<int>(syscall(SYS_connect, descriptor, &address, sizeof address));
}

inline long open_descriptors() {
  const std::filesystem::directory_iterator entries("/proc/self/fd");
  return std::distance(begin(entries), end(entries));
}

// What happens on another thread, in order; taking one waits until it is there.
class Events {
 public:
  Events() {
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_) != 0) abort();
  }
  ~Events() { close(ends_[0]), close(ends_[1]); }
  void put(const std::string& event) const {
    if (write(ends_[0], event.data(), event.size()) != ssize_t(event.size())) abort();
  }
  std::string take() const {
    std::string event(2 * sizeof(AtMsg), '\0');
    event.resize(size_t(read(ends_[1], event.data(), event.size())));
    return event;
  }

 private:
  int ends_[2] = {-1, -1};
};

inline AtMsg frame_of(const std::string& text, uint32_t timeout = 0) {
  AtMsg frame{};
  frame.usParaLen = static_cast<uint16_t>(text.size());
  frame.ulTimeout = timeout;
  std::memcpy(frame.aucDataBuf, text.data(), text.size());
  return frame;
}

inline std::string bytes_of(const AtMsg& frame) {
  return {reinterpret_cast<const char*>(&frame), sizeof frame};
}

}  // namespace test

#endif  // QALT_TESTS_SUPPORT_PRIVATE_SERVER_H_
