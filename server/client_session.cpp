#include "server/client_session.h"

#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "server/frame.h"

namespace qalt::server {

ClientSession::ClientSession(Socket socket, uint64_t id, const Handlers& handlers)
    : socket_(std::move(socket)), timer_(socket_.get_executor()), id_(id), handlers_(handlers) {
  socklen_t size = sizeof credentials_;
  const int descriptor = socket_.native_handle();
  if (::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials_, &size) != 0) {
    credentials_ = {0, uid_t(-1), gid_t(-1)};
  }
}

// Memory that runs out for one connection ends that one.
template <typename Step>
void ClientSession::carry_out(Step step) {
  if (ended_) return;
  const auto self = shared_from_this();
  try {
    step();
  } catch (const std::bad_alloc&) {
    handlers_.note("memory", LOG_ERR, "no memory for a client, connection closed");
    if (std::exchange(waiting_, false)) handlers_.cancel(id_);
    end();
  }
}

void ClientSession::start() {
  carry_out([this] {
    limit_time();
    read();
  });
}

void ClientSession::read() {
  AtMsg frame;
  const size_t missing = sizeof frame - bytes_.size();
  const ssize_t count = ::recv(socket_.native_handle(), &frame, missing, MSG_DONTWAIT);
  if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
    return await_request();
  }
  if (count <= 0) return end();
  if (size_t(count) == sizeof frame) return requested(frame);
  bytes_.append(reinterpret_cast<const char*>(&frame), size_t(count));
  if (bytes_.size() < sizeof frame) return await_request();
  std::memcpy(&frame, bytes_.data(), sizeof frame);
  bytes_ = {};
  requested(frame);
}

void ClientSession::await_request() {
  socket_.async_wait(Socket::wait_read, [self = shared_from_this()](const asio::error_code& error) {
    if (error || !self->reading_) return;
    self->carry_out([&] { self->read(); });
  });
}

void ClientSession::requested(const AtMsg& frame) {
  timer_.cancel();
  reading_ = false;
  FrameRequest request = read_request(frame);
  if (request.command.empty()) {
    handlers_.note("refused", LOG_WARNING, "request refused: " + request.refusal);
    return answer("\r\nERROR\r\n");
  }
  waiting_ = true;
  watch();
  handlers_.submit({id_, std::move(request.command), request.timeout,
                    peer_of(socket_.native_handle(), credentials_)});
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
  waiting_ = false;
  carry_out([&] {
    AtMsg frame;
    fill_frame(frame, text);
    bytes_.assign(reinterpret_cast<const char*>(&frame), sizeof frame);
    limit_time();
    write();
  });
}

void ClientSession::write() {
  const ssize_t count =
      ::send(socket_.native_handle(), bytes_.data(), bytes_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  const bool later = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
  if (count < 0 && !later) return end();
  if (count > 0) bytes_.erase(0, size_t(count));
  if (bytes_.empty()) return end();
  await_answer();
}

void ClientSession::await_answer() {
  socket_.async_wait(Socket::wait_write,
                     [self = shared_from_this()](const asio::error_code& error) {
                       if (error) return;
                       self->carry_out([&] { self->write(); });
                     });
}

void ClientSession::limit_time() {
  timer_.expires_after(kFrameTime);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (error) return;
    self->carry_out([&] {
      if (self->waiting_) return;
      self->reading_ ? self->read() : self->write();
      if (self->waiting_ || self->ended_) return;
      self->handlers_.note("slow", LOG_INFO, "client too slow, connection closed");
      self->end();
    });
  });
}

void ClientSession::end() {
  if (std::exchange(ended_, true)) return;
  const auto self = shared_from_this();
  asio::error_code ignored;
  timer_.cancel();
  socket_.close(ignored);
  handlers_.ended(id_);
}

}  // namespace qalt::server
