#include "server/client_session.h"

#include <sys/socket.h>
#include <syslog.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "server/frame.h"

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

Peer peer_of(int descriptor) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return {};
  return {credentials.pid, start_time(credentials.pid)};
}

void ClientSession::start() {
  limit_time();
  asio::async_read(socket_, asio::buffer(&frame_, sizeof frame_),
                   [self = shared_from_this()](const asio::error_code& error, size_t) {
                     if (self->ended_) return;
                     if (error) return self->end();
                     self->requested();
                   });
}

void ClientSession::requested() {
  timer_.cancel();
  reading_ = false;
  FrameRequest request = read_request(frame_);
  if (request.command.empty()) {
    handlers_.note(LOG_WARNING, "request refused: " + request.refusal);
    return answer("\r\nERROR\r\n");
  }
  waiting_ = true;
  watch();
  handlers_.submit(
      {id_, std::move(request.command), request.timeout, peer_of(socket_.native_handle())});
}

// Ends when the client closes. One that only shuts its sending side down still gets its answer.
void ClientSession::watch() {
  socket_.async_wait(Socket::wait_error, [self = shared_from_this()](const asio::error_code&) {
    if (!self->waiting_ || self->ended_) return;
    self->handlers_.cancel(self->id_);
    self->end();
  });
}

void ClientSession::answer(std::string_view text) {
  if (ended_) return;
  waiting_ = false;
  fill_frame(frame_, text);
  limit_time();
  asio::async_write(socket_, asio::buffer(&frame_, sizeof frame_),
                    [self = shared_from_this()](const asio::error_code&, size_t) { self->end(); });
}

void ClientSession::limit_time() {
  timer_.expires_after(kFrameTime);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (error || self->ended_) return;
    self->handlers_.note(LOG_INFO, "client too slow, connection closed");
    self->end();
  });
}

void ClientSession::end() {
  if (std::exchange(ended_, true)) return;
  asio::error_code ignored;
  timer_.cancel();
  socket_.close(ignored);
  handlers_.ended(id_);
}

}  // namespace qalt::server
