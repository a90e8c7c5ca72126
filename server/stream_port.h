// stream_port.h - what a terminal device and a TCP connection have in common as ports.
#ifndef QALT_SERVER_STREAM_PORT_H_
#define QALT_SERVER_STREAM_PORT_H_

#include <array>
#include <asio.hpp>
#include <utility>

#include "server/modem_port.h"

namespace qalt::server {

template <typename Stream>
class StreamPort : public ModemPort {
 public:
  explicit StreamPort(asio::io_context& context) : stream_(context) {}

  void write(std::string_view bytes) override {
    if (unsent_.size() + bytes.size() > kMostUnsent) return fail("it takes no more bytes");
    unsent_.append(bytes);
    if (sending_.empty()) send();
  }

  void close() override {
    ++session_;
    unsent_.clear();
    sending_.clear();
    asio::error_code ignored;
    stream_.close(ignored);
  }

  bool clean_at_open() const override { return false; }

 protected:
  // The stream is connected.
  void begin() {
    handlers_.opened();
    receive();
  }

  // Closes the port and says why, from outside the caller's call.
  void fail(const std::string& why) {
    close();
    asio::post(stream_.get_executor(), [this, why, session = session_] {
      if (session == session_) handlers_.closed(why);
    });
  }

  Stream stream_;
  unsigned session_ = 0;  // tells a handler of an earlier opening

 private:
  // A modem that takes nothing, on a line with flow control, must not fill the memory.
  static constexpr size_t kMostUnsent = 65536;

  void receive() {
    stream_.async_read_some(asio::buffer(received_),
                            [this, session = session_](const asio::error_code& error, size_t n) {
                              if (session != session_) return;
                              if (error) return fail(error.message());
                              handlers_.received(std::string_view(received_.data(), n));
                              if (session == session_) receive();
                            });
  }

  void send() {
    sending_ = std::exchange(unsent_, {});
    asio::async_write(stream_, asio::buffer(sending_),
                      [this, session = session_](const asio::error_code& error, size_t) {
                        if (session != session_) return;
                        if (error) return fail(error.message());
                        sending_.clear();
                        if (!unsent_.empty()) send();
                      });
  }

  std::array<char, 4096> received_;
  std::string unsent_;
  std::string sending_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_STREAM_PORT_H_
