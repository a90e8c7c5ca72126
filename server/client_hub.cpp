#include "server/client_hub.h"

#include <syslog.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>
#include <vector>

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
  if (accepting_ || !acceptor_.is_open()) return;
  accepting_ = true;
  acceptor_.async_accept([this](const asio::error_code& error, ClientSession::Socket socket) {
    accepting_ = false;
    if (!acceptor_.is_open()) return;
    if (error) return refused(error);
    try {
      accepted(std::move(socket));
    } catch (const std::bad_alloc&) {
      handlers_.note("memory", LOG_ERR, "no memory for a client, connection closed");
    }
    accept();
  });
}

void ClientHub::accepted(ClientSession::Socket socket) {
  const auto session = std::make_shared<ClientSession>(std::move(socket), ++last_id_, handlers_);
  sessions_.emplace(last_id_, session);
  if (sessions_.size() > kMostClients && !make_room(last_id_)) return session->end();
  session->start();
}

// Where descriptors run out, one connection less is one descriptor more.
void ClientHub::refused(const asio::error_code& error) {
  handlers_.note("accept", LOG_ERR, "no connection accepted: " + error.message());
  if (make_room(0)) return accept();
  accepting_ = true;
  pause_.expires_after(kAcceptPause);
  pause_.async_wait([this](const asio::error_code&) {
    accepting_ = false;
    accept();
  });
}

// The user with the most connections loses one: a connection that has sent no whole request, or
// else the command that would be the last. Of the user's processes, the one with the most is first.
bool ClientHub::make_room(uint64_t newcomer) {
  std::map<unsigned, size_t> users;
  std::map<int, size_t> processes;
  for (const auto& [id, session] : sessions_) ++users[session->user()];
  const auto most = std::max_element(
      users.begin(), users.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
  if (most == users.end()) return false;
  std::vector<std::shared_ptr<ClientSession>> theirs;
  for (const auto& [id, session] : sessions_) {
    if (session->user() != most->first) continue;
    ++processes[session->process()];
    if (id != newcomer) theirs.push_back(session);
  }
  handlers_.note("crowd", LOG_WARNING,
                 "too many connections: user " + std::to_string(most->first) + " loses one of " +
                     std::to_string(most->second));
  // Among those of processes with as many, the oldest is first.
  std::stable_sort(theirs.begin(), theirs.end(), [&](const auto& a, const auto& b) {
    return processes[a->process()] > processes[b->process()];
  });
  for (const auto& session : theirs) {
    if (!session->reading()) continue;
    session->end();
    return true;
  }
  std::stable_sort(theirs.begin(), theirs.end(), [&](const auto& a, const auto& b) {
    return std::pair(processes[a->process()], a->id()) >
           std::pair(processes[b->process()], b->id());
  });
  return std::any_of(theirs.begin(), theirs.end(),
                     [this](const auto& session) { return handlers_.refuse(session->id()); });
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
