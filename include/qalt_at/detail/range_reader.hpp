/*
 * range_reader.hpp - reads a range of contacts in steps that the modem and the answer frame take.
 *
 * A step that fails is halved down to single indices, so one bad entry costs only itself. The
 * reading ends where nothing can be sent, and after three commands in a row without an answer, or
 * one where a single index is asked for. An index that gave no contact is named as
 * unreadable, or taken for empty: where its step was answered with OK and no contact or with "not
 * found", where it said "invalid index", and where it says ERROR alone although asked again. For
 * the last the modem's count decides: if fewer contacts were found than it counts, all such indices
 * are unreadable. A count that is too low, or none, hides a contact behind ERROR.
 */
#ifndef QALT_AT_DETAIL_RANGE_READER_HPP
#define QALT_AT_DETAIL_RANGE_READER_HPP

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "qalt_at/detail/exchange.hpp"
#include "qalt_at/detail/wire_contact.hpp"

namespace qalt {

/* How a client wants its phonebook handled. */
struct Options {
  int platform = PB_PLATFORM_DEFAULT;
  int wait_seconds = 10;                             /* for a card that is still starting */
  int away_seconds = 0;                              /* for a modem or a server that is away */
  std::function<bool()> stop;                        /* asked between commands and while an answer
                                                        to a read is awaited: end early? */
  std::function<void(int nDone, int nAll)> progress; /* indices read so far */
  uid_t server_user = 0; /* whose AT server is trusted beside root's and one's own */
  std::function<void()> pause = [] { ::sleep(1); }; /* lets a second pass */
};

/* An index whose contact could not be read, and why. */
struct Unreadable {
  int index;
  std::string why;
};

namespace detail {

constexpr uint32_t kSelectTimeoutMs = 5000;

/*
 * Sends commands, giving a busy card and an absent modem the time that the client grants. After a
 * command without an answer, and after a busy card, nobody knows what is selected - the modem or
 * the AT server may have started anew - so the selection is made again before the next command,
 * which without it is not sent.
 */
class Link {
 public:
  explicit Link(const Options& options) : options_(options) {}

  /* While one exists, the client's wish to stop has to wait: a change and the look at what became
   * of it are one. kAnswers: not between attempts, while a busy card is waited for. */
  class Whole {
   public:
    enum What { kAnswers, kAll };
    Whole(Link& link, What what)
        : flag_(what == kAll ? link.whole_ : link.whole_answers_),
          before_(std::exchange(flag_, true)) {}
    ~Whole() { flag_ = before_; }
    Whole(const Whole&) = delete;
    Whole& operator=(const Whole&) = delete;

   private:
    bool& flag_;
    bool before_;
  };

  /* The command lines that select what the next commands work on; none at the end of a job. */
  void keep_selected(std::vector<std::string> lines) {
    selection_ = std::move(lines);
    doubtful_ = false;
  }

  bool stopped() const { return !whole_ && options_.stop && options_.stop(); }
  void pause() const { options_.pause(); }
  void progress(int done, int all) const {
    if (options_.progress) options_.progress(done, all);
  }

  /* `starting`: whether ERROR, too, is what a card says that is still starting. `again`, if there
   * is one, is asked whether the line may still be sent, each time before it is sent once more. */
  Answer send(const std::string& line, uint32_t timeout_ms, std::string_view prefix = {},
              bool starting = false, const std::function<bool()>& again = {}) const {
    for (int waited = 0;; ++waited) {
      Answer answer = attempt(line, timeout_ms, prefix);
      const bool early = answer.busy() || (starting && answer.reply == Reply::kError);
      const bool crowded = answer.reply == Reply::kNoServer && answer.cause == EAGAIN;
      const bool absent = answer.away() || answer.reply == Reply::kNoServer ||
                          (answer.of_selection && answer.reply == Reply::kLost);
      const int patience = early     ? options_.wait_seconds
                           : crowded ? std::max(options_.wait_seconds, options_.away_seconds)
                           : absent  ? options_.away_seconds
                                     : 0;
      answer.interrupted = answer.interrupted || (waited < patience && stopped());
      if (waited >= patience || answer.interrupted) return answer;
      pause();
      if (again && !again()) return answer;
    }
  }

  /* The same for a line that changes nothing: where no answer came, it is sent once more, if the
   * modem or the server may be back by then. */
  Answer ask(const std::string& line, uint32_t timeout_ms, std::string_view prefix = {},
             bool starting = false) const {
    Answer answer = send(line, timeout_ms, prefix, starting);
    const bool again = answer.reply == Reply::kLost ||
                       (answer.reply == Reply::kSilent && options_.away_seconds > 0);
    if (again && !stopped()) answer = send(line, timeout_ms, prefix, starting);
    return answer;
  }

 private:
  Answer attempt(const std::string& line, uint32_t timeout_ms, std::string_view prefix) const {
    for (const std::string& selection : selection_) {
      if (!doubtful_) break;
      Answer answer = exchange(selection, kSelectTimeoutMs, {}, terms());
      answer.of_selection = true;
      if (!answer.ok()) return answer;
    }
    const Answer answer = exchange(line, timeout_ms, prefix, terms());
    /* A modem that has restarted says ERROR at first, and has the defaults selected. */
    doubtful_ = answer.untold() || !answer.sent() || answer.busy() || answer.reply == Reply::kError;
    return answer;
  }

  Terms terms() const {
    return {whole_ || whole_answers_ ? Stop() : options_.stop, options_.server_user};
  }

  const Options& options_;
  std::vector<std::string> selection_;
  bool whole_ = false;
  bool whole_answers_ = false;
  mutable bool doubtful_ = false;
};

constexpr const char* kRefusedWhy = "the modem answered ERROR";

inline bool by_index(const Unreadable& a, const Unreadable& b) {
  return a.index < b.index;
}

inline std::string read_job(int index) {
  return "read index " + std::to_string(index);
}

struct WireReading {
  std::map<int, WireContact> contacts;
  std::vector<Unreadable> unreadable;
  int missing = 0;          /* contacts that the modem counts and no index gives */
  std::vector<int> refused; /* answered ERROR, and empty if the number of contacts says so */
};

class RangeReader {
 public:
  RangeReader(const Link& link, Family family, TextForm form)
      : link_(link), family_(family), form_(form) {}

  /* Reads first to last. `used`: how many contacts there are, where the range is all of the
   * phonebook, else kUncounted. `again`: whether refused indices are asked again. */
  Result<WireReading> read(int first, int last, int used = kUncounted, bool again = true) {
    used_ = used;
    Result<Done> done = walk(first, last);
    if (done && again) done = ask_refused_again();
    if (done && used >= 0) done = ask_one_by_one(first, last);
    if (!done) return done.error();
    /* Too few contacts were found: any of these may hold a missing one, so none is left out. */
    if (used >= 0 && !found_all()) {
      for (const int index : std::exchange(reading_.refused, {})) note(index, kRefusedWhy);
      reading_.missing =
          std::max(0, used - found() - static_cast<int>(reading_.unreadable.size()) + garbled_);
    }
    std::sort(reading_.unreadable.begin(), reading_.unreadable.end(), by_index);
    return std::move(reading_);
  }

 private:
  struct Range {
    int first, last;
    int size() const { return last - first + 1; }
  };

  /* 20 indices are taken by every modem; 100 is what the largest answers hold. */
  static constexpr int kFirstStep = 20;
  static constexpr int kLargestStep = 100;
  static constexpr int kMostSilent = 3;
  static constexpr int kRetries = 3;

  int found() const { return static_cast<int>(reading_.contacts.size()) + garbled_; }
  bool found_all() const { return used_ >= 0 && found() >= used_; }
  void note(int index, const std::string& why) { reading_.unreadable.push_back({index, why}); }

  Result<Done> walk(int first, int last) {
    std::vector<Range> halves; /* the parts of failed steps, the next one on top */
    int step = kFirstStep;
    int largest = kLargestStep;
    for (int next = first; !halves.empty() || next <= last;) {
      if (link_.stopped()) return interrupted(halves.empty() ? next : halves.back().first);
      Range range{next, next + std::min(step, last - next + 1) - 1};
      const bool fresh = halves.empty();
      if (fresh) {
        next = range.last + 1;
      } else {
        range = halves.back();
        halves.pop_back();
      }
      const Answer answer = ask(range);
      const bool silent = answer.reply == Reply::kSilent || answer.reply == Reply::kLost;
      silent_ = silent ? silent_ + 1 : 0;
      if (!answer.sent() || silent_ == kMostSilent || (silent && first == last)) {
        return lost(answer, first, last);
      }
      if (take(answer, range)) {
        if (fresh) step = std::min(2 * step, largest);
      } else if (range.size() > 1) {
        const int middle = range.first + (range.size() - 1) / 2;
        halves.push_back({middle + 1, range.last});
        halves.push_back({range.first, middle});
        /* The server's word for an answer that does not fit a frame; later steps stay below. */
        if (answer.code == kTextTooLong) largest = std::min(largest, (range.size() + 1) / 2);
        step = std::min(kFirstStep, largest);
      } else {
        give_up(answer, range.first);
      }
      tell(halves.empty() ? next : halves.back().first, first, last);
    }
    return Done{};
  }

  Result<Done> ask_alone(int index) {
    if (link_.stopped()) return interrupted(index);
    const Range range{index, index};
    const Answer answer = ask(range);
    if (!answer.sent()) return lost(answer, index, index);
    if (!take(answer, range)) give_up(answer, index);
    return Done{};
  }

  /* A lone ERROR is said by modems for an empty index, and by a card that is not ready. */
  Result<Done> ask_refused_again() {
    for (int round = 0; round < kRetries && !reading_.refused.empty() && !found_all(); ++round) {
      link_.pause();
      const std::vector<int> again = std::exchange(reading_.refused, {});
      for (const int index : again) {
        const Result<Done> done = ask_alone(index);
        if (!done) return done;
      }
    }
    return Done{};
  }

  /* An answer may have lost lines on its way, and a modem may cap what it gives at once: where
   * contacts are missing, those that gave none are asked for alone. */
  Result<Done> ask_one_by_one(int first, int last) {
    std::set<int> told(reading_.refused.begin(), reading_.refused.end());
    for (const Unreadable& gap : reading_.unreadable) told.insert(gap.index);
    for (const auto& [index, contact] : reading_.contacts) told.insert(index);
    for (int index = first; index <= last && !found_all(); ++index) {
      if (!told.insert(index).second) continue;
      const Result<Done> done = ask_alone(index);
      if (!done) return done;
    }
    return Done{};
  }

  /* A single index is no work to report on. */
  void tell(int next, int first, int last) const {
    if (last > first) link_.progress(next - first, last - first + 1);
  }

  Answer ask(const Range& range) const {
    return link_.ask(read_line(family_, range.first, range.last),
                     read_timeout_ms(family_, range.first, range.last), row_of(family_).prefix);
  }

  /* Takes the contacts of an answer; false when the range has to be asked in parts. */
  bool take(const Answer& answer, const Range& range) {
    const bool empty = answer.code == kNotFound && answer.reply == Reply::kCode;
    if (answer.reply == Reply::kError && found_all()) {
      for (int index = range.first; index <= range.last; ++index) reading_.refused.push_back(index);
      return true;
    }
    if (empty) return true;
    if (!answer.ok()) return false;
    std::vector<WireContact> contacts;
    if (!answer.payload.empty()) {
      for (const std::string& line : split_outside_quotes(answer.payload, ";")) {
        auto contact = read_answer_line(family_, line);
        if (!contact || contact->index < range.first || contact->index > range.last) return false;
        contacts.push_back(std::move(*contact));
      }
    }
    /* Stray quotes can hide line ends, and with them whole lines. */
    if (contacts.size() != answer.lines) return false;
    for (WireContact& contact : contacts) {
      const int index = contact.index;
      const auto readable = contact_of(contact, form_);
      if (!readable) {
        note(index, readable.error().what);
        ++garbled_;
      } else {
        reading_.contacts.insert_or_assign(index, std::move(contact));
      }
    }
    return true;
  }

  void give_up(const Answer& answer, int index) {
    if (answer.reply == Reply::kError) {
      reading_.refused.push_back(index);
    } else if (answer.code != kInvalidIndex) {
      note(index, answer.ok() ? "its answer cannot be read" : describe(answer));
      if (answer.lines != 0) ++garbled_;
    }
  }

  static Error lost(const Answer& answer, int first, int last) {
    return failure(answer, first < last ? "read the phonebook" : read_job(first));
  }
  static Error interrupted(int index) {
    return {Cause::kInterrupted, "interrupted before index " + std::to_string(index) + " was read",
            ""};
  }

  const Link& link_;
  Family family_;
  TextForm form_;
  int used_ = kUncounted;
  int silent_ = 0;
  int garbled_ = 0; /* contacts that stand there and cannot be read */
  WireReading reading_;
};

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_RANGE_READER_HPP */
