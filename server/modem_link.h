// modem_link.h - the dispatcher on a real event loop: its port, its timer, its transcript, and the
// opening of the port again after it was lost.
#ifndef QALT_SERVER_MODEM_LINK_H_
#define QALT_SERVER_MODEM_LINK_H_

#include <asio.hpp>
#include <functional>
#include <memory>

#include "at/transcript.h"
#include "server/back_off.h"
#include "server/dispatcher.h"
#include "server/log_limit.h"
#include "server/logger.h"
#include "server/modem_port.h"

namespace qalt::server {

class ModemLink : private Dispatcher::Host {
 public:
  struct Handlers {
    std::function<void(uint64_t id, std::string_view text)> answer;
    std::function<void(std::string_view text)> report;
    std::function<void()> idle;  // no command is under way any more
  };

  ModemLink(asio::io_context& context, std::unique_ptr<ModemPort> port,
            std::vector<std::string> start_lines, std::chrono::milliseconds longest_wait,
            at::Transcript& transcript, const Logger& logger);

  void set_handlers(Handlers handlers) { handlers_ = std::move(handlers); }
  void start() { port_->open(); }
  // Ends the commands that wait; `idle` is called when the one under way is answered.
  void stop();
  void submit(Command command);
  void cancel(uint64_t id);
  bool refuse(uint64_t id) { return dispatcher_.refuse(id); }

 private:
  void write_modem(std::string_view bytes) override;
  void answer(uint64_t id, std::string_view text) override { handlers_.answer(id, text); }
  void report(std::string_view text) override { handlers_.report(text); }
  void give_up_port() override;
  void note(int priority, const std::string& text) override;
  // As note(), of what a modem without sense makes happen for ever.
  void note_some(std::string_view of, int priority, const std::string& text);
  bool runs(const Peer& peer) const override { return still_runs(peer); }

  void opened();
  void received(std::string_view bytes);
  void lost(const std::string& why);
  void open_later();
  void await_opening();
  void open_again();
  // The deadline has passed.
  void due(unsigned passes);
  // After everything the dispatcher was told: its next deadline, and the end of a stop.
  void settle();

  asio::steady_timer timer_;
  asio::steady_timer reopen_timer_;
  std::unique_ptr<ModemPort> port_;
  at::Transcript& transcript_;
  const Logger& logger_;
  Handlers handlers_;
  Dispatcher dispatcher_;
  std::optional<TimePoint> armed_;
  uint64_t pieces_ = 0;  // of bytes received
  BackOff back_off_;
  LogLimit log_limit_;
  std::string why_;    // the port was lost, as was noted last
  bool lost_ = false;  // the port is to be opened again
  bool stopping_ = false;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_MODEM_LINK_H_
