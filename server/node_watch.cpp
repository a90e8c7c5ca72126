#include "server/node_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace qalt::server {
namespace {

// A device file is made first and given to its group afterwards.
constexpr uint32_t kEvents = IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR;

bool exists(const std::string& path) {
  return ::access(path.c_str(), F_OK) == 0;
}

}  // namespace

void NodeWatch::start(bool missing, std::function<void()> seen) {
  stop();
  const int descriptor = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (descriptor < 0) return;
  stream_.assign(descriptor);
  seen_ = std::move(seen);
  for (std::string path = path_;;) {
    const size_t slash = path.rfind('/');
    name_ = path.substr(slash + 1);
    const std::string folder =
        slash == path.npos ? "." : path.substr(0, std::max<size_t>(slash, 1));
    if (::inotify_add_watch(descriptor, folder.c_str(), kEvents) >= 0) break;
    if (slash == path.npos || slash == 0) return stop();
    path = folder;
  }
  // Between the failure and the watch it may have come.
  if (missing && exists(path_)) return tell();
  read();
}

void NodeWatch::stop() {
  ++session_;
  asio::error_code ignored;
  stream_.close(ignored);
}

void NodeWatch::read() {
  stream_.async_read_some(asio::buffer(events_),
                          [this, session = session_](const asio::error_code& error, size_t size) {
                            if (error || session != session_) return;
                            for (size_t at = 0; at + sizeof(inotify_event) <= size;) {
                              inotify_event event;
                              std::memcpy(&event, &events_[at], sizeof event);
                              at += sizeof event;
                              if (event.len > 0 && name_ == &events_[at]) return tell();
                              at += event.len;
                            }
                            read();
                          });
}

void NodeWatch::tell() {
  stop();
  asio::post(stream_.get_executor(), [this, session = session_] {
    if (session == session_) seen_();
  });
}

}  // namespace qalt::server
