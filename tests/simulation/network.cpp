#include "tests/simulation/network.h"

#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "server/frame.h"

namespace qalt::simulation {
namespace {

thread_local int t_client = -1;

int failed(int error) {
  errno = error;
  return -1;
}

std::string name_of(const sockaddr* address, socklen_t size) {
  const auto* const name = reinterpret_cast<const sockaddr_un*>(address);
  if (name->sun_path[0] != '\0') return name->sun_path;
  return {name->sun_path, size_t(size) - offsetof(sockaddr_un, sun_path)};
}

}  // namespace

Network* Network::g_network = nullptr;

void Network::set_client(int client) {
  t_client = client;
}

void Network::serve(Service* service) {
  service_ = service;
  if (service != nullptr) return;
  for (auto& [descriptor, socket] : sockets_) {
    socket.ended |= std::exchange(socket.connection, 0) != 0;
  }
  changed();
}

void Network::answer(uint64_t connection, std::string_view text) {
  for (auto& [descriptor, socket] : sockets_) {
    if (socket.connection != connection) continue;
    AtMsg frame;
    server::fill_frame(frame, text);
    socket.inbox.assign(reinterpret_cast<const char*>(&frame), sizeof frame);
    socket.connection = 0;
    socket.ended = true;
    return changed();
  }
}

void Network::changed() {
  for (World::Task* task : std::exchange(waiting_, {})) world_.wake(task);
}

int Network::open() {
  sockets_[++last_].client = t_client;
  return last_;
}

int Network::connect(int descriptor, const sockaddr* address, socklen_t size) {
  Socket& socket = sockets_.at(descriptor);
  const std::string name = name_of(address, size);
  if (name == QALT_AT_SERVER_PATH) {
    if (service_ == nullptr) return failed(ECONNREFUSED);
    socket.connection = ++last_connection_;
  } else {
    const auto found = names_.find(name);
    if (found == names_.end() || !sockets_.at(found->second).listening) return failed(ECONNREFUSED);
    socket.turn = found->second;
  }
  return 0;
}

int Network::bind(int descriptor, const sockaddr* address, socklen_t size) {
  const std::string name = name_of(address, size);
  if (!names_.emplace(name, descriptor).second) return failed(EADDRINUSE);
  sockets_.at(descriptor).name = name;
  return 0;
}

int Network::listen(int descriptor) {
  sockets_.at(descriptor).listening = true;
  return 0;
}

ssize_t Network::send(int descriptor, const void* bytes, size_t size) {
  Socket& socket = sockets_.at(descriptor);
  if (socket.connection == 0) return failed(EPIPE);
  socket.sent.append(static_cast<const char*>(bytes), size);
  if (socket.sent.size() >= sizeof(AtMsg)) {
    AtMsg frame;
    std::memcpy(static_cast<void*>(&frame), socket.sent.data(), sizeof frame);
    service_->requested(socket.connection, socket.client, frame);
  }
  return ssize_t(size);
}

// An answer comes whole, with the end of the connection.
ssize_t Network::receive(int descriptor, void* bytes, size_t size) {
  Socket& socket = sockets_.at(descriptor);
  while (!socket.ended) {
    waiting_.push_back(World::current());
    world_.wait();
  }
  const size_t taken = socket.inbox.copy(static_cast<char*>(bytes), size);
  socket.inbox.erase(0, taken);
  return ssize_t(taken);
}

bool Network::readable(int descriptor) const {
  const auto found = sockets_.find(descriptor);
  if (found == sockets_.end()) return false;
  return found->second.ended ||
         std::any_of(sockets_.begin(), sockets_.end(),
                     [&](const auto& other) { return other.second.turn == descriptor; });
}

// Descriptors of the real machine are passed over: no user interrupts here.
int Network::poll(pollfd* events, nfds_t count, int timeout) {
  const Time end = timeout < 0 ? Time::max() : world_.now() + Time(timeout);
  for (;;) {
    int ready = 0;
    for (nfds_t k = 0; k < count; ++k) {
      events[k].revents = readable(events[k].fd) ? POLLIN : short(0);
      ready += events[k].revents != 0;
    }
    if (ready != 0 || world_.now() >= end) return ready;
    waiting_.push_back(World::current());
    world_.wait(timeout < 0 ? Time::max() : end - world_.now());
    std::erase(waiting_, World::current());
  }
}

int Network::close(int descriptor) {
  const Socket socket = std::move(sockets_.extract(descriptor).mapped());
  names_.erase(socket.name);
  for (auto& [other, waiter] : sockets_) waiter.ended |= waiter.turn == descriptor;
  if (socket.connection != 0) service_->left(socket.connection);
  changed();
  return 0;
}

}  // namespace qalt::simulation
