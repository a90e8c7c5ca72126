// sim_port.h - the simulated modem as a port of this process.
#ifndef QALT_SERVER_SIM_PORT_H_
#define QALT_SERVER_SIM_PORT_H_

#include "server/modem_port.h"
#include "sim/player.h"

namespace qalt::server {

class SimPort : public ModemPort {
 public:
  SimPort(asio::io_context& context, sim::Config config);

  void open() override;
  void write(std::string_view bytes) override { player_.receive(bytes); }
  void close() override;
  bool clean_at_open() const override { return true; }
  std::string name() const override { return "sim"; }

 private:
  asio::io_context& context_;
  sim::Player player_;
  unsigned session_ = 0;  // tells a handler of an earlier opening
};

}  // namespace qalt::server

#endif  // QALT_SERVER_SIM_PORT_H_
