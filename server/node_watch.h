// node_watch.h - tells when a file of a device appears, or may be opened at last.
#ifndef QALT_SERVER_NODE_WATCH_H_
#define QALT_SERVER_NODE_WATCH_H_

#include <array>
#include <asio.hpp>
#include <functional>
#include <string>

namespace qalt::server {

// The folders of the path come and go with the device, as those of /dev/serial do: the last one
// that is there is watched for the name that comes next. Where the system has no more watches, none
// is kept: this only makes things quicker.
class NodeWatch {
 public:
  NodeWatch(asio::io_context& context, std::string path)
      : stream_(context), path_(std::move(path)) {}

  // Calls `seen` once, from the loop, when something happens to the path; at once if it is there
  // though `missing` says that it was not.
  void start(bool missing, std::function<void()> seen);
  void stop();

 private:
  void read();
  void tell();

  asio::posix::stream_descriptor stream_;
  std::string path_;
  std::string name_;  // what is watched for
  std::function<void()> seen_;
  std::array<char, 4096> events_{};
  unsigned session_ = 0;  // tells a handler of an earlier start
};

}  // namespace qalt::server

#endif  // QALT_SERVER_NODE_WATCH_H_
