/*
 * phonebook_reading.hpp - opening, selecting and reading: calls of phonebook.hpp, which includes
 * it.
 */
#ifndef QALT_AT_DETAIL_PHONEBOOK_READING_HPP
#define QALT_AT_DETAIL_PHONEBOOK_READING_HPP

#include "qalt_at/phonebook.hpp"

namespace qalt {
namespace detail {

constexpr const char* kSelectStorage = "AT+CPBS=\"SM\"";
constexpr const char* kSelectUcs2 = "AT+CSCS=\"UCS2\"";
constexpr const char* kSelectIra = "AT+CSCS=\"IRA\"";

/* The error of a selection that failed. A locked card answers ERROR on some modems; it is asked
 * which PIN it waits for, and never given one. */
inline Error selection_failure(const Link& link, const Answer& selected) {
  Error error = failure(selected, "select the SIM phonebook");
  if (selected.reply != Reply::kError) return error;
  const Answer pin = link.send("AT+CPIN?", kSelectTimeoutMs);
  if (pin.reply == Reply::kCode) return failure(pin, "select the SIM phonebook");
  if (!pin.ok() || pin.payload.empty() || pin.payload == "READY") return error;
  error.what += ", the card waits for its " + pin.payload;
  error.advice = "unlock the card first";
  return error;
}

/* No card has as many; a range beyond that is a misread answer, not a phonebook. */
constexpr int kMostIndices = 65536;

template <size_t kSize>
bool copy_whole(char (&member)[kSize], const std::string& text) {
  if (text.size() >= kSize) return false;
  text.copy(member, text.size());
  return true;
}

/* The index buffer's record; none when a text is wider than its member. */
inline std::optional<PbItem> item_of(const WireContact& wire) {
  PbItem item = {};
  item.storageIndex = wire.index;
  item.coding = wire.coding;
  const auto& fields = wire.fields;
  const bool whole = copy_whole(item.number, fields[PB_FIELD_NUMBER]) &&
                     copy_whole(item.text, fields[PB_FIELD_TEXT]) &&
                     copy_whole(item.number2, fields[PB_FIELD_NUMBER2]) &&
                     copy_whole(item.number3, fields[PB_FIELD_NUMBER3]) &&
                     copy_whole(item.email, fields[PB_FIELD_EMAIL]) &&
                     copy_whole(item.extraText, fields[PB_FIELD_EXTRA_TEXT]);
  if (!whole) return std::nullopt;
  item.numberType =
      is_international(fields[PB_FIELD_NUMBER]) ? PB_TYPE_INTERNATIONAL : PB_TYPE_NATIONAL;
  return item;
}

} /* namespace detail */

inline Result<Info> Phonebook::open(Options options) {
  const Lock lock(detail::g_phonebook_mutex);
  if (detail::g_open_phonebook != nullptr && detail::g_open_phonebook != this) {
    return Error{Cause::kUsage, "a phonebook is open in this process already", "use that one"};
  }
  options_ = std::move(options);
  const detail::Answer selected =
      link_.send(detail::kSelectStorage, detail::kSelectTimeoutMs, {}, /*starting=*/true);
  if (!selected.ok()) return detail::selection_failure(link_, selected);

  auto found = detail::Discovery(link_, options_.platform).find_out();
  if (!found) return found.error();
  info_ = *found;
  const bool told = info_.first >= 0 && info_.last > info_.first;
  if (!told || info_.last - info_.first >= detail::kMostIndices) {
    return Error{Cause::kRefused, "the modem does not tell the range of its phonebook's indices",
                 "see what it answers: qalt-pb at AT+CPBR=?"};
  }
  QL_setCurrentPlatform(options_.platform);
  PBB_InitPbBuffer(info_.first, info_.last, info_.total);
  detail::g_open_phonebook = this;
  return info_;
}

inline Result<Done> Phonebook::begin() {
  if (detail::g_open_phonebook != this) {
    return Error{Cause::kUsage, "the phonebook is not open", ""};
  }
  /* Another client may have selected another storage since. */
  const detail::Answer selected = link_.ask(detail::kSelectStorage, detail::kSelectTimeoutMs);
  if (!selected.ok()) return detail::selection_failure(link_, selected);
  link_.keep_selected({detail::kSelectStorage});
  if (info_.family != Family::kStandard) return Done{};
  /* The set is put back even where the switch failed: it may have been carried out all the same. */
  switched_ = true;
  const detail::Answer set = link_.ask(detail::kSelectUcs2, detail::kSelectTimeoutMs);
  /* Only a modem that says so is one without UCS2. */
  if (!set.decided()) return detail::failure(set, "select the character set UCS2");
  info_.plain = !set.ok();
  if (info_.plain) return Done{};
  link_.keep_selected({detail::kSelectStorage, detail::kSelectUcs2});
  /* Some modems say OK and stay where they were. The name comes in the new set itself, or not. */
  const detail::Answer now = link_.ask("AT+CSCS?", detail::kSelectTimeoutMs);
  if (!now.decided()) return detail::failure(now, "ask for the character set");
  info_.plain = now.ok() && now.payload.find("UCS2") == now.payload.npos &&
                now.payload.find("0055004300530032") == now.payload.npos;
  return Done{};
}

inline void Phonebook::end() {
  known_.reset();
  link_.keep_selected({});
  if (!std::exchange(switched_, false)) return;
  /* A client that wants to stop does not wait for a server that is stuck. */
  constexpr int kMostAsked = 4; /* twice a second */
  detail::Terms terms = {{}, options_.server_user};
  if (link_.stopped()) terms.stop = [asked = 0]() mutable { return ++asked > kMostAsked; };
  detail::exchange(detail::kSelectIra, detail::kSelectTimeoutMs, {}, terms);
}

inline Error Phonebook::wrong_index(int index) const {
  return {Cause::kUsage, "there is no index " + std::to_string(index),
          "the phonebook has the indices " + std::to_string(info_.first) + " to " +
              std::to_string(info_.last)};
}

inline void Phonebook::remember(const detail::WireContact& wire) {
  if (const auto item = detail::item_of(wire)) {
    PBB_WritePB(&*item);
  } else {
    PBB_DeletePB(wire.index);
    _PBB_UseEmptyIndex(wire.index);
  }
}

inline void Phonebook::remember(const detail::WireReading& reading) {
  for (const auto& [index, wire] : reading.contacts) remember(wire);
  for (const Unreadable& gap : reading.unreadable) _PBB_UseEmptyIndex(gap.index);
}

/* All indices. The contacts are counted first, in the same job: the number tells whether one that
 * the modem refuses to give is missing, and other clients and the phone itself change it. So they
 * are counted once more where it matters. */
inline Result<detail::WireReading> Phonebook::read_whole() {
  constexpr int kMostRounds = 3;
  for (int round = 1;; ++round) {
    const auto before = counts();
    if (!before) return before.error();
    const int used = before->used;
    detail::RangeReader reader(link_, info_.family, detail::text_form(info_));
    auto reading = reader.read(info_.first, info_.last, used);
    if (!reading) return reading;
    remember(*reading);
    known_.reset();
    const bool settled = reading->refused.empty() && reading->missing == 0;
    const auto after = settled ? before : counts();
    if (!after) return after.error();
    if (after->used != used || used == kUncounted) {
      if (after->used != used && round < kMostRounds) continue;
      for (const int index : std::exchange(reading->refused, {})) {
        reading->unreadable.push_back({index, detail::kRefusedWhy});
      }
    }
    const bool all = reading->unreadable.empty();
    if (all && static_cast<int>(reading->contacts.size()) == used) {
      known_.emplace();
      for (const auto& [index, wire] : reading->contacts) known_->insert(index);
    }
    return reading;
  }
}

/* Some indices. Whether one that is refused is empty only the number of all contacts tells. */
inline Result<detail::WireReading> Phonebook::read_some(int first, int last) {
  detail::RangeReader reader(link_, info_.family, detail::text_form(info_));
  auto reading = reader.read(first, last, kUncounted, /*again=*/false);
  if (!reading) return reading;
  if (!reading->refused.empty()) {
    auto whole = read_whole();
    if (!whole) return whole;
    for (const int index : reading->refused) {
      const auto contact = whole->contacts.find(index);
      if (contact != whole->contacts.end()) reading->contacts.insert(*contact);
      for (const Unreadable& gap : whole->unreadable) {
        if (gap.index == index) reading->unreadable.push_back(gap);
      }
    }
    std::sort(reading->unreadable.begin(), reading->unreadable.end(), detail::by_index);
  }
  remember(*reading);
  return reading;
}

inline Result<Reading> Phonebook::read(int nFirst, int nLast) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  for (const int index : {nFirst, nLast}) {
    if (!info_.has_index(index)) return wrong_index(index);
  }
  const bool all = nFirst == info_.first && nLast == info_.last;
  auto wires = all ? read_whole() : read_some(nFirst, nLast);
  if (!wires) return wires.error();
  Reading reading;
  reading.unreadable = std::move(wires->unreadable);
  reading.missing = wires->missing;
  for (const auto& [index, wire] : wires->contacts) {
    reading.contacts.push_back(*detail::contact_of(wire, detail::text_form(info_)));
  }
  return reading;
}

inline Result<detail::WireContact> Phonebook::get_wire(int index) {
  if (!info_.has_index(index)) {
    Error error = wrong_index(index);
    error.cause = Cause::kNotFound;
    return error;
  }
  auto reading = read_some(index, index);
  if (!reading) return reading.error();
  if (!reading->unreadable.empty()) {
    return Error{Cause::kRefused,
                 "could not " + detail::read_job(index) + ": " + reading->unreadable.front().why,
                 ""};
  }
  if (reading->contacts.empty()) {
    return Error{Cause::kNotFound, "index " + std::to_string(index) + " holds no contact", ""};
  }
  return reading->contacts.begin()->second;
}

inline Result<Contact> Phonebook::get(int nIndex) {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  const auto wire = get_wire(nIndex);
  if (!wire) return wire.error();
  return detail::contact_of(*wire, detail::text_form(info_));
}

inline Result<Info> Phonebook::counts() {
  const Job job(*this);
  if (!job.result()) return job.result().error();
  const detail::Answer answer = link_.ask("AT+CPBS?", detail::kSelectTimeoutMs);
  if (!answer.ok()) return detail::failure(answer, "count the entries");
  detail::take_counts(info_, answer.payload);
  return info_;
}

} /* namespace qalt */

#endif /* QALT_AT_DETAIL_PHONEBOOK_READING_HPP */
