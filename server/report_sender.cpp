#include "server/report_sender.h"

#include <stdexcept>
#include <utility>

#include "server/frame.h"

namespace qalt::server {
namespace {

using Protocol = asio::local::stream_protocol;

constexpr std::chrono::milliseconds kSendTime{5000};

}  // namespace

struct ReportSender::Receiver {
  std::string path;
  int pending = 0;
  bool reachable = true;  // a change is logged, not every lost report
};

// One report to one receiver; it keeps itself alive through its handlers.
struct ReportSender::Delivery : std::enable_shared_from_this<Delivery> {
  Delivery(asio::io_context& context, std::shared_ptr<Receiver> to, const AtMsg& message)
      : socket(context), timer(context), receiver(std::move(to)), frame(message) {
    ++receiver->pending;
  }
  ~Delivery() { --receiver->pending; }

  // The receiver takes the frame from its socket's buffer whenever it wants; only one whose buffer
  // is smaller than a frame keeps this waiting, and not for long.
  void write() {
    timer.expires_after(kSendTime);
    timer.async_wait([self = shared_from_this()](const asio::error_code& error) {
      asio::error_code ignored;
      if (!error) self->socket.close(ignored);
    });
    asio::async_write(
        socket, asio::buffer(&frame, sizeof frame),
        [self = shared_from_this()](const asio::error_code&, size_t) { self->timer.cancel(); });
  }

  Protocol::socket socket;
  asio::steady_timer timer;
  std::shared_ptr<Receiver> receiver;
  AtMsg frame;
};

ReportSender::ReportSender(asio::io_context& context, const std::vector<std::string>& paths,
                           const Logger& logger)
    : context_(context), logger_(logger) {
  for (const std::string& path : paths) {
    if (path.empty() || path.size() >= QALT_AT_PATH_SIZE) {
      throw std::runtime_error("report socket '" + path + "': a path has 1 to " +
                               std::to_string(QALT_AT_PATH_SIZE - 1) + " characters");
    }
    receivers_.push_back(std::make_shared<Receiver>(Receiver{path}));
  }
}

void ReportSender::send(std::string_view text) {
  AtMsg frame;
  fill_frame(frame, text);
  for (const auto& receiver : receivers_) {
    asio::error_code error = asio::error::no_buffer_space;
    if (receiver->pending < kMostPending) {
      const auto delivery = std::make_shared<Delivery>(context_, receiver, frame);
      // Connecting to a Unix-domain socket succeeds or fails at once; a full listen queue fails.
      delivery->socket.open(Protocol(), error);
      if (!error) delivery->socket.non_blocking(true, error);
      if (!error) {
        const Protocol::endpoint endpoint(receiver->path);
        const bool done = ::connect(delivery->socket.native_handle(), endpoint.data(),
                                    socklen_t(endpoint.size())) == 0;
        error = done ? asio::error_code() : asio::error_code(errno, asio::system_category());
      }
      if (!error) delivery->write();
    }
    if (receiver->reachable == !error) continue;
    receiver->reachable = !error;
    logger_.log(error ? LOG_WARNING : LOG_NOTICE,
                "report receiver " + receiver->path +
                    (error ? " misses reports: " + error.message() : " gets reports again"));
  }
}

}  // namespace qalt::server
