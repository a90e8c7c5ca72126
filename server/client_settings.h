// client_settings.h - the modem's character set, storage and error classes, as each client process
// left them.
//
// A modem has one of each, and every client changes them around each of its jobs. The server
// remembers what each process selected last and puts it back before a command that acts on it when
// another process has selected something else since. A process that selected nothing gets what
// stood before anybody did. Pure: no I/O.
#ifndef QALT_SERVER_CLIENT_SETTINGS_H_
#define QALT_SERVER_CLIENT_SETTINGS_H_

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qalt::server {

// A client process. Its start time tells it from a later one with the same number.
struct Peer {
  int64_t process = 0;
  uint64_t started = 0;
  auto operator<=>(const Peer&) const = default;
};

class ClientSettings {
 public:
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
  // Whether what `line` reads or writes depends on the set or the storage.
  static bool matter_to(std::string_view line);
  // Whether `line` of a peer that worked with a server before this one has texts in a set that only
  // that one knew. Says so once for a peer, and not after it has selected a set.
  bool forgotten(const Peer& peer, std::string_view line);
  // A line of the server's own start sequence was answered: what it selects is for everybody.
  void initialised(std::string_view line, bool ok);
  // What the modem has selected is not known any more: a time-out, a reset.
  void lost();
  // The port was opened anew; what everybody starts from is asked again.
  void reopened();

  static constexpr size_t kSettings = 3;
  static constexpr size_t kMostPeers = 256;

 private:
  using Values = std::array<std::optional<std::string>, kSettings>;
  struct PeerValues {
    Values values;
    uint64_t used = 0;
    bool told = false;  // by forgotten()
  };
  PeerValues& values_of(const Peer& peer);
  void apply(std::string_view line, bool ok, Values& chosen);

  Values current_;
  Values initial_;
  std::array<bool, kSettings> asked_{};
  size_t preparing_ = 0;                       // the setting that before() was about
  std::optional<std::string> prepared_value_;  // what it selects, none where it asks
  bool classes_ = false;                       // errors have one
  bool doubted_ = false;
  bool gone_ = false;
  std::map<Peer, PeerValues> peers_;
  uint64_t uses_ = 0;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_CLIENT_SETTINGS_H_
