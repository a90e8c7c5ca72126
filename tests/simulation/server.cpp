#include "tests/simulation/server.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <sstream>
#include <utility>

#include "at/at_line.h"
#include "server/dispatcher.h"
#include "server/frame.h"
#include "server/report_names.h"
#include "tests/simulation/network.h"

namespace qalt::simulation {
namespace {

// How long a command may take beyond its own time-out and those of the commands before it, as the
// manual has it.
constexpr Time kBound{180000};

constexpr Time kReopening{1000};

// The lines of an answer that say something.
std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) {
    std::erase(line, '\r');
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

// What a command that reads indices, or counts them, shows its call.
void look(const std::string& line, Moment moment, Call& call) {
  if (line == "AT+CPBS?") call.counted = {moment, call.commands};
  const auto commands = at::split_line(line);
  if (!commands || commands->size() != 1 || !commands->front().name.ends_with("CPBR")) return;
  const std::string& arguments = commands->front().arguments;
  if (arguments.empty() || arguments.find_first_not_of("0123456789,") != arguments.npos) return;
  const int first = std::atoi(arguments.c_str());
  const int last = std::atoi(arguments.substr(arguments.find(',') + 1).c_str());
  for (int index = first; index <= last; ++index) call.looks[index] = {moment, call.commands};
}

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

class ServerProcess : public Server,
                      public server::Dispatcher::Host,
                      private Service,
                      private Terminal {
 public:
  ServerProcess(World& world, Line& line, Machine& machine, Oracle& oracle)
      : world_(world), line_(line), oracle_(oracle) {
    machine.changed = [this](int index) { oracle_.changed(index, writing_); };
    line_.connect(*this);
  }

  void start() override {
    world_.record('#', "the server starts");
    ++life_;
    dispatcher_ =
        std::make_unique<server::Dispatcher>(*this, std::vector<std::string>{"ATE0", "AT+CMEE=1"});
    started_ = uint64_t(world_.now().count());
    armed_.reset();
    network::serve(this);
    open_port(Time(0));
  }

  void kill() override {
    world_.record('#', "the server is killed");
    ++life_;
    line_.close();
    dispatcher_.reset();
    asked_.clear();
    network::serve(nullptr);
  }

  void set_call(int client, std::shared_ptr<Call> call) override {
    calls_[client] = std::move(call);
  }
  uint64_t commands() const override { return commands_; }
  void new_process(int client) override {
    processes_[client] = {++last_process_, uint64_t(world_.now().count())};
  }

 private:
  // In this life of the server's.
  void at(Time when, std::function<void()> what) {
    world_.at(when, [this, what = std::move(what), life = life_] {
      if (life == life_) what();
    });
  }

  void open_port(Time delay) {
    at(world_.now() + delay, [this] {
      if (!line_.open()) return open_port(kReopening);
      dispatcher_->opened(now(), false);
      settle();
    });
  }

  void give_up_port() override {
    line_.close();
    open_port(kReopening);
  }

  void settle() {
    const auto deadline = dispatcher_->deadline();
    if (deadline == armed_) return;
    armed_ = deadline;
    if (!deadline) return;
    const Time when = std::chrono::duration_cast<Time>(deadline->time_since_epoch());
    at(std::max(when, world_.now()), [this, deadline] {
      if (armed_ != deadline) return;
      armed_.reset();
      dispatcher_->tick(now());
      settle();
    });
  }

  void hung_up() override {
    dispatcher_->closed();
    open_port(kReopening);
    settle();
  }

  void received(std::string_view bytes, const std::vector<std::string>& reports) override {
    for (const std::string& text : reports) {
      const bool known = server::is_report(std::string_view(text).substr(2, text.size() - 4));
      reports_.push_back({text, free_text_ && !known});
    }
    dispatcher_->receive(bytes, now());
    std::erase_if(reports_, [](const Report& report) { return report.doubtful; });
    if (!reports_.empty()) world_.wrong("a report was not pushed: " + reports_.front().text);
    settle();
  }

  void requested(uint64_t connection, int client, const AtMsg& frame) override {
    const server::FrameRequest request = server::read_request(frame);
    if (request.command.empty()) return network::answer(connection, "\r\nERROR\r\n");
    ++commands_;
    const std::shared_ptr<Call> call = calls_[client];
    ++call->commands;
    // For all of it, and for what is before it.
    Time allowed = request.timeout + kBound;
    for (const auto& [id, other] : asked_) allowed += other.timeout + kBound;
    at(world_.now() + allowed, [this, connection] {
      const auto found = asked_.find(connection);
      if (found != asked_.end()) world_.wrong("no answer within its bound: " + found->second.line);
    });
    asked_.emplace(connection, Asked{call, request.command, request.timeout, nullptr});
    const server::Peer& peer = processes_[client];
    const bool older = life_ > 1 && peer.started <= started_;
    dispatcher_->submit({connection, request.command, request.timeout, peer, older}, now());
    settle();
  }

  void left(uint64_t connection) override {
    asked_.erase(connection);
    dispatcher_->cancel(connection, now());
    settle();
  }

  void write_modem(std::string_view bytes) override {
    // The server's own lines are nobody's; what it finds its way back by leaves open what comes
    // first.
    if (!bytes.ends_with('\r') || !dispatcher_->command_under_way()) {
      line_.write(bytes);
      return;
    }
    const std::string line(bytes.substr(0, bytes.size() - 1));
    const auto asked = asked_.find(dispatcher_->id_under_way());
    if (asked == asked_.end() || asked->second.exchange || asked->second.line != line) {
      world_.wrong("nobody asked for this: " + line);
    }
    free_text_ = has_free_text(line);
    const std::shared_ptr<Call> call = asked->second.call;
    look(line, oracle_.now(), *call);
    call->wrote |= line.find("PBW=") != line.npos;
    writing_ = call;
    asked->second.exchange = line_.write(bytes);
    writing_ = nullptr;
    call->touched |= asked->second.exchange->touched;
  }

  void answer(uint64_t id, std::string_view text) override {
    const auto found = asked_.find(id);
    if (found == asked_.end()) return;
    const Asked asked = std::move(asked_.extract(found).mapped());
    judge(asked, text);
    network::answer(id, text);
  }

  void judge(const Asked& asked, std::string_view text) {
    if (text.empty() || !asked.exchange) asked.call->touched = true;
    const auto lines = lines_of(text);
    if (lines.empty() || !asked.exchange) return;
    const auto said = lines_of(asked.exchange->answer);
    if (lines == said) return;
    // A report among texts stays there.
    auto next = lines.begin();
    for (const std::string& line : said) next = std::find(next, lines.end(), line);
    if (has_free_text(asked.line) && next != lines.end() && lines.back() == said.back()) return;
    world_.wrong("the answer to " + asked.line +
                 " is not what the modem said to it: " + std::string(text));
  }

  void report(std::string_view text) override {
    while (!reports_.empty() && reports_.front().doubtful && text != reports_.front().text) {
      reports_.pop_front();
    }
    if (reports_.empty() || text != reports_.front().text) {
      world_.wrong("no report that has come now: " + std::string(text));
    }
    reports_.pop_front();
  }

  void note(int, const std::string& text) override { world_.record('#', text); }

  server::TimePoint now() const { return server::TimePoint(world_.now()); }

  World& world_;
  Line& line_;
  Oracle& oracle_;
  std::unique_ptr<server::Dispatcher> dispatcher_;
  std::map<int, std::shared_ptr<Call>> calls_;
  std::map<int, server::Peer> processes_;
  std::map<uint64_t, Asked> asked_;  // by connection, in order of arrival
  std::shared_ptr<Call> writing_;
  std::deque<Report> reports_;  // that have come and are to be pushed
  bool free_text_ = false;      // the answers that may still come have texts in them
  std::optional<server::TimePoint> armed_;
  uint64_t life_ = 0;  // grows with its beginnings and ends
  uint64_t started_ = 0;
  int64_t last_process_ = 100;
  uint64_t commands_ = 0;
};

}  // namespace

std::unique_ptr<Server> new_server(World& world, Line& line, Machine& machine, Oracle& oracle) {
  return std::make_unique<ServerProcess>(world, line, machine, oracle);
}

}  // namespace qalt::simulation
