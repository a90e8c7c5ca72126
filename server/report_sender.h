// report_sender.h - reports to the processes that asked for them: one connection and one frame
// each.
//
// A receiver that is not there, or does not accept, misses the report; it never holds up the others
// or the modem, and it gets the next one again.
#ifndef QALT_SERVER_REPORT_SENDER_H_
#define QALT_SERVER_REPORT_SENDER_H_

#include <asio.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/logger.h"

namespace qalt::server {

class ReportSender {
 public:
  // Frames on their way to one receiver; beyond these a report is dropped.
  static constexpr int kMostPending = 32;

  // Throws std::runtime_error for a path over 107 characters.
  ReportSender(asio::io_context& context, const std::vector<std::string>& paths,
               const Logger& logger);

  void send(std::string_view text);

 private:
  struct Receiver;
  struct Delivery;

  asio::io_context& context_;
  const Logger& logger_;
  std::vector<std::shared_ptr<Receiver>> receivers_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_REPORT_SENDER_H_
