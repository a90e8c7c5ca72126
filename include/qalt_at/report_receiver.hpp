/*
 * report_receiver.hpp - a receiver of pushed reports that can be started, stopped and relied upon.
 * Header-only, C++17, on top of libqalt_at; compiles with -fno-exceptions -fno-rtti.
 *
 *   qalt::ReportReceiver receiver;
 *   auto started = receiver.start("/run/app/reports", [](const qalt::Report& report) {
 *     if (report.name == "+CMTI") fetch_message(report.text);
 *   });
 *   if (!started) return complain(started.error());
 *
 * with an AT server that was started with --report-to /run/app/reports.
 *
 * Conventions of this header:
 *  1. Results. start() gives a Result as in phonebook.hpp: after success the socket listens, after
 *     an Error (Cause::kUsage, what happened, what to do) nothing has changed. Nothing is thrown;
 *     the callback may not throw either.
 *  2. The path. It is taken where there is no file, or a socket that refuses connections, which
 *     its owner left behind; any other file and a socket on which somebody listens stay as they
 *     are. stop() removes the socket if it is still this receiver's. Two programs that start at
 *     the same moment on a socket left behind can take it from each other: give each its own path.
 *  3. Ownership. A Report is a value, the callback's until it returns. The callback, and what it
 *     holds, is destroyed by stop().
 *  4. Sizes and units. A path has 1 to 107 characters; a text at most 10240 characters, also where
 *     it fills its frame to the last byte. What a sender sent before it closed counts; a connection
 *     without text is no report. A sender has 5 seconds for its frame, 64 are heard at once, and
 *     none holds up the others; while there are 64 that say nothing, the next one waits for that
 *     time. Without a free descriptor the receiver tries again ten times a second.
 *  5. Threads. One thread for each receiver, and any number of receivers, beside ClientInit, each
 *     at its own path. start() and stop() may be called from any thread. Reports come one at a
 *     time, those of one sender in their order. After stop() no callback runs or begins, and those
 *     that it had not reached are lost. Called in the callback, stop() returns at once, and the
 *     receiver ends when the callback returns; its thread is given back by the next start(), stop()
 *     or the destructor, which do not belong in the callback.
 *  6. Stack. 512 KB for the thread, of which a callback that parses needs 220 KB.
 *  7. Signals. All are blocked on the thread; the starter's mask stays.
 *  8. Processes. No descriptor survives exec. A child that was forked has no receiver: stop() there
 *     closes its descriptors and leaves the parent's socket alone. So daemon() first, then start().
 *     Only who may write to the socket's file can send: its mode is 0600 unless told otherwise.
 */
#ifndef QALT_AT_REPORT_RECEIVER_HPP
#define QALT_AT_REPORT_RECEIVER_HPP

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "qalt_at/detail/delivery.hpp"
#include "qalt_at/detail/listening_socket.hpp"
#include "qalt_at/detail/report.hpp"
#include "qalt_at/detail/result.hpp"
#include "qalt_at/link.h"

namespace qalt {

class ReportReceiver {
 public:
  using Callback = std::function<void(const Report&)>;

  ReportReceiver() = default;
  ~ReportReceiver() { stop(); }
  ReportReceiver(const ReportReceiver&) = delete;
  ReportReceiver& operator=(const ReportReceiver&) = delete;

  /* Listens at `path`, with this mode of its file. One that listens already is to be stopped first,
   * and may then be started anew. */
  Result<Done> start(const std::string& path, Callback callback, mode_t mode = 0600);
  /* Ends the thread, and waits for a callback under way; without effect on one that has ended. */
  void stop();

 private:
  using Lock = std::lock_guard<std::mutex>;

  /* A connection, and as much of its frame as has come. */
  struct Sender {
    int descriptor;
    int64_t end; /* of its time, by now_ms() */
    size_t received = 0;
    AtMsg frame = {};
  };
  static constexpr size_t kMostSenders = 64;
  static constexpr int64_t kSenderMs = 5000;
  static constexpr int64_t kPauseMs = 100;
  static constexpr size_t kStackSize = 512 * 1024;

  static Error refused(const std::string& what) { return {Cause::kUsage, what, ""}; }
  static void* run(void* self) {
    static_cast<ReportReceiver*>(self)->serve();
    return nullptr;
  }
  bool on_its_thread() const { return pthread_equal(serving_.load(), pthread_self()) != 0; }
  bool start_thread();
  void ask_to_end();
  void finish();
  void release(bool remove);

  void serve();
  bool wait(const std::list<Sender>& senders, int64_t accept_from) const;
  bool hear(Sender& sender) const;
  int64_t accept_senders(std::list<Sender>& senders) const;
  void hand_on(const AtMsg& frame) const;

  std::mutex mutex_; /* of all that the callback's thread does not touch */
  bool running_ = false;
  pid_t process_ = 0;
  pthread_t thread_{};
  Callback callback_;
  detail::ListeningSocket socket_;
  int wake_[2] = {-1, -1};                      /* the second is shut down to end the thread */
  std::atomic<bool> ending_{false};             /* so that no further callback begins */
  std::atomic<pthread_t> serving_{pthread_t{}}; /* the thread, as long as it serves */
};

inline Result<Done> ReportReceiver::start(const std::string& path, Callback callback, mode_t mode) {
  if (on_its_thread()) return refused("a receiver cannot be started by its own callback");
  const Lock lock(mutex_);
  if (!callback) return refused("a receiver without a callback");
  if (running_ && process_ == getpid() && !ending_) {
    return refused("the receiver listens already: stop() first");
  }
  finish();
  if (Result<Done> opened = socket_.open(path, mode); !opened) return opened;
  callback_ = std::move(callback);
  process_ = getpid();
  running_ = socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, wake_) == 0 && start_thread();
  if (running_) return Done{};
  release(true);
  return refused("no thread or no descriptor for the receiver");
}

inline void ReportReceiver::stop() {
  if (on_its_thread()) return ask_to_end();
  const Lock lock(mutex_);
  finish();
}

/* A new thread has its starter's signal mask. */
inline bool ReportReceiver::start_thread() {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setstacksize(&attributes, kStackSize);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  const int error = pthread_create(&thread_, &attributes, run, this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  return error == 0;
}

/* The pair is shared with a child that was forked: there it stays open. */
inline void ReportReceiver::ask_to_end() {
  ending_ = true;
  if (process_ == getpid()) shutdown(wake_[1], SHUT_RDWR);
}

inline void ReportReceiver::finish() {
  if (!running_) return;
  const bool own = process_ == getpid();
  ask_to_end();
  if (own) pthread_join(thread_, nullptr);
  release(own);
}

inline void ReportReceiver::release(bool remove) {
  socket_.close(remove);
  for (int& end : wake_) {
    if (end != -1) close(std::exchange(end, -1));
  }
  callback_ = nullptr;
  serving_ = pthread_t{};
  ending_ = false;
  running_ = false;
}

inline void ReportReceiver::serve() {
  serving_ = pthread_self();
  std::list<Sender> senders; /* in the order in which they came */
  int64_t accept_from = 0;
  while (wait(senders, accept_from)) {
    for (auto sender = senders.begin(); sender != senders.end();) {
      if (hear(*sender)) {
        ++sender;
        continue;
      }
      close(sender->descriptor);
      sender = senders.erase(sender);
    }
    accept_from = accept_senders(senders);
  }
  socket_.close(true);
  for (const Sender& sender : senders) close(sender.descriptor);
  serving_ = pthread_t{};
}

/* Waits until there is something to do; false when it is to end. */
inline bool ReportReceiver::wait(const std::list<Sender>& senders, int64_t accept_from) const {
  const int64_t now = detail::now_ms();
  const bool pausing = accept_from > now;
  int64_t next = pausing ? accept_from : INT64_MAX;
  std::vector<pollfd> waits = {{wake_[0], POLLIN, 0}};
  if (!pausing && senders.size() < kMostSenders) waits.push_back({socket_.descriptor(), POLLIN, 0});
  for (const Sender& sender : senders) {
    waits.push_back({sender.descriptor, POLLIN, 0});
    next = std::min(next, sender.end);
  }
  const int64_t left = std::max<int64_t>(next - now, 0);
  const int timeout = next == INT64_MAX ? -1 : static_cast<int>(left);
  const int ready = poll(waits.data(), static_cast<nfds_t>(waits.size()), timeout);
  if (ready == -1) poll(nullptr, 0, int{kPauseMs}); /* no memory: it may come back */
  return waits[0].revents == 0 && !ending_;
}

/* Takes what has come, and hands on a frame that is whole or was ended. False when the connection
 * is over. */
inline bool ReportReceiver::hear(Sender& sender) const {
  char* const bytes = reinterpret_cast<char*>(&sender.frame);
  ssize_t count = 1;
  while (count > 0 && sender.received < sizeof sender.frame) {
    count = recv(sender.descriptor, bytes + sender.received, sizeof sender.frame - sender.received,
                 MSG_DONTWAIT);
    if (count > 0) sender.received += static_cast<size_t>(count);
  }
  if (count == -1 && errno == EAGAIN) return detail::now_ms() < sender.end;
  if (count != -1) hand_on(sender.frame);
  return false;
}

/* Gives the time from which on the next one can be accepted. */
inline int64_t ReportReceiver::accept_senders(std::list<Sender>& senders) const {
  while (senders.size() < kMostSenders) {
    const int descriptor = accept4(socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor == -1) return errno == EAGAIN ? 0 : detail::now_ms() + kPauseMs;
    senders.push_back({descriptor, detail::now_ms() + kSenderMs});
  }
  return 0;
}

inline void ReportReceiver::hand_on(const AtMsg& frame) const {
  const size_t length = strnlen(frame.aucDataBuf, sizeof frame.aucDataBuf);
  if (length == 0 || ending_) return;
  callback_(detail::report_of(std::string(frame.aucDataBuf, length)));
}

} /* namespace qalt */

#endif /* QALT_AT_REPORT_RECEIVER_HPP */
