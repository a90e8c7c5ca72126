// client_settings.h - the modem's character set, storage and error classes, as each client process
// left them.
//
// A modem has one of each, and every client changes them around each of its jobs. The server
// remembers what each process selected last and puts it back before a command that acts on it when
// another process has selected something else since. A process that selected nothing gets what
// stood before anybody did. Only processes that select are remembered; where they are too many,
// those that have ended go first. Pure: no I/O.
#ifndef QALT_SERVER_CLIENT_SETTINGS_H_
#define QALT_SERVER_CLIENT_SETTINGS_H_

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "server/peer.h"

namespace qalt::server {

class ClientSettings {
 public:
  // `runs` tells whether a process has not ended.
  explicit ClientSettings(std::function<bool(const Peer&)> runs) : runs_(std::move(runs)) {}

  // Whether `line` selects a set or a storage, or acts on one: only a client that is known may.
  static bool touched_by(std::string_view line);
  // The command that the modem has to carry out before `line` of `peer`, none when it is ready.
  // Ask again after each.
  std::optional<std::string> before(const Peer& peer, std::string_view line);
  // The last command of before() was answered. False where the line must not be sent.
  bool prepared(std::string_view answer, bool ok);
  // The line of a client was answered.
  void carried_out(const Peer& peer, std::string_view line, bool ok);
  // The line of a client got no answer: what it selects is wanted all the same, since a client that
  // goes on regardless means its next texts in that set.
  void unanswered(const Peer& peer, std::string_view line);
  // The answer to a client's line. An ERROR without a class where others had one makes before() ask
  // which is selected.
  void answered(std::string_view answer);
  // Whether that was another than the one selected: the modem has begun anew without a word.
  bool gone() { return std::exchange(gone_, false); }
  // Whether `line` acts on what the peer selected and nobody knows any more: there was no place for
  // it; or, if it is `older` than this server, the one before knew it. Says so once for a peer, and
  // not after it has selected anew.
  bool forgotten(const Peer& peer, std::string_view line, bool older);
  // A line of the server's own start sequence was answered: what it selects is for everybody.
  void initialised(std::string_view line, bool ok);
  // What the modem has selected is not known any more: a time-out, a reset.
  void lost();
  // The port was opened anew; what everybody starts from is asked again.
  void reopened();

  static constexpr size_t kSettings = 3;
  static constexpr size_t kMostPeers = 256;
  // Of those that had to go and run on.
  static constexpr size_t kMostEvicted = 1024;

 private:
  using Values = std::array<std::optional<std::string>, kSettings>;
  struct PeerValues {
    Values values;
    uint64_t used = 0;
  };
  void remember(const Peer& peer, const Values& values);
  bool is_dropped(const Peer& peer) const;
  void make_place();
  void apply(std::string_view line, bool ok, Values& chosen);

  Values current_;
  Values initial_;
  std::array<bool, kSettings> asked_{};
  size_t preparing_ = 0;                       // the setting that before() was about
  std::optional<std::string> prepared_value_;  // what it selects, none where it asks
  bool classes_ = false;                       // errors have one
  bool doubted_ = false;
  bool gone_ = false;
  std::function<bool(const Peer&)> runs_;
  std::map<Peer, PeerValues> peers_;
  std::map<Peer, std::array<bool, kSettings>> evicted_;  // which of its selections are not known
  Peer dropped_;         // the latest of those that are in neither any more
  std::set<Peer> told_;  // older ones, by forgotten()
  uint64_t uses_ = 0;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_CLIENT_SETTINGS_H_
