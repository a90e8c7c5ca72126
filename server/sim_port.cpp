#include "server/sim_port.h"

#include <utility>

namespace qalt::server {

SimPort::SimPort(asio::io_context& context, sim::Config config)
    : context_(context), player_(context, std::move(config)) {
  player_.set_handlers({[this](std::string_view bytes) { handlers_.received(bytes); },
                        [this] { handlers_.closed("the line was closed"); }});
}

void SimPort::open() {
  player_.start();
  asio::post(context_, [this, session = ++session_] {
    if (session == session_) handlers_.opened();
  });
}

void SimPort::close() {
  ++session_;
  player_.stop();
}

}  // namespace qalt::server
