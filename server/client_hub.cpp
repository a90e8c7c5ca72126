#include "server/client_hub.h"

#include <syslog.h>

#include <utility>

namespace qalt::server {
namespace {

// Accepting fails when descriptors run out; some come back when other connections end.
constexpr std::chrono::milliseconds kAcceptPause{200};

}  // namespace

ClientHub::ClientHub(asio::io_context& context, int descriptor, ClientSession::Handlers handlers)
    : acceptor_(context, asio::local::stream_protocol(), descriptor),
      pause_(context),
      handlers_(std::move(handlers)) {
  handlers_.ended = [this](uint64_t id) { ended(id); };
}

void ClientHub::accept() {
  if (accepting_ || !acceptor_.is_open() || sessions_.size() == kMostClients) return;
  accepting_ = true;
  acceptor_.async_accept([this](const asio::error_code& error, ClientSession::Socket socket) {
    accepting_ = false;
    if (!acceptor_.is_open()) return;
    if (error) {
      handlers_.note(LOG_ERR, "no connection accepted: " + error.message());
      accepting_ = true;
      pause_.expires_after(kAcceptPause);
      pause_.async_wait([this](const asio::error_code&) {
        accepting_ = false;
        accept();
      });
      return;
    }
    const auto session = std::make_shared<ClientSession>(std::move(socket), ++last_id_, handlers_);
    sessions_.emplace(last_id_, session);
    session->start();
    accept();
  });
}

void ClientHub::answer(uint64_t id, std::string_view text) {
  const auto found = sessions_.find(id);
  if (found != sessions_.end()) found->second->answer(text);
}

void ClientHub::stop() {
  asio::error_code ignored;
  acceptor_.close(ignored);
  pause_.cancel();
  const auto sessions = sessions_;
  for (const auto& [id, session] : sessions) {
    if (session->reading()) session->end();
  }
}

void ClientHub::ended(uint64_t id) {
  sessions_.erase(id);
  accept();
  if (sessions_.empty() && when_empty_) when_empty_();
}

}  // namespace qalt::server
