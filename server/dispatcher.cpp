#include "server/dispatcher.h"

#include <syslog.h>

#include <algorithm>
#include <utility>

#include "server/command_answers.h"

namespace qalt::server {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kOwnTimeout{5000};  // of the server's own commands

constexpr std::string_view kEscape = "\x1B";

// The way out of a data call: a sequence between two pauses (TIA-602, 6.1).
constexpr std::string_view kLeaveData = "+++";
constexpr milliseconds kGuardTime{1100};

// A start line may be what makes the modem begin anew, so they follow it so often within a time.
constexpr unsigned kMostRestarts = 8;
constexpr std::chrono::minutes kRestartPeriod{10};
// Data calls between two answers to clients.
constexpr unsigned kMostCalls = 2;

// What a client gets while there is no modem (3GPP TS 27.007, 9.2: no connection to phone).
constexpr std::string_view kAway = "\r\n+CME ERROR: 1\r\n";

// For what the server does not send (3GPP TS 27.007, 9.2: operation not allowed).
constexpr std::string_view kRefused = "\r\n+CME ERROR: 3\r\n";
// For a call that was ended.
constexpr std::string_view kCallEnded = "\r\nNO CARRIER\r\n";

// What a client gets instead of an answer that a frame cannot carry (3GPP TS 27.007, 9.2: text
// string too long, invalid characters in text string).
constexpr std::string_view kTooLong = "\r\n+CME ERROR: 24\r\n";
constexpr std::string_view kUnfit = "\r\n+CME ERROR: 25\r\n";

bool is_ok(std::string_view answer) {
  return answer.ends_with("\r\nOK\r\n");
}

}  // namespace

void Dispatcher::opened(TimePoint now, bool clean) {
  reader_.reset();
  settings_.reopened();
  resync_.reopened();
  started_ = 0;
  calls_ = 0;
  undo_ = restarted_ = silent_ = false;
  if (clean) {
    state_ = State::kStarting;
    next(now);
  } else {
    resync(now);
  }
}

void Dispatcher::closed() {
  // Also of a client that has gone meanwhile.
  if (state_ == State::kWaiting) settings_.unanswered(sender_, sent_);
  state_ = State::kClosed;
  finish_current("");
  drop_all(kAway);
}

void Dispatcher::drop_all(std::string_view text) {
  while (!waiting_.empty()) drop(waiting_.take_front(), text);
}

// What it selects is wanted all the same: not every client looks at the result.
void Dispatcher::drop(const Command& command, std::string_view text) {
  settings_.unanswered(command.peer, command.line);
  host_.answer(command.id, text);
}

void Dispatcher::submit(Command command, TimePoint now) {
  if (rule_of(command.line) == LineRule::kRefused) {
    note_some("modes", LOG_INFO,
              "the line's modes and data calls are no client's, so not sent: " + command.line, now);
    return host_.answer(command.id, kRefused);
  }
  if (!command.peer.known() && ClientSettings::touched_by(command.line)) {
    note_some("unknown", LOG_WARNING,
              "from a process namespace whose clients look alike, so not sent: " + command.line,
              now);
    return host_.answer(command.id, kRefused);
  }
  if (state_ == State::kClosed) return drop(command, kAway);
  waiting_.push_back(std::move(command));
  if (state_ == State::kIdle) next(now);
}

void Dispatcher::cancel(uint64_t id, TimePoint now) {
  if (const auto command = waiting_.take(id)) settings_.unanswered(command->peer, command->line);
  if (!current_ || current_->id != id) return;
  current_.reset();
  if (state_ == State::kWaiting) deadline_ = std::min(deadline_, now + kLeftWait);
}

bool Dispatcher::refuse(uint64_t id) {
  const auto command = waiting_.take(id);
  if (command) drop(*command, kRefused);
  return command.has_value();
}

void Dispatcher::receive(std::string_view bytes, TimePoint now) {
  if (state_ == State::kClosed || state_ == State::kLeaving) return;
  reader_.feed(bytes);
  while (auto event = reader_.next()) handle(std::move(*event), now);
}

void Dispatcher::tick(TimePoint now) {
  if (!deadline() || now < deadline_) return;
  switch (state_) {
    case State::kWaiting:
      return give_up(now, "no answer in time to ");
    case State::kPreparing:
    case State::kStarting:
      note_some("own", LOG_WARNING, "no answer in time to the server's own " + sent_, now);
      settings_.lost();
      // Of a start line's own silence nothing is learned by another round.
      if (state_ == State::kPreparing) started_ = 0;
      // Tried once for each command: what a modem does not answer it may never answer. A question,
      // asked once for all, is none that the command needs.
      if (state_ == State::kPreparing && !sent_.ends_with('?') && !waiting_.empty() &&
          waiting_.front().id == prepared_for_) {
        note_some("unsent", LOG_ERR, "so not sent: " + waiting_.front().line, now);
        drop(waiting_.front(), "");
        waiting_.pop_front();
      }
      return resync(now);
    case State::kLeaving:
      if (std::exchange(escaped_, true)) {
        host_.write_modem("ATH\r");
        return resync(now);
      }
      host_.write_modem(kLeaveData);
      deadline_ = now + kGuardTime;
      return;
    case State::kResync:
      return go_on(resync_.timed_out(now), now);
    case State::kClosed:
    case State::kIdle:
      return;
  }
}

std::optional<TimePoint> Dispatcher::deadline() const {
  if (state_ == State::kClosed || state_ == State::kIdle) return std::nullopt;
  return deadline_;
}

// Goes on with what is due: the rest of the start lines, then the clients' commands.
void Dispatcher::next(TimePoint now) {
  if (std::exchange(undo_, false)) {
    return send(State::kStarting, std::string(Resync::kWake), kOwnTimeout, now);
  }
  if (started_ < start_lines_.size()) {
    return send(State::kStarting, start_lines_[started_++], kOwnTimeout, now);
  }
  state_ = State::kIdle;
  // A text would be taken in a set that its sender has not selected: the command fails.
  while (!waiting_.empty() && settings_.forgotten(waiting_.front().peer, waiting_.front().line,
                                                  waiting_.front().older)) {
    drop(waiting_.front(), "");
    waiting_.pop_front();
  }
  if (waiting_.empty()) return;
  const Command& command = waiting_.front();
  if (const auto line = settings_.before(command.peer, command.line)) {
    prepared_for_ = command.id;
    return send(State::kPreparing, *line, kOwnTimeout, now);
  }
  current_ = waiting_.take_front();
  sender_ = current_->peer;
  rule_ = rule_of(current_->line);
  send(State::kWaiting, current_->line, current_->timeout, now);
}

void Dispatcher::send(State state, const std::string& line, milliseconds timeout, TimePoint now) {
  state_ = state;
  sent_ = line;
  deadline_ = now + std::min(timeout, longest_wait_);
  reader_.expect_answer(line);
  host_.write_modem(line + "\r");
}

void Dispatcher::handle(StreamEvent event, TimePoint now) {
  if (event.restart) restarted(now);
  switch (event.kind) {
    case StreamEvent::Kind::kReport:
      return push_report(event, now);
    case StreamEvent::Kind::kLine:
      if (event.connected) return leave_data_call(now);
      // Between commands only reports come; a result or a line of an answer is a late one.
      if (event.too_long || event.unfit || is_result(event.text)) {
        return note_some("stray", LOG_INFO, "line of no command passed over", now);
      }
      event.text = "\r\n" + event.text + "\r\n";
      return push_report(event, now);
    case StreamEvent::Kind::kPrompt:
    case StreamEvent::Kind::kAnswer:
      return answered(event, now);
  }
}

void Dispatcher::answered(const StreamEvent& event, TimePoint now) {
  const bool prompt = event.kind == StreamEvent::Kind::kPrompt;
  // Nobody will send the text that the modem waits for.
  if (prompt) host_.write_modem(kEscape);
  if (event.connected && state_ != State::kWaiting) return leave_data_call(now);
  if (state_ == State::kResync) {
    // A line that is not sent anew is still the one whose answer is looked for.
    reader_.expect_resync(resync_.line());
    if (!prompt) go_on(resync_.answered(event.text, now), now);
    return;
  }
  if (event.anothers && state_ == State::kWaiting) {
    reader_.expect_nothing();
    return give_up(now, "the answer to another command came to ");
  }
  reader_.expect_nothing();
  const bool ok = !prompt && (is_ok(event.text) || event.too_long || event.unfit);
  if (state_ != State::kStarting && silent_ == event.echoed) {
    silent_ = !event.echoed;
    if (event.echoed) restarted(now);
    if (state_ == State::kResync) return;
  }
  if (state_ == State::kStarting) {
    settings_.initialised(sent_, ok);
    if (!ok) note_some("start", LOG_WARNING, "the modem refused the start line " + sent_, now);
  } else if (state_ == State::kPreparing) {
    // Without its own settings the command would read or write wrong texts or another storage.
    if (!settings_.prepared(event.text, ok) && !waiting_.empty() &&
        waiting_.front().id == prepared_for_) {
      note_some("prepare", LOG_ERR,
                "the modem refused " + sent_ + "; so not sent: " + waiting_.front().line, now);
      host_.answer(waiting_.front().id, event.text);
      waiting_.pop_front();
    }
    if (settings_.gone()) restarted(now);
    if (state_ == State::kResync) return;
  } else {
    settings_.carried_out(sender_, sent_, ok);
    settings_.answered(event.text);
    waiting_.answered(sender_, true);
    if (event.too_long || event.unfit) {
      note_some("frame", LOG_ERR, "the answer does not fit a frame: " + sent_, now);
    }
    // A text went in another set than the client's, or came in one.
    const bool doubtful = restarted_ && ClientSettings::touched_by(sent_);
    finish_current(doubtful          ? ""
                   : event.connected ? kCallEnded
                   : event.too_long  ? kTooLong
                   : event.unfit     ? kUnfit
                                     : std::string_view(event.text));
    if (event.connected) return leave_data_call(now);
    calls_ = 0;
    undo_ = rule_ == LineRule::kUndone;
    if (rule_ == LineRule::kRestarts) {
      settings_.lost();
      started_ = 0;
    }
    if (std::exchange(restarted_, false) || rule_ == LineRule::kRestarts) return resync(now);
  }
  // An answer that ended within quotes may have been a stored text with a line "OK" in it.
  if (prompt || event.open_quote) return resync(now);
  next(now);
}

// What became of the command under way is not known.
void Dispatcher::give_up(TimePoint now, const std::string& why) {
  note_some("late", LOG_WARNING, why + sent_, now);
  settings_.unanswered(sender_, sent_);
  waiting_.answered(sender_, false);
  finish_current("");
  settings_.lost();
  calls_ = 0;
  started_ = 0;
  restarted_ = false;
  resync(now);
}

// The modem has begun anew: its modes and settings are gone.
void Dispatcher::restarted(TimePoint now) {
  settings_.lost();
  silent_ = false;
  if (state_ == State::kResync && started_ == 0) return;
  if (state_ == State::kWaiting) {
    if (std::exchange(restarted_, true)) return;
    // Its answer may be on its way still.
    deadline_ = std::min(deadline_, now + kOwnTimeout);
  }
  if (now - restarting_since_ >= kRestartPeriod) restarts_ = 0;
  if (restarts_ == 0) restarting_since_ = now;
  if (restarts_ == kMostRestarts) return;
  ++restarts_;
  started_ = 0;
  host_.note(LOG_WARNING, "the modem has begun anew");
  if (state_ != State::kWaiting && state_ != State::kResync) resync(now);
}

// Nobody's commands are for the other end of a call. One that was late, or that the modem took by
// itself, is met here, too.
void Dispatcher::leave_data_call(TimePoint now) {
  note_some("call", LOG_WARNING, "a data call began and is ended: it needs a port of its own", now);
  if (state_ == State::kWaiting) {
    settings_.unanswered(sender_, sent_);
    waiting_.answered(sender_, false);
  }
  finish_current("");
  settings_.lost();
  restarted_ = false;
  reader_.reset();
  if (calls_++ == kMostCalls) return go_on(Resync::Step::kGiveUp, now);
  state_ = State::kLeaving;
  escaped_ = false;
  deadline_ = now + kGuardTime;
}

void Dispatcher::finish_current(std::string_view text) {
  if (const auto command = std::exchange(current_, std::nullopt)) host_.answer(command->id, text);
}

void Dispatcher::resync(TimePoint now) {
  state_ = State::kResync;
  go_on(resync_.begin(now), now);
}

void Dispatcher::go_on(Resync::Step step, TimePoint now) {
  deadline_ = resync_.deadline();
  switch (step) {
    case Resync::Step::kWait:
      return;
    case Resync::Step::kSend:
      reader_.expect_resync(resync_.line());
      // A prompt that was not taken for one is left; elsewhere what stands before "AT" is noise
      // (ITU-T V.250, 5.2.1).
      return host_.write_modem(std::string(resync_.wakes() ? kEscape : "").append(resync_.line()) +
                               "\r");
    case Resync::Step::kDone:
      reader_.expect_nothing();
      state_ = State::kStarting;
      return next(now);
    case Resync::Step::kGiveUp:
      host_.note(LOG_ERR, "the modem does not answer");
      closed();
      return host_.give_up_port();
  }
}

void Dispatcher::note_some(std::string_view of, int priority, const std::string& text,
                           TimePoint now) {
  if (const auto line = log_limit_.limited(of, text, now)) host_.note(priority, *line);
}

void Dispatcher::push_report(const StreamEvent& event, TimePoint now) {
  if (event.too_long || event.unfit)
    return note_some("report", LOG_ERR, "a report does not fit a frame and is dropped", now);
  host_.report(event.text);
}

}  // namespace qalt::server
