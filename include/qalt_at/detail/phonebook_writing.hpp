/*
 * phonebook_writing.hpp - checking, writing and deleting: calls of phonebook.hpp, which includes
 * it.
 */
#ifndef QALT_AT_DETAIL_PHONEBOOK_WRITING_HPP
#define QALT_AT_DETAIL_PHONEBOOK_WRITING_HPP

#include "qalt_at/detail/outcome.hpp"
#include "qalt_at/phonebook.hpp"

namespace qalt {
namespace detail {

inline std::string quoted_or(const std::string& text, const char* otherwise) {
  return text.empty() ? otherwise : "\"" + text + "\"";
}

/* Both sides of a field that did not come back as it was written. */
inline std::string difference(const Contact& written, const Contact& read) {
  std::string text;
  const auto tell = [&](const char* key, const std::string& sent, const std::string& kept) {
    if (!text.empty()) text += "; ";
    text += key;
    text += " written " + quoted_or(sent, "empty") + ", read back " + quoted_or(kept, "empty");
  };
  for (const FieldRow& field : kFields) {
    const std::string& sent = written.*field.member;
    const std::string& kept = read.*field.member;
    if (sent != kept) tell(field.key, sent, kept);
  }
  if (!keeps_further(read.further, written.further)) tell("further", written.further, read.further);
  return text;
}

/* Whether what was found may be what the modem made of what was written, and not what stood there
 * before. */
inline bool is_alike(const Contact& found, const Contact& written) {
  const bool number = !found.number.empty() && found.number == written.number;
  return number ||
         (!found.name.empty() && written.name.compare(0, found.name.size(), found.name) == 0);
}

/* A quote, a line end, Ctrl-Z or ESC would end the parameter or the line, and what follows would be
 * a command. Only fields that are kept as the modem gave them can hold one. */
inline bool is_safe(const WireContact& wire) {
  for (const std::string& field : wire.fields) {
    for (const char c : field) {
      if (c == '"' || c == '\r' || c == '\n' || c == 0x1A || c == 0x1B) return false;
    }
  }
  return is_further(wire.further);
}

/* What keeps the line of a contact from being written whole and read back whole. */
inline std::string check_line(Family family, const WireContact& wire) {
  if (!is_further(wire.further)) {
    return "its further parameters are no list that a command can carry: " + wire.further;
  }
  const size_t length = write_line(family, wire).size() - row_of(family).write.size();
  if (length <= kLongestLine) return "";
  return "the contact is too long for an answer line: " + std::to_string(length) + " of " +
         std::to_string(kLongestLine) + " characters";
}

inline Error still_there(int index) {
  return {Cause::kDiffers,
          "index " + std::to_string(index) + " still holds a contact after its deletion",
          "the modem said OK all the same", Fate::kDone};
}

inline Error taken(int index) {
  return {Cause::kCollision, "another client has just taken index " + std::to_string(index),
          "try again"};
}

inline Error may_be_occupied(const Unreadable& gap) {
  return {Cause::kRefused,
          "index " + std::to_string(gap.index) +
              " may be occupied, since it cannot be read: " + gap.why,
          "choose another index, or overwrite it on purpose"};
}

} /* namespace detail */

inline Result<detail::WireContact> Phonebook::wire_of(const Contact& contact, Limits limits) const {
  const std::string wrong = detail::check_contact(info_, contact, limits);
  if (!wrong.empty()) return Error{Cause::kUsage, wrong, ""};
  detail::WireContact wire;
  wire.index = contact.index;
  wire.further = contact.further;
  for (const FieldRow& field : kFields) {
    if (!detail::put_field(info_, field, contact.*field.member, wire)) {
      return Error{Cause::kUsage, std::string(field.key) + " is too long for its coding",
                   "a name outside the GSM alphabet has room for fewer characters"};
    }
  }
  const std::string unfit = detail::check_line(info_.family, wire);
  if (!unfit.empty()) return Error{Cause::kUsage, unfit, ""};
  return wire;
}

inline Result<Done> Phonebook::check(const Contact& contact, Limits limits) const {
  const Lock lock(detail::g_phonebook_mutex);
  const auto wire = wire_of(contact, limits);
  if (!wire) return wire.error();
  if (contact.index != kNoIndex && !info_.has_index(contact.index)) {
    return wrong_index(contact.index);
  }
  return Done{};
}

inline std::string Phonebook::write_line(const Contact& contact, Limits limits) const {
  const Lock lock(detail::g_phonebook_mutex);
  const auto wire = wire_of(contact, limits);
  return wire ? detail::write_line(info_.family, *wire) : "";
}

/* `old`: what stood there, where it is known. */
inline Result<Contact> Phonebook::write(const detail::WireContact& wire, const Contact* old,
                                        Over over) {
  const std::string place = "write index " + std::to_string(wire.index);
  if (info_.plain) {
    return Error{Cause::kRefused, "could not " + place + ": the modem has no character set UCS2",
                 "its contacts can be read and deleted only"};
  }
  if (!detail::is_safe(wire)) {
    return Error{Cause::kUsage, "a field holds a quote or a line end, which no command can carry",
                 "give the field anew"};
  }
  const auto form = detail::text_form(info_);
  const auto written = detail::contact_of(wire, form);
  if (!written) return written.error();
  if (link_.stopped()) {
    return Error{Cause::kInterrupted, "interrupted before index " + std::to_string(wire.index), ""};
  }
  Result<bool> held = false;
  const auto is_free = [&] {
    held = holds_contact(wire.index);
    return held && !*held;
  };
  const detail::Link::Whole awaited(link_, detail::Link::Whole::kAnswers);
  const detail::Answer answer = link_.send(
      detail::write_line(info_.family, wire), detail::row_of(info_.family).write_timeout_ms, {},
      /*starting=*/false, over == Over::kNothing ? std::function<bool()>(is_free) : nullptr);
  auto was_known = std::exchange(known_, std::nullopt);
  if (!held) return held.error();
  if (*held) return detail::taken(wire.index);
  /* After silence the contact may be stored or not: what is read back decides. */
  const bool unknown = answer.untold();
  if (!answer.ok() && !unknown) {
    Error error = detail::not_done(answer, place);
    if (!wire.further.empty() && error.advice.empty()) {
      error.advice = "it may not take the further parameters " + wire.further;
    }
    return error;
  }

  const detail::Link::Whole whole(link_, detail::Link::Whole::kAll);
  const auto stored = detail::RangeReader(link_, info_.family, form).read(wire.index, wire.index);
  if (!stored) return detail::unseen(answer, wire.index, "written", stored.error());
  if (!stored->unreadable.empty()) {
    const Error why = {Cause::kDiffers, stored->unreadable.front().why, ""};
    return detail::unseen(answer, wire.index, "written", why);
  }
  if (!stored->refused.empty()) {
    const Error why = {Cause::kDiffers, "the read-back was answered ERROR", ""};
    return detail::unseen(answer, wire.index, "written", why);
  }
  Contact found;
  if (!stored->contacts.empty()) {
    remember(stored->contacts.begin()->second);
    found = *detail::contact_of(stored->contacts.begin()->second, form);
  }
  if (says_all(found, *written)) {
    known_ = std::move(was_known);
    if (known_) known_->insert(wire.index);
    return found;
  }
  const std::string seen = "index " + std::to_string(wire.index) +
                           " is not stored as written: " + detail::difference(*written, found);
  if (!unknown) {
    return Error{Cause::kDiffers, seen,
                 "the modem said OK all the same; look at the entry before trying again",
                 Fate::kDone};
  }
  const bool as_before = old != nullptr ? says_all(found, *old) && says_all(*old, found)
                                        : !detail::is_alike(found, *written);
  if (as_before) return detail::unchanged(answer, place, ", and it is not stored");
  return detail::unseen(answer, wire.index, "written", {Cause::kDiffers, seen, ""});
}

inline Result<int> Phonebook::free_index(int wanted) {
  auto reading = read_whole();
  if (!reading) return reading.error();
  const bool full = info_.total > 0 && info_.used >= info_.total;
  if (reading->missing > 0 && !full) {
    return Error{Cause::kRefused,
                 "the modem counts " + std::to_string(reading->missing) +
                     " more contacts than its indices give: any may stand in the way",
                 "overwrite an index on purpose"};
  }
  /* An index that could not be read may hold a contact. */
  for (const Unreadable& gap : reading->unreadable) {
    if (gap.index == wanted) {
      Error error = detail::may_be_occupied(gap);
      error.cause = Cause::kUsage;
      return error;
    }
    reading->contacts[gap.index] = {};
  }
  /* NOLINTNEXTLINE(readability-container-contains): C++17 has none. */
  const auto is_free = [&](int index) { return reading->contacts.count(index) == 0; };
  if (wanted != kNoIndex) {
    if (is_free(wanted)) return wanted;
    return Error{Cause::kUsage, "index " + std::to_string(wanted) + " is occupied",
                 "choose a free index, or overwrite it on purpose"};
  }
  for (int index = info_.first; index <= info_.last; ++index) {
    if (is_free(index)) return index;
  }
  return Error{Cause::kFull, "no index is free", "delete a contact first"};
}

inline Result<Contact> Phonebook::add(const Contact& contact) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  if (const auto good = check(contact); !good) return good.error();
  const auto index = free_index(contact.index);
  if (!index) return index.error();
  if (info_.total > 0 && info_.used >= info_.total) {
    return Error{Cause::kFull,
                 "the phonebook is full: " + std::to_string(info_.used) + " of " +
                     std::to_string(info_.total) + " entries are used",
                 "delete a contact first"};
  }
  /* Another client may have written there since. */
  const auto taken = holds_contact(*index);
  if (!taken) return taken.error();
  if (*taken) {
    return detail::taken(*index);
  }
  Contact placed = contact;
  placed.index = *index;
  return put(placed, Limits::kAnnounced, Over::kNothing);
}

inline Result<Contact> Phonebook::put(const Contact& contact, Limits limits, Over over) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  if (!info_.has_index(contact.index)) return wrong_index(contact.index);
  const auto wire = wire_of(contact, limits);
  if (!wire) return wire.error();
  return write(*wire, nullptr, over);
}

inline Result<Contact> Phonebook::change(int nIndex, const Changes& changes) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  auto wire = get_wire(nIndex);
  if (!wire) return wire.error();
  const auto old = detail::contact_of(*wire, detail::text_form(info_));
  if (!old) return old.error();
  std::string wrong;
  for (const FieldRow& field : kFields) {
    const auto& value = changes.fields[static_cast<size_t>(field.type)];
    if (!value) continue;
    std::string found = detail::check_field(info_, field, *value);
    if (found.empty() && !detail::put_field(info_, field, *value, *wire)) {
      found = std::string(field.key) + " is too long for its coding";
    }
    if (!found.empty()) wrong += (wrong.empty() ? "" : "; ") + found;
  }
  const auto& fields = wire->fields;
  if (wrong.empty() && fields[PB_FIELD_TEXT].empty() && fields[PB_FIELD_NUMBER].empty()) {
    wrong = "a contact needs a name or a number";
  }
  if (wrong.empty()) wrong = detail::check_line(info_.family, *wire);
  if (!wrong.empty()) return Error{Cause::kUsage, wrong, ""};
  return write(*wire, &*old, Over::kAnything);
}

inline detail::Answer Phonebook::look_at(int index) const {
  return link_.ask(detail::read_line(info_.family, index, index),
                   detail::read_timeout_ms(info_.family, index, index),
                   detail::row_of(info_.family).prefix);
}

/* Whether the index holds a contact, as the job has read it, if there are as many as there were
 * then; else none. */
inline Result<std::optional<bool>> Phonebook::holds_by_count(int index) {
  if (!known_) return std::optional<bool>();
  const auto now = counts();
  if (!now) return now.error();
  if (now->used != static_cast<int>(known_->size())) return std::optional<bool>();
  /* NOLINTNEXTLINE(readability-container-contains): C++17 has none. */
  return std::optional<bool>(known_->count(index) != 0);
}

/* Asked where an empty index is expected. ERROR may mean that it is: then the numbers tell. */
inline Result<bool> Phonebook::holds_contact(int index) {
  const detail::Answer look = look_at(index);
  const detail::Place place = detail::place_of(look);
  const bool in_doubt = place == detail::Place::kRefused && look.reply == detail::Reply::kError;
  if (!in_doubt && place != detail::Place::kHeld && place != detail::Place::kEmpty) {
    return detail::failure(look, detail::read_job(index));
  }
  if (!in_doubt) return place == detail::Place::kHeld;
  constexpr int kMostRounds = 3;
  for (int round = 0;; ++round) {
    const auto held = holds_by_count(index);
    if (!held) return held.error();
    if (*held && **held) return true;
    if (*held) {
      /* Once more, behind the counting: another's contact may have come and a third gone. */
      const detail::Answer again = look_at(index);
      const detail::Place now = detail::place_of(again);
      if (now == detail::Place::kUnseen) return detail::failure(again, detail::read_job(index));
      return now == detail::Place::kHeld;
    }
    if (round == kMostRounds) break;
    const auto whole = read_whole();
    if (!whole) return whole.error();
    for (const Unreadable& gap : whole->unreadable) {
      if (gap.index == index) return detail::may_be_occupied(gap);
    }
  }
  return Error{Cause::kCollision, "other clients change the phonebook all the time", "try again"};
}

inline Result<bool> Phonebook::holds(int nIndex) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  if (!info_.has_index(nIndex)) return wrong_index(nIndex);
  return holds_contact(nIndex);
}

inline Result<Done> Phonebook::erase(int nIndex) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  if (!info_.has_index(nIndex)) return wrong_index(nIndex);
  if (link_.stopped()) {
    return Error{Cause::kInterrupted, "interrupted before index " + std::to_string(nIndex), ""};
  }
  auto was_known = std::exchange(known_, std::nullopt);
  const std::string deletion = "delete index " + std::to_string(nIndex);
  const detail::Link::Whole awaited(link_, detail::Link::Whole::kAnswers);
  const detail::Answer answer =
      link_.send(erase_line(nIndex), detail::row_of(info_.family).write_timeout_ms);
  if (!answer.ok() && !answer.untold()) return detail::not_done(answer, deletion);
  const detail::Link::Whole whole(link_, detail::Link::Whole::kAll);
  const detail::Answer look = look_at(nIndex);
  const detail::Place place = detail::place_of(look);
  if (place == detail::Place::kHeld) {
    if (!answer.ok()) return detail::unchanged(answer, deletion, ", and it is still there");
    return detail::still_there(nIndex);
  }
  /* A refusal shows an empty index after OK, not after silence: a card that starts says it, too. */
  if (place == detail::Place::kUnseen || (place == detail::Place::kRefused && !answer.ok())) {
    const Error why = detail::failure(look, detail::read_job(nIndex));
    return detail::unseen(answer, nIndex, "deleted", why);
  }
  known_ = std::move(was_known);
  if (known_) known_->erase(nIndex);
  if (place == detail::Place::kRefused && look.reply == detail::Reply::kError) {
    const auto held = holds_contact(nIndex);
    if (!held) {
      Error why = held.error();
      if (why.cause == Cause::kCollision) why.cause = Cause::kDiffers; /* something was sent */
      return detail::unseen(answer, nIndex, "deleted", why);
    }
    if (*held) return detail::still_there(nIndex);
  }
  PBB_DeletePB(nIndex);
  return Done{};
}

} /* namespace qalt */

#endif /* QALT_AT_DETAIL_PHONEBOOK_WRITING_HPP */
