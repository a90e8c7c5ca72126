// dispatcher.h - the order of things on the one modem line: commands one at a time, the processes
// in turn, their time-outs, and the way back after one. Pure: no I/O and no clock of its own; it is
// told the time, says when it wants to be woken, and acts through its host.
//
//            opened()                 start lines done             command written
//   closed ------------> resync ----> starting ------------> idle <-------------> waiting
//     ^                  |    ^                                                      |
//     |     no way back  |    |               time-out, prompt, odd quotes, restart  |
//     +------------------+    +------------------------------------------------------+
//
// Behind a time-out, a reset by a client and a restart of the modem, the start lines come again: a
// modem says by a line of its own that it has begun anew, or by an echo that was off. A data call,
// which carries no commands, is left by way of a state of its own.
//
// Resync: what the modem still says to the command before must not reach the next. resync.h says
// how the end of that is found.
#ifndef QALT_SERVER_DISPATCHER_H_
#define QALT_SERVER_DISPATCHER_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/client_settings.h"
#include "server/line_rules.h"
#include "server/log_limit.h"
#include "server/resync.h"
#include "server/stream_reader.h"
#include "server/turns.h"

namespace qalt::server {

constexpr std::chrono::milliseconds kAnyWait = std::chrono::milliseconds::max();
constexpr std::chrono::milliseconds kLeftWait{500};

class Dispatcher {
 public:
  // What the dispatcher acts through. None of these may call back into it.
  class Host {
   public:
    virtual ~Host() = default;
    virtual void write_modem(std::string_view bytes) = 0;
    virtual void answer(uint64_t id, std::string_view text) = 0;
    virtual void report(std::string_view text) = 0;
    // The modem does not answer any more: the port is to be closed and opened again.
    virtual void give_up_port() = 0;
    virtual void note(int priority, const std::string& text) = 0;
    // Whether a client's process has not ended, as far as can be told.
    virtual bool runs(const Peer&) const { return true; }
  };

  // `start_lines` are sent after every opening, and whenever the modem may have begun anew. No
  // answer is awaited for longer than `longest_wait`.
  Dispatcher(Host& host, std::vector<std::string> start_lines,
             std::chrono::milliseconds longest_wait = kAnyWait)
      : host_(host), start_lines_(std::move(start_lines)), longest_wait_(longest_wait) {}

  // The port is open. `clean`: nothing of an earlier time can be on the line.
  void opened(TimePoint now, bool clean);
  // The port is gone: the command under way ends with an empty answer, since nobody knows what
  // became of it. Those that were not sent, and further ones, get "no connection to phone" at once.
  void closed();
  void submit(Command command, TimePoint now);
  // The client is gone; a command not yet sent is dropped. One that is goes on for kLeftWait at
  // most: then the modem is asked for its place.
  void cancel(uint64_t id, TimePoint now);
  // Refuses a command that was not sent yet; false where it was.
  bool refuse(uint64_t id);
  void receive(std::string_view bytes, TimePoint now);
  void tick(TimePoint now);
  // When tick() has something to do; none while only the modem or a client can change anything.
  std::optional<TimePoint> deadline() const;
  // Ends all commands that wait with an empty answer; the one under way goes on.
  void drop_waiting() { drop_all(""); }
  bool command_under_way() const { return state_ == State::kWaiting && current_.has_value(); }
  // Whether the modem answered what it was asked at the beginning.
  bool serving() const {
    return state_ == State::kIdle || state_ == State::kPreparing || state_ == State::kWaiting;
  }
  uint64_t id_under_way() const { return command_under_way() ? current_->id : 0; }

 private:
  enum class State { kClosed, kStarting, kIdle, kPreparing, kWaiting, kLeaving, kResync };

  void next(TimePoint now);
  void send(State state, const std::string& line, std::chrono::milliseconds timeout, TimePoint now);
  void handle(StreamEvent event, TimePoint now);
  void answered(const StreamEvent& event, TimePoint now);
  void give_up(TimePoint now, const std::string& why);
  void finish_current(std::string_view text);
  void drop(const Command& command, std::string_view text);
  void drop_all(std::string_view text);
  void restarted(TimePoint now);
  void leave_data_call(TimePoint now);
  void resync(TimePoint now);
  void go_on(Resync::Step step, TimePoint now);
  void push_report(const StreamEvent& event, TimePoint now);
  // As note(), of what a client may cause as often as it likes.
  void note_some(std::string_view of, int priority, const std::string& text, TimePoint now);

  Host& host_;
  std::vector<std::string> start_lines_;
  std::chrono::milliseconds longest_wait_;
  size_t started_ = 0;     // start lines sent
  unsigned restarts_ = 0;  // lately, from restarting_since_ on
  TimePoint restarting_since_;
  bool undo_ = false;       // the line's modes are to be set again
  bool restarted_ = false;  // kWaiting: the modem, under the command
  bool silent_ = false;     // the last command had no echo
  unsigned calls_ = 0;      // data calls since a client's command was answered
  bool escaped_ = false;    // kLeaving: the escape was sent
  StreamReader reader_;
  ClientSettings settings_{[this](const Peer& peer) { return host_.runs(peer); }};
  Turns waiting_;
  std::optional<Command> current_;  // kWaiting: the command sent; none when its client is gone
  std::string sent_;                // the line whose answer is awaited
  LineRule rule_{};                 // kWaiting: what becomes of the line's modes
  Peer sender_;
  uint64_t prepared_for_ = 0;  // kPreparing: the command that the line is sent for
  State state_ = State::kClosed;
  TimePoint deadline_;
  Resync resync_;
  LogLimit log_limit_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_DISPATCHER_H_
