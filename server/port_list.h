// port_list.h - the serial ports of this machine that a modem may be behind.
#ifndef QALT_SERVER_PORT_LIST_H_
#define QALT_SERVER_PORT_LIST_H_

#include <filesystem>
#include <string>
#include <vector>

namespace qalt::server {

// Paths in the folder of devices, in order; none when it cannot be read.
std::vector<std::string> modem_ports(const std::filesystem::path& folder = "/dev");

}  // namespace qalt::server

#endif  // QALT_SERVER_PORT_LIST_H_
