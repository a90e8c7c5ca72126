#include "server/modem_link.h"

#include <algorithm>
#include <utility>

namespace qalt::server {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = at::TranscriptEntry::Kind;
using std::chrono::milliseconds;

// Of bytes without an end no more is taken before the time counts.
constexpr unsigned kMostPasses = 64;

}  // namespace

ModemLink::ModemLink(asio::io_context& context, std::unique_ptr<ModemPort> port,
                     std::vector<std::string> start_lines, milliseconds longest_wait,
                     at::Transcript& transcript, const Logger& logger)
    : timer_(context),
      reopen_timer_(context),
      port_(std::move(port)),
      transcript_(transcript),
      logger_(logger),
      dispatcher_(*this, std::move(start_lines), longest_wait) {
  port_->set_handlers({[this] { opened(); }, [this](std::string_view bytes) { received(bytes); },
                       [this](const std::string& why) { lost(why); }, [this] { open_again(); }});
}

void ModemLink::stop() {
  stopping_ = true;
  reopen_timer_.cancel();
  dispatcher_.drop_waiting();
  settle();
}

void ModemLink::submit(Command command) {
  back_off_.asked(Clock::now());
  if (lost_) await_opening();
  dispatcher_.submit(std::move(command), Clock::now());
  settle();
}

void ModemLink::cancel(uint64_t id) {
  dispatcher_.cancel(id, Clock::now());
  settle();
}

void ModemLink::write_modem(std::string_view bytes) {
  transcript_.add(Kind::kToModem, bytes);
  port_->write(bytes);
}

void ModemLink::give_up_port() {
  port_->close();
  open_later();
}

void ModemLink::note(int priority, const std::string& text) {
  transcript_.add(Kind::kRemark, text);
  logger_.log(priority, text);
}

void ModemLink::note_some(std::string_view of, int priority, const std::string& text) {
  if (const auto line = log_limit_.limited(of, text, Clock::now())) note(priority, *line);
}

void ModemLink::opened() {
  why_.clear();
  note_some("open", LOG_INFO, "modem open: " + port_->name());
  dispatcher_.opened(Clock::now(), port_->clean_at_open());
  settle();
}

void ModemLink::received(std::string_view bytes) {
  ++pieces_;
  transcript_.add(Kind::kFromModem, bytes);
  dispatcher_.receive(bytes, Clock::now());
  if (dispatcher_.serving()) back_off_.answered();
  settle();
}

void ModemLink::lost(const std::string& why) {
  // Once, not at every attempt.
  if (std::exchange(why_, why) != why) {
    note_some("lost", LOG_WARNING, "modem lost: " + port_->name() + ": " + why);
  }
  dispatcher_.closed();
  open_later();
  settle();
}

void ModemLink::open_later() {
  if (stopping_) return;
  lost_ = true;
  back_off_.failed(Clock::now());
  port_->await_device();
  await_opening();
}

void ModemLink::await_opening() {
  reopen_timer_.expires_at(back_off_.due());
  reopen_timer_.async_wait([this](const asio::error_code& error) {
    if (!error) open_again();
  });
}

void ModemLink::open_again() {
  if (!lost_ || stopping_) return;
  lost_ = false;
  reopen_timer_.cancel();
  port_->open();
}

void ModemLink::settle() {
  if (stopping_ && !dispatcher_.command_under_way()) {
    timer_.cancel();
    armed_.reset();
    reopen_timer_.cancel();
    port_->close();
    return handlers_.idle();
  }
  const auto deadline = dispatcher_.deadline();
  if (deadline == armed_) return;
  armed_ = deadline;
  if (!deadline) {
    timer_.cancel();
    return;
  }
  timer_.expires_at(*deadline);
  timer_.async_wait([this](const asio::error_code& error) {
    if (error) return;
    due(kMostPasses);
  });
}

// What came before the time is up is in time, though this process stood still meanwhile: it is
// taken first, which needs a pass of the loop for each piece.
void ModemLink::due(unsigned passes) {
  asio::post(timer_.get_executor(), [this, passes, before = pieces_, deadline = armed_] {
    if (!armed_ || armed_ != deadline) return;
    if (passes > 0 && pieces_ != before) return due(passes - 1);
    armed_.reset();
    dispatcher_.tick(Clock::now());
    settle();
  });
}

}  // namespace qalt::server
