// client_session.h - one client connection: a request frame in, an answer frame out, the end.
#ifndef QALT_SERVER_CLIENT_SESSION_H_
#define QALT_SERVER_CLIENT_SESSION_H_

#include <asio.hpp>
#include <chrono>
#include <functional>
#include <memory>

#include "qalt_at/link.h"
#include "server/dispatcher.h"

namespace qalt::server {

class ClientSession : public std::enable_shared_from_this<ClientSession> {
 public:
  using Socket = asio::local::stream_protocol::socket;

  struct Handlers {
    std::function<void(Command command)> submit;
    std::function<void(uint64_t id)> cancel;  // the client is gone before its answer
    std::function<void(uint64_t id)> ended;   // the connection is closed; the last call
    std::function<void(int priority, const std::string& text)> note;
  };

  // How long a client may take to send its request, and to take its answer.
  static constexpr std::chrono::milliseconds kFrameTime{5000};

  ClientSession(Socket socket, uint64_t id, const Handlers& handlers)
      : socket_(std::move(socket)), timer_(socket_.get_executor()), id_(id), handlers_(handlers) {}

  void start();
  void answer(std::string_view text);
  void end();
  // The request has not come in whole yet.
  bool reading() const { return reading_; }

 private:
  void requested();
  void watch();
  void limit_time();

  Socket socket_;
  asio::steady_timer timer_;
  uint64_t id_;
  const Handlers& handlers_;
  AtMsg frame_{};
  bool reading_ = true;
  bool waiting_ = false;  // for the modem
  bool ended_ = false;
};

// When a process started, in clock ticks: field 22 of its stat file; 0 if that cannot be read.
uint64_t start_time(pid_t process);
// The process at the other end of a Unix-domain connection.
Peer peer_of(int descriptor);

}  // namespace qalt::server

#endif  // QALT_SERVER_CLIENT_SESSION_H_
