// app.h - the server put together: clients, modem, reports, and its beginning and end.
#ifndef QALT_SERVER_APP_H_
#define QALT_SERVER_APP_H_

#include <asio.hpp>

#include "at/transcript.h"
#include "server/client_hub.h"
#include "server/client_session.h"
#include "server/log_limit.h"
#include "server/logger.h"
#include "server/modem_link.h"
#include "server/options.h"
#include "server/peer.h"
#include "server/report_sender.h"
#include "server/socket_path.h"

namespace qalt::server {

class App {
 public:
  // Takes the socket path and begins to open the modem. Throws std::exception with a message for
  // the user when the server cannot start.
  App(asio::io_context& context, const Options& options);

  // No further clients and commands; the command under way is finished, then the loop runs out.
  void stop();
  // The transcript goes on in a new file.
  void reopen_transcript();

 private:
  void await_signal();
  void leave();

  asio::io_context& context_;
  Logger logger_;
  LogLimit log_limit_;  // of what clients cause
  at::Transcript transcript_;
  SocketPath socket_;
  ClientHub clients_;
  ReportSender reports_;
  ModemLink modem_;
  asio::signal_set signals_;
  const Peer self_ = this_process();
  bool stopping_ = false;
  bool modem_idle_ = false;
};

std::unique_ptr<ModemPort> make_port(asio::io_context& context, const ModemAddress& address);

}  // namespace qalt::server

#endif  // QALT_SERVER_APP_H_
