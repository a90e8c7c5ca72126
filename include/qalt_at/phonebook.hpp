/*
 * phonebook.hpp - the SIM phonebook for C++ clients: UTF-8 texts, and no contact lost. Header-only,
 * C++17, on top of libqalt_at; compiles with -fno-exceptions -fno-rtti.
 *
 *   qalt::Phonebook book;
 *   if (auto info = book.open({}); !info) return complain(info.error());
 *   auto all = book.read_all();
 *   qalt::Contact friend_of_mine;
 *   friend_of_mine.name = "Ελένη";
 *   friend_of_mine.number = "+302105550123";
 *   auto stored = book.add(friend_of_mine);
 *
 * Conventions of this header:
 *  1. Results. Every call gives a Result: a value, or an Error with its class (Cause), what
 *     happened, what to do, and what became of the change that was asked for (Fate): not done,
 *     done as far as the modem says, or unknown. Nothing is thrown.
 *  2. No contact is lost. add() reads the whole phonebook first and takes an index only where that
 *     read found no contact and none unreadable, and where the modem, asked once more, gives none.
 *     Empty means: an answer without contact, "not found", "invalid index"; and ERROR alone, once
 *     as many contacts are found as the modem counts before and after that read: while one is
 *     missing, every index that it refuses may hold it, and is named as unreadable. (Two changes
 *     by others that leave the number as it was hide from that.) No lock keeps another client from
 *     writing there in between. A write that was answered with OK, with nothing or with something
 *     unreadable is read back and compared field by field; what is read decides, whatever became of
 *     the answer. So it is with a delete: after OK, any code but that of a busy card or of
 *     an absent modem means that it is gone, and ERROR if the number of contacts says so; after no
 *     answer only an answer without contact, "not found" and "invalid index" do. Where the look
 *     fails as well, the fate of an unanswered change is unknown: put() and erase() may be called
 *     again, before add() look first. A text that does
 *     not fit is refused with the length it may have; no text is cut.
 *  3. Ownership. Everything is a value. The functions of Options are called on the calling thread.
 *  4. Sizes and units. Texts are UTF-8 with characters up to U+FFFF, the most that a SIM stores; a
 *     character above that, stored by a modem that takes UTF-16, is read, and written only with
 *     Limits::kSendable, as it was.
 *  5. Threads. One phonebook is open in a process, since the library's phonebook state is the
 *     process's; a second one is refused, also in another shared object, unless its linking hides
 *     this header's variables. Its calls may come from any thread and are serialised.
 *  6. Stack. 512 KB on the calling thread.
 *  7. The modem. The storage is selected for each call, and with the standard commands the
 *     character set UCS2; before it returns, IRA is selected again, if the AT server is there:
 *     which set there was before, and what the modem says to it, is not asked. A Job around several
 *     calls does so once for all. Signals interrupt no command. A modem or a server that goes away
 *     ends a call with kNoAnswer, unless it is back within Options::away_seconds: then the storage
 *     and the set are selected anew and the call goes on.
 *     Nothing is sent to a server of another user than root, one's own and Options::server_user.
 *     One command takes at most its time-out (5 to 20 seconds, one a index where that is more),
 * five minutes for what the server has to do first, and two for the turn behind other clients; then
 *     it counts as unanswered. Options::stop is heard within half a second, and the call ends
 * within two more, which the set is put back in; a change on its way, and the look at it, are
 * awaited.
 *  8. Further parameters. What a modem has behind a contact's name (Contact::further) is read,
 *     written and compared with the rest: change() keeps it; add() and put() write what the contact
 *     says, so that put() without it clears what stood there, as 3GPP TS 27.007 has it. A modem
 *     that refuses it refuses the write, and the old contact stays; one that drops it is found out
 *     by the read-back. The vendors' commands have none, and a contact with it is refused there.
 */
#ifndef QALT_AT_PHONEBOOK_HPP
#define QALT_AT_PHONEBOOK_HPP

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "qalt_at/commands.h"
#include "qalt_at/detail/contact.hpp"
#include "qalt_at/detail/discovery.hpp"
#include "qalt_at/detail/exchange.hpp"
#include "qalt_at/detail/range_reader.hpp"
#include "qalt_at/detail/result.hpp"
#include "qalt_at/detail/wire_contact.hpp"
#include "qalt_at/phonebook.h"

namespace qalt {

struct Reading {
  std::vector<Contact> contacts; /* by index */
  std::vector<Unreadable> unreadable;
  int missing = 0; /* contacts that the modem counts and no index gives; of all indices only */
};

namespace detail {

/* The engine's state is the process's, and so are these, whatever a client hides of itself. */
[[gnu::visibility("default")]] inline std::recursive_mutex g_phonebook_mutex;
[[gnu::visibility("default")]] inline const void* g_open_phonebook = nullptr;

} /* namespace detail */

class Phonebook {
 public:
  Phonebook() = default;
  ~Phonebook() {
    const Lock lock(detail::g_phonebook_mutex);
    if (detail::g_open_phonebook == this) detail::g_open_phonebook = nullptr;
  }
  Phonebook(const Phonebook&) = delete;
  Phonebook& operator=(const Phonebook&) = delete;

  /*
   * Finds out what the phonebook is like. To be called first; again for other options. kNoAnswer
   * without an AT server or a modem, at once; a card that is still starting is waited for. A card
   * that answers ERROR is asked which PIN it waits for, and the error names it. The C functions of
   * phonebook.h find out for themselves: QL_getPhonebookInfo.
   */
  Result<Info> open(Options options);
  /* As it is known; waits for another thread's call or job. */
  Info info() const {
    const Lock lock(detail::g_phonebook_mutex);
    return info_;
  }

  /*
   * Keeps the storage and the character set selected over several calls, which other threads'
   * calls wait for. result() says whether the modem took the selection: without it every call
   * inside fails with the same error, and nothing is sent.
   */
  class Job {
   public:
    explicit Job(Phonebook& book) : book_(book), lock_(detail::g_phonebook_mutex) {
      if (book_.depth_++ == 0) book_.selected_ = book_.begin();
      result_ = book_.selected_;
    }
    ~Job() {
      if (--book_.depth_ == 0) book_.end();
    }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    const Result<Done>& result() const { return result_; }

   private:
    Phonebook& book_;
    std::lock_guard<std::recursive_mutex> lock_;
    Result<Done> result_ = Done{};
  };

  /* The contacts from index nFirst to nLast; those of all indices. */
  Result<Reading> read(int nFirst, int nLast);
  Result<Reading> read_all() { return read(info_.first, info_.last); }
  /* One contact; kNotFound when the index is empty. */
  Result<Contact> get(int nIndex);
  /* Whether an index holds a contact: right before a write to a free index. One command, unless the
   * modem refuses: then the contacts are counted, and read if need be. kRefused where that does not
   * tell. */
  Result<bool> holds(int nIndex);

  /* Whether a contact could be written, as far as that can be told without the modem; waits as
   * info() does. */
  Result<Done> check(const Contact& contact, Limits limits = Limits::kAnnounced) const;
  /* The command lines that put() and erase() send for a contact that passes check(). */
  std::string write_line(const Contact& contact, Limits limits = Limits::kAnnounced) const;
  std::string erase_line(int nIndex) const { return detail::erase_line(info().family, nIndex); }

  /*
   * Writes a new contact, at its index or at the lowest free one. kUsage when the index is occupied
   * or could not be read, kCollision when another client was faster, kFull without a free one.
   * Gives the contact as it is stored now.
   */
  Result<Contact> add(const Contact& contact);
  /* Writes a contact at its index, whatever stands there; with Over::kNothing at one that holds()
   * has just called empty: kCollision when that is no longer so once a busy card or an absent modem
   * takes the write. With kSendable one that stood in a phonebook once: what is too much for this
   * one its modem refuses. */
  Result<Contact> put(const Contact& contact, Limits limits = Limits::kAnnounced,
                      Over over = Over::kAnything);
  /* Changes some fields of a contact; the others keep the very digits that the modem gave. */
  Result<Contact> change(int nIndex, const Changes& changes);
  /* Deletes; an empty index is no error. */
  Result<Done> erase(int nIndex);
  /* The numbers of used and of all places, asked anew. */
  Result<Info> counts();

 private:
  using Lock = std::lock_guard<std::recursive_mutex>;

  Result<Done> begin();
  void end();
  Error wrong_index(int index) const;
  Result<detail::WireReading> read_some(int first, int last);
  Result<detail::WireReading> read_whole();
  Result<detail::WireContact> get_wire(int index);
  Result<detail::WireContact> wire_of(const Contact& contact, Limits limits) const;
  Result<int> free_index(int wanted);
  detail::Answer look_at(int index) const;
  Result<std::optional<bool>> holds_by_count(int index);
  Result<bool> holds_contact(int index);
  Result<Contact> write(const detail::WireContact& wire, const Contact* old, Over over);
  static void remember(const detail::WireContact& wire);
  static void remember(const detail::WireReading& reading);

  Options options_;
  detail::Link link_{options_};
  Info info_;
  int depth_ = 0;                  /* jobs inside each other */
  Result<Done> selected_ = Done{}; /* what the outermost one came to */
  bool switched_ = false;          /* the character set is to be put back */
  /* The indices that hold a contact, and none is missing: of this job, as far as it knows. */
  std::optional<std::set<int>> known_;
};

} /* namespace qalt */

#include "qalt_at/detail/phonebook_reading.hpp"
#include "qalt_at/detail/phonebook_writing.hpp"

#endif /* QALT_AT_PHONEBOOK_HPP */
