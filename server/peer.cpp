#include "server/peer.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qalt::server {

uint64_t start_time(pid_t process) {
  char path[40];
  char text[1024];
  std::snprintf(path, sizeof path, "/proc/%d/stat", int(process));
  FILE* file = std::fopen(path, "re");
  if (file == nullptr) return 0;
  const size_t length = std::fread(text, 1, sizeof text - 1, file);
  std::fclose(file);
  text[length] = '\0';
  // The second field, the name in parentheses, may hold blanks itself.
  const char* field = std::strrchr(text, ')');
  for (int number = 2; field != nullptr && number < 22; ++number) {
    field = std::strchr(field + 1, ' ');
  }
  return field == nullptr ? 0 : std::strtoull(field, nullptr, 10);
}

namespace {

// A process of another namespace has no number here. The kernel's handle of it is a file of its own
// (pidfs, Linux 6.9), whose number no other process ever has. Closes the handle.
uint64_t identity_of(int handle) {
  constexpr long kProcessFiles = 0x50494446;
  if (handle < 0) return 0;
  struct stat file {};
  struct statfs system {};
  const bool known = ::fstatfs(handle, &system) == 0 && long(system.f_type) == kProcessFiles &&
                     ::fstat(handle, &file) == 0;
  ::close(handle);
  return known ? file.st_ino : 0;
}

int handle_of_peer(int descriptor) {
#ifndef SO_PEERPIDFD
  constexpr int SO_PEERPIDFD = 77;
#endif
  int process = -1;
  socklen_t size = sizeof process;
  return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERPIDFD, &process, &size) == 0 ? process : -1;
}

}  // namespace

Peer peer_of(int descriptor, const ucred& credentials) {
  if (credentials.pid <= 0) return {0, 0, identity_of(handle_of_peer(descriptor))};
  return {credentials.pid, start_time(credentials.pid)};
}

Peer this_process() {
  int handle = -1;
#ifdef SYS_pidfd_open
  handle = int(::syscall(SYS_pidfd_open, ::getpid(), 0));
#endif
  return {::getpid(), start_time(::getpid()), identity_of(handle)};
}

// Identities are given out in the order of the beginnings, and 0 stands for one that is not known.
bool began_before(const Peer& peer, const Peer& self) {
  return peer.process == 0 ? peer.identity <= self.identity : peer.started <= self.started;
}

bool still_runs(const Peer& peer) {
  if (peer.process == 0) return true;
  if (::kill(pid_t(peer.process), 0) != 0 && errno == ESRCH) return false;
  return start_time(pid_t(peer.process)) == peer.started;
}

}  // namespace qalt::server
