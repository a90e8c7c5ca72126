// network.h - the Unix sockets of the simulated machine: the AT server's, and the names by which
// the phonebook tool takes its turns. calls.cpp leads the clients' system calls here.
#ifndef QALT_TESTS_SIMULATION_NETWORK_H_
#define QALT_TESTS_SIMULATION_NETWORK_H_

#include <poll.h>
#include <sys/socket.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qalt_at/link.h"
#include "tests/simulation/world.h"

namespace qalt::simulation {

// The process behind the AT server's socket.
class Service {
 public:
  virtual ~Service() = default;
  // Answers by Network::answer, with this number.
  virtual void requested(uint64_t connection, int client, const AtMsg& frame) = 0;
  virtual void left(uint64_t connection) = 0;
};

class Network {
 public:
  explicit Network(World& world) : world_(world) {}

  // None: the server does not run, and connecting to it is refused. Connections that it had end.
  void serve(Service* service);
  void answer(uint64_t connection, std::string_view text);

  // The program that runs on the calling task.
  static void set_client(int client);
  World& world() { return world_; }

  // The system calls: a result, or -1 and errno.
  static bool owns(int descriptor) { return descriptor >= kFirst; }
  int open();
  int connect(int descriptor, const sockaddr* address, socklen_t size);
  int bind(int descriptor, const sockaddr* address, socklen_t size);
  int listen(int descriptor);
  ssize_t send(int descriptor, const void* bytes, size_t size);
  ssize_t receive(int descriptor, void* bytes, size_t size);
  int poll(pollfd* events, nfds_t count, int timeout);
  int close(int descriptor);

  static Network* g_network;  // the one that the system calls mean

 private:
  static constexpr int kFirst = 1 << 20;

  struct Socket {
    int client = -1;
    uint64_t connection = 0;  // to the AT server; 0 after its end
    std::string sent;         // of a request frame
    std::string inbox;
    bool ended = false;  // the other side has closed
    std::string name;    // bound to
    bool listening = false;
    int turn = -1;  // the listening socket in whose queue this one stands
  };

  bool readable(int descriptor) const;
  void changed();

  World& world_;
  Service* service_ = nullptr;
  std::map<int, Socket> sockets_;
  std::map<std::string, int> names_;
  std::vector<World::Task*> waiting_;  // in receive and poll
  int last_ = kFirst - 1;
  uint64_t last_connection_ = 0;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_NETWORK_H_
