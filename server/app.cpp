#include "server/app.h"

#include <csignal>
#include <utility>

#include "common/descriptors.h"
#include "server/replay_port.h"
#include "server/sim_port.h"

namespace qalt::server {
namespace {

struct PortMaker {
  asio::io_context& context;
  std::unique_ptr<ModemPort> operator()(const SimAddress& address) const {
    return std::make_unique<SimPort>(context, address.config);
  }
  std::unique_ptr<ModemPort> operator()(const TtyAddress& address) const {
    return std::make_unique<TtyPort>(context, address);
  }
  std::unique_ptr<ModemPort> operator()(const TcpAddress& address) const {
    return std::make_unique<TcpPort>(context, address);
  }
  std::unique_ptr<ModemPort> operator()(const ReplayAddress& address) const {
    return std::make_unique<ReplayPort>(context, address.file);
  }
};

}  // namespace

std::unique_ptr<ModemPort> make_port(asio::io_context& context, const ModemAddress& address) {
  return std::visit(PortMaker{context}, address);
}

App::App(asio::io_context& context, const Options& options)
    : context_(context),
      logger_(options.syslog ? Logger::Target::kSyslog : Logger::Target::kStandardError,
              options.verbose),
      transcript_(options.transcript),
      socket_(options.socket, options.access),
      clients_(context, socket_.descriptor(),
               {[this](Command command) {
                  command.older = socket_.took_over() && began_before(command.peer, self_);
                  modem_.submit(std::move(command));
                },
                [this](uint64_t id) { return modem_.refuse(id); },
                [this](uint64_t id) { modem_.cancel(id); },
                {},
                [this](std::string_view of, int priority, const std::string& text) {
                  const auto now = std::chrono::steady_clock::now();
                  if (const auto line = log_limit_.limited(of, text, now)) {
                    logger_.log(priority, *line);
                  }
                }}),
      reports_(context, options.report_paths, logger_),
      modem_(context, make_port(context, options.modem), options.start_lines, options.longest_wait,
             transcript_, logger_),
      signals_(context, SIGINT, SIGTERM, SIGHUP) {
  // A client that closes early is an error of its connection, not the end of the server.
  std::signal(SIGPIPE, SIG_IGN);
  // Nor is a transcript that may not grow any further.
  std::signal(SIGXFSZ, SIG_IGN);
  modem_.set_handlers({[this](uint64_t id, std::string_view text) { clients_.answer(id, text); },
                       [this](std::string_view text) { reports_.send(text); },
                       [this] {
                         modem_idle_ = true;
                         leave();
                       }});
  clients_.when_empty([this] { leave(); });
  await_signal();
  clients_.start();
  modem_.start();
  logger_.log(LOG_INFO, "listening on " + socket_.path());
  if (options.ready_descriptor >= 0) tell_ready(options.ready_descriptor);
}

void App::await_signal() {
  signals_.async_wait([this](const asio::error_code& error, int signal) {
    if (error) return;
    await_signal();
    if (signal == SIGHUP) {
      reopen_transcript();
    } else if (stopping_) {
      // Asked twice: what is still under way is given up.
      context_.stop();
    } else {
      stop();
    }
  });
}

void App::stop() {
  stopping_ = true;
  logger_.log(LOG_INFO, "ending");
  clients_.stop();
  modem_.stop();
}

void App::reopen_transcript() try { transcript_.reopen(); } catch (const std::exception& error) {
  logger_.log(LOG_ERR, std::string("transcript goes on in the old file: ") + error.what());
}

// The end: the modem is at rest and every client has its answer.
void App::leave() {
  if (stopping_ && modem_idle_ && clients_.empty()) signals_.cancel();
}

}  // namespace qalt::server
