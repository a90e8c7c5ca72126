// client_session.h - one client connection: a request frame in, an answer frame out, the end.
//
// It holds no more of a frame than has come, and its limits count from what the client did: before
// one of them ends the connection, what has come or can go is taken, since this process may have
// been the one that stood still.
#ifndef QALT_SERVER_CLIENT_SESSION_H_
#define QALT_SERVER_CLIENT_SESSION_H_

#include <sys/socket.h>

#include <asio.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "qalt_at/link.h"
#include "server/dispatcher.h"

namespace qalt::server {

class ClientSession : public std::enable_shared_from_this<ClientSession> {
 public:
  using Socket = asio::local::stream_protocol::socket;

  struct Handlers {
    std::function<void(Command command)> submit;
    std::function<bool(uint64_t id)> refuse;  // a command that was not sent: it gets an answer
    std::function<void(uint64_t id)> cancel;  // the client is gone before its answer
    std::function<void(uint64_t id)> ended;   // the connection is closed; the last call
    // Lines of one class may be left out.
    std::function<void(std::string_view of, int priority, const std::string& text)> note;
  };

  // How long a client may take to send its request, and to take its answer.
  static constexpr std::chrono::milliseconds kFrameTime{5000};

  ClientSession(Socket socket, uint64_t id, const Handlers& handlers);

  void start();
  void answer(std::string_view text);
  void end();
  // The request has not come in whole yet.
  bool reading() const { return reading_; }
  uint64_t id() const { return id_; }
  // The client's, as the kernel gives them at first; 0 for a process of another namespace.
  unsigned user() const { return credentials_.uid; }
  int process() const { return credentials_.pid; }

 private:
  void read();
  void await_request();
  void requested(const AtMsg& frame);
  void watch();
  void write();
  void await_answer();
  void limit_time();
  template <typename Step>
  void carry_out(Step step);

  Socket socket_;
  asio::steady_timer timer_;
  uint64_t id_;
  const Handlers& handlers_;
  ucred credentials_{};
  std::string bytes_;  // of the request so far, then of the answer that are to be sent
  bool reading_ = true;
  bool waiting_ = false;  // for the modem
  bool ended_ = false;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_CLIENT_SESSION_H_
