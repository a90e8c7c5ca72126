// client_hub.h - the client connections, found by their number. There is a bound, and beyond it
// whoever has the most of them loses one, so that nobody waits to be accepted.
#ifndef QALT_SERVER_CLIENT_HUB_H_
#define QALT_SERVER_CLIENT_HUB_H_

#include <asio.hpp>
#include <map>
#include <memory>

#include "server/client_session.h"

namespace qalt::server {

class ClientHub {
 public:
  static constexpr size_t kMostClients = 256;

  // Takes the listening descriptor over. `handlers.ended` is the hub's own and is replaced.
  ClientHub(asio::io_context& context, int descriptor, ClientSession::Handlers handlers);

  void start() { accept(); }
  void answer(uint64_t id, std::string_view text);
  // No further clients; those whose request has not come in are sent away.
  void stop();
  bool empty() const { return sessions_.empty(); }
  void when_empty(std::function<void()> handler) { when_empty_ = std::move(handler); }

 private:
  void accept();
  void accepted(ClientSession::Socket socket);
  void refused(const asio::error_code& error);
  // Whether a connection other than the newcomer's, or its command, gave way.
  bool make_room(uint64_t newcomer);
  void ended(uint64_t id);

  asio::local::stream_protocol::acceptor acceptor_;
  asio::steady_timer pause_;
  ClientSession::Handlers handlers_;
  std::map<uint64_t, std::shared_ptr<ClientSession>> sessions_;
  std::function<void()> when_empty_;
  uint64_t last_id_ = 0;
  bool accepting_ = false;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_CLIENT_HUB_H_
