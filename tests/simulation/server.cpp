#include "tests/simulation/server.h"

#include <algorithm>
#include <utility>

#include "at/at_line.h"
#include "server/frame.h"
#include "server/report_names.h"

namespace qalt::simulation {
namespace {

using server::TimePoint;

// How long a command may take beyond its own time-out and those of the commands before it, as the
// manual has it: 110 s, and 35 s for each of two start lines.
constexpr Time kBound{180000};

TimePoint point(Time time) {
  return TimePoint(time);
}

// The lines of an answer that say something.
std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c != '\r' && c != '\n') {
      lines.back() += c;
    } else if (!lines.back().empty()) {
      lines.emplace_back();
    }
  }
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

// The modem is asked for indices: which.
std::optional<std::pair<int, int>> range_of(const std::string& line) {
  const auto commands = at::split_line(line);
  if (!commands || commands->size() != 1 || !commands->front().name.ends_with("CPBR")) {
    return std::nullopt;
  }
  const std::string& arguments = commands->front().arguments;
  if (arguments.empty() || arguments.find_first_not_of("0123456789,") != arguments.npos) {
    return std::nullopt;
  }
  const int first = std::atoi(arguments.c_str());
  const size_t comma = arguments.find(',');
  return std::pair(first,
                   comma == arguments.npos ? first : std::atoi(arguments.c_str() + comma + 1));
}

}  // namespace

Server::Server(World& world, Network& network, Line& line, Machine& machine, Oracle& oracle)
    : world_(world), network_(network), line_(line), oracle_(oracle) {
  machine.changed = [this, &machine](int index) {
    const auto found = machine.contacts().find(index);
    oracle_.changed(index, found == machine.contacts().end() ? Content() : found->second, writing_);
  };
  line_.set_handlers(
      {[this](std::string_view bytes, const std::vector<std::string>& reports) {
         for (const std::string& text : reports) {
           const bool known = server::is_report(std::string_view(text).substr(2, text.size() - 4));
           reports_.push_back({text, free_text_ && !known});
         }
         dispatcher_->receive(bytes, point(world_.now()));
         if (dispatcher_->serving()) back_off_.answered();
         std::erase_if(reports_, [](const Report& report) { return report.doubtful; });
         if (!reports_.empty()) world_.wrong("a report was not pushed: " + reports_.front().text);
         settle();
       },
       [this] {
         dispatcher_->closed();
         open_later();
         settle();
       }});
}

void Server::later(Time delay, void (Server::*what)()) {
  world_.after(delay, [this, what, life = life_] {
    if (life == life_) (this->*what)();
  });
}

void Server::start() {
  world_.record('#', "the server starts");
  ++life_;
  dispatcher_ =
      std::make_unique<server::Dispatcher>(host(), std::vector<std::string>{"ATE0", "AT+CMEE=1"});
  started_ = uint64_t(world_.now().count());
  stopping_ = false;
  armed_.reset();
  network_.serve(this);
  back_off_ = {};
  lost_ = true;
  later(Time(0), &Server::open_port);
}

void Server::kill() {
  world_.record('#', "the server is killed");
  killed_ = true;
  end();
}

void Server::stop() {
  world_.record('#', "the server is told to end");
  killed_ = false;
  stopping_ = true;
  dispatcher_->drop_waiting();
  settle();
}

void Server::end() {
  ++life_;
  line_.close();
  dispatcher_.reset();
  asked_.clear();
  network_.serve(nullptr);
}

void Server::new_process(int client) {
  processes_[client] = {++last_process_, uint64_t(world_.now().count())};
}

void Server::open_again() {
  if (lost_ && point(world_.now()) >= back_off_.due()) open_port();
}

void Server::open_port() {
  if (!line_.open()) return open_later();
  lost_ = false;
  dispatcher_->opened(point(world_.now()), false);
  settle();
}

void Server::open_later() {
  lost_ = true;
  back_off_.failed(point(world_.now()));
  await_opening();
}

void Server::await_opening() {
  if (stopping_) return;
  const Time due = std::chrono::duration_cast<Time>(back_off_.due().time_since_epoch());
  later(std::max(due - world_.now(), Time(0)), &Server::open_again);
}

void Server::give_up_port() {
  line_.close();
  open_later();
}

void Server::settle() {
  if (dispatcher_ == nullptr) return;
  if (stopping_ && !dispatcher_->command_under_way()) return end();
  const auto deadline = dispatcher_->deadline();
  if (deadline == armed_) return;
  armed_ = deadline;
  if (!deadline) return;
  const Time when = std::chrono::duration_cast<Time>(deadline->time_since_epoch());
  world_.at(std::max(when, world_.now()), [this, deadline, life = life_] {
    if (life != life_ || armed_ != deadline) return;
    armed_.reset();
    dispatcher_->tick(point(world_.now()));
    settle();
  });
}

void Server::requested(uint64_t connection, int client, const AtMsg& frame) {
  const server::FrameRequest request = server::read_request(frame);
  if (request.command.empty()) return network_.answer(connection, "\r\nERROR\r\n");
  ++commands_;
  Asked asked{calls_[client], request.command, request.timeout, request.timeout + kBound, nullptr};
  for (const auto& [id, other] : asked_) asked.allowed += other.timeout + kBound;
  ++asked.call->commands;
  world_.at(world_.now() + asked.allowed, [this, connection, life = life_] {
    const auto found = asked_.find(connection);
    if (life != life_ || found == asked_.end()) return;
    world_.wrong("no answer within its bound: " + found->second.line);
  });
  asked_.emplace(connection, std::move(asked));
  const server::Peer& peer = processes_[client];
  if (stopping_) return answer(connection, "");
  back_off_.asked(point(world_.now()));
  if (lost_) await_opening();
  dispatcher_->submit(
      {connection, request.command, request.timeout, peer, killed_ && peer.started <= started_},
      point(world_.now()));
  settle();
}

void Server::left(uint64_t connection) {
  asked_.erase(connection);
  dispatcher_->cancel(connection, point(world_.now()));
  settle();
}

void Server::write_modem(std::string_view bytes) {
  // The server's own lines are nobody's; what it finds its way back by leaves open what comes
  // first.
  if (!bytes.ends_with('\r') || !dispatcher_->command_under_way()) {
    line_.write(bytes);
    return;
  }
  const std::string_view line = bytes.substr(0, bytes.size() - 1);
  const auto asked = asked_.find(dispatcher_->id_under_way());
  if (asked == asked_.end() || asked->second.exchange != nullptr || asked->second.line != line) {
    world_.wrong("nobody asked for this: " + std::string(line));
  }
  free_text_ = has_free_text(line);
  const std::shared_ptr<Call> call = asked->second.call;
  writing_ = call;
  if (const auto range = range_of(asked->second.line)) {
    oracle_.looked(range->first, range->second, *call);
  }
  call->wrote |= line.find("PBW=") != line.npos;
  if (line == "AT+CPBS?") call->counted = {oracle_.now(), call->commands};
  asked->second.exchange = line_.write(bytes);
  writing_ = nullptr;
  call->touched |= asked->second.exchange->touched;
}

void Server::answer(uint64_t id, std::string_view text) {
  const auto found = asked_.find(id);
  if (found == asked_.end()) return;
  const Asked asked = std::move(found->second);
  asked_.erase(found);
  judge(asked, text);
  network_.answer(id, text);
}

void Server::judge(const Asked& asked, std::string_view text) {
  if (text.empty() || !asked.exchange) asked.call->touched = true;
  const auto lines = lines_of(text);
  if (lines.empty() || asked.exchange == nullptr) return;
  const auto said = lines_of(asked.exchange->answer);
  if (lines == said) return;
  // A report among texts stays there.
  auto next = lines.begin();
  for (const std::string& line : said) next = std::find(next, lines.end(), line);
  if (has_free_text(asked.line) && next != lines.end() && lines.back() == said.back()) return;
  world_.wrong("the answer to " + asked.line +
               " is not what the modem said to it: " + std::string(text));
}

void Server::report(std::string_view text) {
  while (!reports_.empty() && reports_.front().doubtful && text != reports_.front().text) {
    reports_.pop_front();
  }
  if (reports_.empty() || text != reports_.front().text) {
    world_.wrong("no report that has come now: " + std::string(text));
  }
  reports_.pop_front();
}

void Server::note(int, const std::string& text) {
  world_.record('#', text);
}

}  // namespace qalt::simulation
