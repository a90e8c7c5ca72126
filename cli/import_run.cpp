#include "cli/import_run.h"

#include <chrono>
#include <utility>

#include "cli/failure.h"
#include "cli/output.h"
#include "cli/write_turn.h"

namespace qalt::cli {
namespace {

constexpr std::chrono::seconds kFresh{5};
constexpr int kLooksAgain = 2;

class Writer {
 public:
  Writer(Phonebook& book, const ImportPlan& plan, Tally& tally)
      : book_(book), limits_(plan.limits), spare_(plan.spare), tally_(tally) {}

  // Where the contact came to stand, or was to, is in `contact`.
  Result<Done> write(const PlannedWrite& planned, Contact& contact) {
    for (bool once_more = true;;) {
      const WriteTurn turn;
      if (planned.overwritten.empty()) {
        const auto occupant = fresh_look(contact.index);
        if (!occupant) return occupant.error();
        if (*occupant && says_all(**occupant, contact)) {
          ++tally_.met;
          return Done{};
        }
        if (*occupant) {
          if (planned.movable && move(contact)) continue;
          return taken(contact.index, **occupant);
        }
      }
      const auto stored = book_.put(contact, limits_,
                                    planned.overwritten.empty() ? Over::kNothing : Over::kAnything);
      if (stored) {
        ++tally_.written;
        return Done{};
      }
      // Not answered and, as a look has shown, not stored: the modem is there.
      const Error& error = stored.error();
      if (error.cause == Cause::kNoAnswer && error.fate == Fate::kNotDone &&
          std::exchange(once_more, false)) {
        continue;
      }
      if (!planned.movable || !overwritten_at_once(stored.error(), contact) || !move(contact)) {
        return stored.error();
      }
    }
  }

 private:
  // What stands at an index that was free when the import was planned.
  Result<std::optional<Contact>> occupant_of(int index) {
    const auto holds = book_.holds(index);
    if (!holds) return holds.error();
    if (!*holds) return std::optional<Contact>();
    auto contact = book_.get(index);
    if (!contact) return contact.error();
    return std::optional<Contact>(std::move(*contact));
  }

  // A process that was stopped goes on with an old look, while others may have stopped waiting for
  // its turn. Where every look is old the modem is slow.
  Result<std::optional<Contact>> fresh_look(int index) {
    for (int again = kLooksAgain;; --again) {
      const auto begin = std::chrono::steady_clock::now();
      auto occupant = occupant_of(index);
      if (again == 0 || std::chrono::steady_clock::now() - begin < kFresh) return occupant;
    }
  }

  // A contact of neither this name nor this number is no work of the modem's on ours.
  bool overwritten_at_once(const Error& error, const Contact& contact) {
    if (error.cause != Cause::kDiffers) return false;
    const auto found = book_.get(contact.index);
    return found && found->name != contact.name && found->number != contact.number;
  }

  bool move(Contact& contact) {
    if (next_spare_ == spare_.size()) return false;
    contact.index = spare_[next_spare_++];
    return true;
  }

  static Error taken(int index, const Contact& occupant) {
    return {Cause::kCollision,
            "another client has just stored " + label_of(occupant) + " at index " +
                std::to_string(index) + ", which was free",
            "import again"};
  }

  Phonebook& book_;
  const Limits limits_;
  const std::vector<int>& spare_;
  size_t next_spare_ = 0;
  Tally& tally_;
};

}  // namespace

void carry_out(Context& context, const ImportPlan& plan, Tally& tally) {
  Phonebook& book = context.book();
  const Phonebook::Job job(book);
  tally.rest.left = plan.deletes.size() + plan.writes.size();
  take(job.result());
  for (const int index : plan.deletes) {
    const auto erased = book.erase(index);
    if (erased) ++tally.deleted;
    if (!context.goes_on(erased, index, tally.rest)) return;
  }
  Writer writer(book, plan, tally);
  for (const PlannedWrite& write : plan.writes) {
    Contact contact = write.contact;
    const auto written = writer.write(write, contact);
    if (!context.goes_on(written, contact.index, tally.rest)) return;
    context.progress("writing " + std::to_string(tally.written) + " of " +
                     std::to_string(plan.writes.size()));
  }
}

}  // namespace qalt::cli
