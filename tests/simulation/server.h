// server.h - the AT server's process: the real dispatcher between the simulated network and the
// line, started, stopped and killed as the world goes; and a judge of each answer that it gives.
#ifndef QALT_TESTS_SIMULATION_SERVER_H_
#define QALT_TESTS_SIMULATION_SERVER_H_

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "server/dispatcher.h"
#include "tests/simulation/line.h"
#include "tests/simulation/network.h"
#include "tests/simulation/oracle.h"

namespace qalt::simulation {

class Server : public server::Dispatcher::Host, private Service {
 public:
  Server(World& world, Network& network, Line& line, Machine& machine, Oracle& oracle);

  void start();
  void kill();
  // The command under way is finished first.
  void stop();

  // What the commands of a client belong to.
  void set_call(int client, std::shared_ptr<Call> call) { calls_[client] = std::move(call); }
  // A client's program begins again, as a process of its own.
  void new_process(int client);
  uint64_t commands() const { return commands_; }

 private:
  struct Asked {
    std::shared_ptr<Call> call;
    std::string line;
    Time timeout{0};
    std::shared_ptr<Exchange> exchange;  // none: not sent yet
  };
  struct Report {
    std::string text;
    bool doubtful;  // it may be a line of a text
  };

  void requested(uint64_t connection, int client, const AtMsg& frame) override;
  void left(uint64_t connection) override;
  void write_modem(std::string_view bytes) override;
  void answer(uint64_t id, std::string_view text) override;
  void report(std::string_view text) override;
  void give_up_port() override;
  void note(int priority, const std::string& text) override;

  void received(std::string_view bytes, const std::vector<std::string>& reports);
  void open_port(Time delay);
  void settle();
  void end();
  void judge(const Asked& asked, std::string_view text);
  // Of this life of the server's.
  void at(Time when, std::function<void()> what);
  server::TimePoint now() const { return server::TimePoint(world_.now()); }

  World& world_;
  Network& network_;
  Line& line_;
  Oracle& oracle_;
  std::unique_ptr<server::Dispatcher> dispatcher_;  // none: the server does not run
  std::map<int, std::shared_ptr<Call>> calls_;
  std::map<int, server::Peer> processes_;
  std::map<uint64_t, Asked> asked_;  // by connection, in order of arrival
  std::shared_ptr<Call> writing_;
  std::deque<Report> reports_;  // that have come and are to be pushed
  bool free_text_ = false;      // the answers that may still come have texts in them
  std::optional<server::TimePoint> armed_;
  uint64_t life_ = 0;
  bool killed_ = false;
  bool stopping_ = false;
  uint64_t started_ = 0;
  int64_t last_process_ = 100;
  uint64_t commands_ = 0;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_SERVER_H_
