#include "tests/simulation/clients.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "qalt_at/detail/result.hpp"
#include "sim/text.h"

namespace qalt::simulation {
namespace {

constexpr int kShortestRead = 31;  // characters that a C read gives of a name

Stored stored_of(const Entry& entry) {
  return normal({entry.number, sim::from_utf8(entry.name), entry.further});
}

std::string describe(const Outcome& outcome) {
  return outcome.done() ? "done" : std::to_string(outcome.cause) + " (" + outcome.what + ")";
}

// A write of this and nothing else, at this place.
auto only(int wanted, Content content) {
  return [=](const Call&, int index, const Content&, const Content& after) -> std::string {
    if (index != wanted) return "nobody named this index";
    return after == content ? "" : "asked for was " + shown(content);
  };
}

std::string nothing(const Call&, int, const Content&, const Content&) {
  return "the call may write nothing";
}

}  // namespace

void ClientProgram::wrong(const Call& call, const Outcome& outcome, const std::string& what) const {
  around_.world.wrong(call.what + ": " + describe(outcome) + ": " + what);
  std::abort();
}

std::shared_ptr<Call> ClientProgram::begin(std::string what, MayWrite may_write) {
  auto call = std::make_shared<Call>();
  call->what = "client " + std::to_string(number_) + ", " + std::move(what);
  call->client = number_;
  call->begun = around_.oracle.now();
  call->may_write = std::move(may_write);
  around_.world.record('#', call->what);
  around_.server.set_call(number_, call);
  return call;
}

void ClientProgram::told(const Call& call, const Outcome& outcome) const {
  around_.world.record('#', call.what + ": " + describe(outcome));
  // Of these a caller believes that nothing was changed.
  constexpr std::array<Cause, 5> kUnchanged = {Cause::kUsage, Cause::kNotFound, Cause::kFull,
                                               Cause::kCollision, Cause::kInterrupted};
  const bool unchanged =
      std::find(kUnchanged.begin(), kUnchanged.end(), Cause(outcome.cause)) != kUnchanged.end();
  if (manner_ != Manner::kHeader || outcome.done()) return;
  if (unchanged && !call.written.empty()) wrong(call, outcome, "it has written");
  for (const auto& [index, content] : call.written) {
    const bool stands = around_.oracle.at(index) == content;
    if (stands && Fate(outcome.fate) == Fate::kNotDone) wrong(call, outcome, "it is done");
  }
  if (!call.wrote && Fate(outcome.fate) == Fate::kDone) wrong(call, outcome, "it is not done");
}

// Where nothing is wrong with anything, and nobody else is there, what is asked for is done.
void ClientProgram::must_be_done(const Call& call, const Outcome& outcome) const {
  const Scenario& scenario = around_.scenario;
  const bool well = scenario.calm() && !scenario.drops && scenario.hidden.empty() &&
                    scenario.clients.size() == 1 && scenario.own_changes == 0;
  if (well && !outcome.done()) wrong(call, outcome, "why not?");
}

Entry ClientProgram::new_entry(int index) {
  const Stored stored =
      new_contact(chance_, 1000 + around_.contacts++, name_length_ > 0 ? name_length_ : 18);
  return {index, sim::to_utf8(stored.name), stored.number, {}};
}

// Where only the number of contacts tells, changes of others may hide what they leave it at: one,
// of an index that is never shown, or two that cancel each other out.
bool ClientProgram::may_be_unseen(const Call& call, int index) const {
  const Moment foreign = around_.oracle.now() - call.begun - Moment(call.written.size());
  const bool hidden = around_.scenario.hidden.contains(index);
  return around_.scenario.refuses && foreign >= (hidden ? 1u : 2u);
}

std::string ClientProgram::taken_blindly(const Call& call, int index, const Content& before) const {
  return may_be_unseen(call, index) ? "" : around_.oracle.taken_blindly(call, index, before);
}

void ClientProgram::run() {
  around_.network.set_client(number_);
  around_.server.new_process(number_);
  for (int k = 0; k < around_.scenario.calls; ++k) {
    around_.world.sleep(Time(chance_.one_in(3) ? chance_.below(20000) : chance_.below(50)));
    if (k == 0 || chance_.one_in(20)) start();
    switch (manner_) {
      case Manner::kHeader:
        by_header();
        break;
      case Manner::kImporter:
        by_import();
        break;
      case Manner::kFunctions:
        by_functions();
        break;
      case Manner::kLines:
        by_lines();
        break;
    }
  }
}

// A program begins: as a new process, often.
void ClientProgram::start() {
  if (chance_.one_in(2)) around_.server.new_process(number_);
  for (int tries = 0; tries < 20; ++tries) {
    const auto call = begin("open", nothing);
    const Outcome outcome = manner_ == Manner::kFunctions ? client_.c_discover() : client_.open();
    told(*call, outcome);
    if (outcome.done() && outcome.last > outcome.first) {
      first_ = outcome.first;
      last_ = outcome.last;
      name_length_ = outcome.name_length;
      return;
    }
    if (around_.scenario.calm()) wrong(*call, outcome, "why not?");
    around_.world.sleep(Time(5000));
  }
}

void ClientProgram::by_header() {
  const bool job = chance_.one_in(4);
  if (job) {
    const auto call = begin("begin of a job", nothing);
    told(*call, client_.begin_job());
  }
  for (int k = job ? chance_.between(1, 4) : 1; k > 0; --k) {
    switch (chance_.below(7)) {
      case 0:
        add();
        break;
      case 1:
        put();
        break;
      case 2:
        change();
        break;
      case 3:
        erase();
        break;
      case 4:
        get();
        break;
      case 5:
        read(first_, last_);
        break;
      default: {
        const int first = some_index();
        read(first, chance_.between(first, last_));
      }
    }
  }
  if (!job) return;
  begin("end of a job", nothing);
  client_.end_job();
}

void ClientProgram::add() {
  const bool placed = chance_.one_in(4);
  const Entry entry = new_entry(placed ? some_index() : -1);
  const auto call = begin("add of " + shown(stored_of(entry)),
                          [=, this](const Call& self, int index, const Content& before,
                                    const Content& after) -> std::string {
                            if (placed && index != entry.index) return "nobody named this index";
                            if (after != stored_of(entry))
                              return "this is not what was to be added";
                            return taken_blindly(self, index, before);
                          });
  const Outcome outcome = client_.add(entry);
  told(*call, outcome);
  if (!outcome.done()) return;
  check_stored(*call, outcome, outcome.contacts.front().index, stored_of(entry));
}

void ClientProgram::check_stored(const Call& call, const Outcome& outcome, int index,
                                 const Stored& wanted) {
  if (!around_.oracle.stood(index, call.begun, wanted)) {
    wrong(call, outcome,
          "never stood at index " + std::to_string(index) + ": " +
              around_.oracle.story(index, call.begun));
  }
}

void ClientProgram::put() {
  const Entry entry = new_entry(some_index());
  const auto call =
      begin("put of " + shown(stored_of(entry)) + " to " + std::to_string(entry.index),
            only(entry.index, stored_of(entry)));
  const Outcome outcome = client_.put(entry);
  told(*call, outcome);
  must_be_done(*call, outcome);
  if (outcome.done()) check_stored(*call, outcome, entry.index, stored_of(entry));
}

void ClientProgram::change() {
  const int index = some_index();
  const Entry entry = new_entry(index);
  const bool names = chance_.one_in(2);
  const Oracle& oracle = around_.oracle;
  const auto changed = [=](Stored stored) {
    if (names) stored.name = sim::from_utf8(entry.name);
    if (!names) stored.number = entry.number;
    return stored;
  };
  const auto call = begin(
      "change of " + std::to_string(index) + " to " + shown(changed({"(number)", u"(name)", {}})),
      [=, &oracle](const Call& self, int at, const Content&, const Content& after) -> std::string {
        if (at != index) return "nobody named this index";
        const bool known = after && oracle.stood(at, self.begun, [&](const Content& old) {
          return old && changed(*old) == *after;
        });
        return known ? "" : "this is none of what stood there, changed as asked";
      });
  const Outcome outcome = client_.change(index, names ? std::optional(entry.name) : std::nullopt,
                                         names ? std::nullopt : std::optional(entry.number));
  told(*call, outcome);
  const Content& now = oracle.at(index);
  const bool fits = now && (name_length_ == 0 || int(now->name.size()) <= name_length_);
  if (fits && !changed(*now).number.empty()) must_be_done(*call, outcome);
  if (outcome.done() && !oracle.stood(index, call->begun, [&](const Content& content) {
        return content && changed(*content) == *content;
      })) {
    wrong(*call, outcome, "not changed: " + oracle.story(index, call->begun));
  }
}

void ClientProgram::erase() {
  const int index = some_index();
  const auto call = begin("erasing of " + std::to_string(index), only(index, Content()));
  const Outcome outcome =
      manner_ == Manner::kFunctions ? client_.c_erase(index) : client_.erase(index);
  told(*call, outcome);
  const bool c_functions = manner_ == Manner::kFunctions;
  if (c_functions && around_.scenario.drops) return;
  if (outcome.done() && !around_.oracle.was_empty(index, call->begun)) {
    wrong(*call, outcome, "it was never empty: " + around_.oracle.story(index, call->begun));
  }
}

void ClientProgram::get() {
  const int index = some_index();
  const auto call = begin("get of " + std::to_string(index), nothing);
  const Outcome outcome = client_.get(index);
  told(*call, outcome);
  const bool missing = outcome.cause == int(Cause::kNotFound);
  if (outcome.done() || missing) check_reading(*call, outcome, index, index, true, false);
}

void ClientProgram::read(int first, int last) {
  const auto call =
      begin("read of " + std::to_string(first) + " to " + std::to_string(last), nothing);
  const Outcome outcome = client_.read(first, last);
  told(*call, outcome);
  must_be_done(*call, outcome);
  if (outcome.done()) check_reading(*call, outcome, first, last, true, false);
}

void ClientProgram::check_reading(const Call& call, const Outcome& outcome, int first, int last,
                                  bool whole, bool c_functions) {
  const Oracle& oracle = around_.oracle;
  std::set<int> named(outcome.unreadable.begin(), outcome.unreadable.end());
  for (const Entry& entry : outcome.contacts) {
    if (!named.insert(entry.index).second) wrong(call, outcome, "an index twice");
    const Stored seen = stored_of(entry);
    const auto is = [&](const Content& content) {
      if (!content) return false;
      if (!c_functions) return *content == seen;
      if (!around_.scenario.plain) return true;
      return content->name.substr(0, kShortestRead) == seen.name.substr(0, kShortestRead) &&
             (content->number == seen.number || content->number == "+" + seen.number);
    };
    if (!oracle.stood(entry.index, call.begun, is)) {
      wrong(call, outcome,
            "read at " + std::to_string(entry.index) + " " + shown(seen) + ", where stood " +
                oracle.story(entry.index, call.begun));
    }
  }
  for (int index = first; whole && index <= last; ++index) {
    if (named.contains(index) || oracle.was_empty(index, call.begun)) continue;
    if (may_be_unseen(call, index)) continue;
    wrong(call, outcome,
          "index " + std::to_string(index) + " is missing: " + oracle.story(index, call.begun));
  }
}

// Contacts of a file: each of them stands somewhere afterwards.
void ClientProgram::by_import() {
  std::vector<Entry> entries;
  for (int k = chance_.between(1, 12); k > 0; --k) entries.push_back(new_entry(-1));
  const auto call = begin(
      "import of " + std::to_string(entries.size()) + " from " + shown(stored_of(entries.front())),
      [=, this](const Call& self, int index, const Content& before,
                const Content& after) -> std::string {
        const bool ours =
            after && std::any_of(entries.begin(), entries.end(),
                                 [&](const Entry& entry) { return stored_of(entry) == *after; });
        if (!ours) return "this is none of what was to be imported";
        return taken_blindly(self, index, before);
      });
  // A turn that is held for half a minute is not waited for any longer, and a slow modem takes
  // that.
  call->takes_turns =
      around_.scenario.calm() && around_.scenario.hidden.empty() && !around_.scenario.slow;
  const Outcome outcome = client_.import(entries);
  told(*call, outcome);
  if (!outcome.done()) return;
  for (const Entry& entry : entries) {
    const Content wanted = stored_of(entry);
    const bool stood = std::any_of(call->written.begin(), call->written.end(),
                                   [&](const auto& write) { return write.second == wanted; });
    if (!stood) wrong(*call, outcome, "nowhere: " + shown(wanted));
  }
}

void ClientProgram::by_functions() {
  switch (chance_.below(4)) {
    case 0: {
      const Entry entry = new_entry(std::max(some_index(), 1));
      const auto call =
          begin("C write of " + shown(stored_of(entry)) + " to " + std::to_string(entry.index),
                only(entry.index, stored_of(entry)));
      const Outcome outcome = client_.c_write(entry);
      told(*call, outcome);
      if (outcome.done() && !around_.scenario.drops) {
        check_stored(*call, outcome, entry.index, stored_of(entry));
      }
      break;
    }
    case 1:
      return erase();
    default:
      return c_read();
  }
}

void ClientProgram::c_read() {
  const int first = some_index();
  const int last = std::min(chance_.between(first, last_), first + 99);
  const auto call =
      begin("C read of " + std::to_string(first) + " to " + std::to_string(last), nothing);
  const Outcome outcome = client_.c_read(first, last);
  told(*call, outcome);
  const bool whole = !call->touched && around_.scenario.hidden.empty();
  if (outcome.done()) check_reading(*call, outcome, first, last, whole, true);
}

void ClientProgram::by_lines() {
  if (chance_.one_in(3)) return raw_write();
  question();
}

void ClientProgram::question() {
  constexpr std::array<std::string_view, 9> kQuestions = {
      "AT+CSQ", "AT+CPBS?", "AT+CPBR=?", "AT", "AT+CMGR=2", "AT+CGMM", "AT+CSCS?", "AT+NONE=1", ""};
  std::string line(chance_.of(kQuestions));
  if (line.empty()) line = "AT+CPBR=" + std::to_string(some_index());
  const auto call = begin(line, nothing);
  const bool calm = around_.scenario.calm();
  const Outcome outcome =
      client_.command(line, uint32_t(calm ? 20000 : chance_.between(200, 20000)));
  told(*call, outcome);
  const bool none = outcome.cause != 0 || outcome.what.empty();
  if (none && calm) wrong(*call, outcome, "no answer");
}

// As a program writes that does not look: its own index is all that it may change.
void ClientProgram::raw_write() {
  const Entry entry = new_entry(some_index());
  const bool erases = chance_.one_in(3);
  const Content content = erases ? Content() : Content(Stored{entry.number, u"", {}});
  if (!erases && entry.number.empty()) return;
  const auto call =
      begin("line that writes " + shown(content) + " to " + std::to_string(entry.index),
            only(entry.index, content));
  std::string line = "AT+CPBW=" + std::to_string(entry.index);
  if (!erases) {
    line +=
        ",\"" + entry.number + "\"," + (entry.number.starts_with('+') ? "145" : "129") + ",\"\"";
  }
  told(*call, client_.command(line, uint32_t(chance_.between(200, 20000))));
}

}  // namespace qalt::simulation
