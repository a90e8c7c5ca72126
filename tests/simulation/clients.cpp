#include "tests/simulation/clients.h"

#include <algorithm>
#include <array>
#include <set>

#include "sim/text.h"

namespace qalt::simulation {
namespace {

constexpr size_t kShortestRead = 31;  // characters that a C read gives of a name

using MayWrite = decltype(Call::may_write);

Stored stored_of(const Contact& contact) {
  return normal({contact.number, sim::from_utf8(contact.name), contact.further});
}

std::string describe(const Outcome& outcome) {
  return outcome.done() ? "done" : std::to_string(outcome.cause) + " (" + outcome.what + ")";
}

// A write of this and nothing else, at this place.
MayWrite only(int wanted, const Content& content) {
  return [=](const Call&, int index, const Content&, const Content& after) -> std::string {
    if (index != wanted) return "nobody named this index";
    return after == content ? "" : "asked for was " + shown(content);
  };
}

std::string nothing(const Call&, int, const Content&, const Content&) {
  return "the call may write nothing";
}

class ClientProgram {
 public:
  ClientProgram(Surroundings& around, int number, Client& client, Chance chance)
      : around_(around),
        number_(number),
        manner_(around.scenario.clients[size_t(number)]),
        client_(client),
        chance_(chance) {}

  void run() {
    constexpr std::array kFunctionCalls = {&ClientProgram::put, &ClientProgram::erase,
                                           &ClientProgram::read_some, &ClientProgram::read_some};
    around_.server.new_process(number_);
    for (int k = 0; k < around_.scenario.calls; ++k) {
      around_.world.wait(Time(chance_.one_in(3) ? chance_.below(20000) : chance_.below(50)));
      if (k == 0 || chance_.one_in(20)) start();
      switch (manner_) {
        case Manner::kHeader:
          by_header();
          break;
        case Manner::kImporter:
          import();
          break;
        case Manner::kFunctions:
          (this->*chance_.of(kFunctionCalls))();
          break;
        case Manner::kLines:
          question();
          break;
      }
    }
  }

 private:
  // A call and what it came to. What it may change is judged while it goes on.
  struct Step {
    std::shared_ptr<Call> call;
    Outcome outcome;
  };
  template <typename Function>
  Step carry_out(const std::string& what, const MayWrite& may_write, Function function,
                 bool takes_turns = false) {
    const auto call = std::make_shared<Call>();
    call->what = "client " + std::to_string(number_) + ", " + what;
    call->begun = oracle_.now();
    call->may_write = may_write;
    call->takes_turns = takes_turns;
    around_.world.record('#', call->what);
    around_.server.set_call(number_, call);
    const Step step{call, function()};
    around_.world.record('#', call->what + ": " + describe(step.outcome));
    if (manner_ == Manner::kHeader && !step.outcome.done()) check_fate(step);
    return step;
  }

  [[noreturn]] void wrong(const Step& step, const std::string& what) const {
    around_.world.wrong(step.call->what + ": " + describe(step.outcome) + ": " + what);
    std::abort();
  }

  void check_fate(const Step& step) const {
    const auto& [call, outcome] = step;
    // Of these a caller believes that nothing was changed.
    constexpr std::array<Cause, 5> kUnchanged = {Cause::kUsage, Cause::kNotFound, Cause::kFull,
                                                 Cause::kCollision, Cause::kInterrupted};
    const auto* const row = std::find(kUnchanged.begin(), kUnchanged.end(), Cause(outcome.cause));
    if (row != kUnchanged.end() && !call->written.empty()) wrong(step, "it has written");
    for (const auto& [index, content] : call->written) {
      const bool stands = oracle_.at(index) == content;
      if (stands && outcome.fate == Fate::kNotDone) wrong(step, "it is done");
    }
    if (!call->wrote && outcome.fate == Fate::kDone) wrong(step, "it is not done");
  }

  // Where nothing is wrong with anything, and nobody else is there, what is asked for is done.
  void must_be_done(const Step& step) const {
    const Scenario& scenario = around_.scenario;
    const bool well = scenario.calm() && !scenario.drops && scenario.hidden.empty() &&
                      scenario.clients.size() == 1 && scenario.own_changes == 0;
    if (well && !step.outcome.done()) wrong(step, "why not?");
  }

  // Whether what is said to be stored at an index was.
  void must_have_stood(const Step& step, int index, const Content& wanted) const {
    if (oracle_.stood(index, step.call->begun, wanted)) return;
    wrong(step, shown(wanted) + " never stood at index " + std::to_string(index) + ": " +
                    oracle_.story(index, step.call->begun));
  }

  // Where only the number of contacts tells, changes of others may hide what they leave it at: one,
  // of an index that is never shown, or two that cancel each other out.
  bool may_be_unseen(const Call& call, int index) const {
    const Moment foreign = oracle_.now() - call.begun - Moment(call.written.size());
    const bool hidden = around_.scenario.hidden.contains(index);
    return around_.scenario.refuses && foreign >= (hidden ? 1u : 2u);
  }

  std::string taken_blindly(const Call& call, int index, const Content& before) const {
    return may_be_unseen(call, index) ? "" : oracle_.taken_blindly(call, index, before);
  }

  int some_index() { return chance_.between(first_, last_); }

  Contact new_entry(int index) {
    const Stored stored =
        new_contact(chance_, 1000 + around_.contacts++, name_length_ > 0 ? name_length_ : 18);
    Contact contact;
    contact.index = index;
    contact.name = sim::to_utf8(stored.name);
    contact.number = stored.number;
    return contact;
  }

  // A program begins: as a new process, often.
  void start() {
    if (chance_.one_in(2)) around_.server.new_process(number_);
    for (int tries = 0; tries < 20; ++tries) {
      const Step step = carry_out("open", nothing, [&] {
        return manner_ == Manner::kFunctions ? client_.c_discover() : client_.open();
      });
      const Outcome& told = step.outcome;
      if (told.done() && told.last > told.first) {
        first_ = told.first;
        last_ = told.last;
        name_length_ = told.name_length;
        return;
      }
      if (around_.scenario.calm()) wrong(step, "why not?");
      around_.world.wait(Time(5000));
    }
  }

  void by_header() {
    const bool job = chance_.one_in(4);
    if (job) carry_out("begin of a job", nothing, [&] { return client_.begin_job(); });
    constexpr std::array kCalls = {&ClientProgram::add,      &ClientProgram::put,
                                   &ClientProgram::change,   &ClientProgram::erase,
                                   &ClientProgram::get,      &ClientProgram::read_all,
                                   &ClientProgram::read_some};
    for (int k = job ? chance_.between(1, 4) : 1; k > 0; --k) (this->*chance_.of(kCalls))();
    if (!job) return;
    carry_out("end of a job", nothing, [&] {
      client_.end_job();
      return Outcome();
    });
  }

  void add() {
    const bool placed = chance_.one_in(4);
    const Contact contact = new_entry(placed ? some_index() : kNoIndex);
    const Stored wanted = stored_of(contact);
    const auto may_write = [=, this](const Call& self, int index, const Content& before,
                                     const Content& after) -> std::string {
      if (placed && index != contact.index) return "nobody named this index";
      if (after != wanted) return "this is not what was to be added";
      return taken_blindly(self, index, before);
    };
    const Step step =
        carry_out("add of " + shown(wanted), may_write, [&] { return client_.add(contact); });
    if (step.outcome.done()) must_have_stood(step, step.outcome.contacts.front().index, wanted);
  }

  void put() {
    const bool c_functions = manner_ == Manner::kFunctions;
    const Contact contact = new_entry(c_functions ? std::max(some_index(), 1) : some_index());
    const Stored wanted = stored_of(contact);
    const Step step =
        carry_out("put of " + shown(wanted) + " to " + std::to_string(contact.index),
                  only(contact.index, wanted),
                  [&] { return c_functions ? client_.c_write(contact) : client_.put(contact); });
    if (c_functions && around_.scenario.drops) return;
    must_be_done(step);
    if (step.outcome.done()) must_have_stood(step, contact.index, wanted);
  }

  void change() {
    const int index = some_index();
    const Contact contact = new_entry(index);
    const bool names = chance_.one_in(2);
    const auto changed = [=](Stored stored) {
      if (names) stored.name = sim::from_utf8(contact.name);
      if (!names) stored.number = contact.number;
      return stored;
    };
    const auto may_write = [=, this](const Call& self, int at, const Content&,
                                     const Content& after) -> std::string {
      if (at != index) return "nobody named this index";
      const bool known = after && oracle_.stood(at, self.begun, [&](const Content& old) {
        return old && changed(*old) == *after;
      });
      return known ? "" : "this is none of what stood there, changed as asked";
    };
    Changes changes;
    changes.fields[names ? PB_FIELD_TEXT : PB_FIELD_NUMBER] = names ? contact.name : contact.number;
    const Step step = carry_out(
        "change of " + std::to_string(index) + " to " + shown(changed({"(number)", u"(name)", {}})),
        may_write, [&] { return client_.change(index, changes); });
    const Content now = oracle_.at(index);
    const bool fits = now && (name_length_ == 0 || int(now->name.size()) <= name_length_);
    if (fits && !changed(*now).number.empty()) must_be_done(step);
    if (step.outcome.done() && !oracle_.stood(index, step.call->begun, [&](const Content& there) {
          return there && changed(*there) == *there;
        })) {
      wrong(step, "not changed: " + oracle_.story(index, step.call->begun));
    }
  }

  void erase() {
    const int index = some_index();
    const bool c_functions = manner_ == Manner::kFunctions;
    const Step step = carry_out("erasing of " + std::to_string(index), only(index, Content()), [&] {
      return c_functions ? client_.c_erase(index) : client_.erase(index);
    });
    if (c_functions && around_.scenario.drops) return;
    if (step.outcome.done()) must_have_stood(step, index, Content());
  }

  void get() {
    const int index = some_index();
    const Step step =
        carry_out("get of " + std::to_string(index), nothing, [&] { return client_.get(index); });
    const bool missing = step.outcome.cause == int(Cause::kNotFound);
    if (step.outcome.done() || missing) check_reading(step, index, index, true);
  }

  void read_all() { read(first_, last_); }
  void read_some() {
    const int first = some_index();
    read(first, chance_.between(first, last_));
  }
  void read(int first, int last) {
    const bool c_functions = manner_ == Manner::kFunctions;
    const Step step = carry_out(
        "read of " + std::to_string(first) + " to " + std::to_string(last), nothing,
        [&] { return c_functions ? client_.c_read(first, last) : client_.read(first, last); });
    if (!c_functions) must_be_done(step);
    const bool whole = !step.call->touched && around_.scenario.hidden.empty();
    if (step.outcome.done()) check_reading(step, first, last, !c_functions || whole);
  }

  // Whether what was read is what stood there; `whole`: also that nothing is missing.
  void check_reading(const Step& step, int first, int last, bool whole) const {
    const auto& [call, outcome] = step;
    std::set<int> named(outcome.unreadable.begin(), outcome.unreadable.end());
    for (const Contact& contact : outcome.contacts) {
      if (!named.insert(contact.index).second) wrong(step, "an index twice");
      const Stored seen = stored_of(contact);
      const auto is = [&](const Content& content) {
        if (!content || manner_ != Manner::kFunctions) return content == seen;
        if (!around_.scenario.plain) return true;
        return content->name.substr(0, kShortestRead) == seen.name.substr(0, kShortestRead) &&
               (content->number == seen.number || content->number == "+" + seen.number);
      };
      if (oracle_.stood(contact.index, call->begun, is)) continue;
      wrong(step, "read at " + std::to_string(contact.index) + " " + shown(seen) +
                      ", where stood " + oracle_.story(contact.index, call->begun));
    }
    for (int index = first; whole && index <= last; ++index) {
      if (named.contains(index) || may_be_unseen(*call, index)) continue;
      must_have_stood(step, index, Content());
    }
  }

  // Contacts of a file: each of them stands somewhere afterwards.
  void import() {
    std::vector<Contact> contacts;
    for (int k = chance_.between(1, 12); k > 0; --k) contacts.push_back(new_entry(kNoIndex));
    const auto may_write = [=, this](const Call& self, int index, const Content& before,
                                     const Content& after) -> std::string {
      const bool ours = std::any_of(contacts.begin(), contacts.end(), [&](const Contact& contact) {
        return after == stored_of(contact);
      });
      if (!ours) return "this is none of what was to be imported";
      return taken_blindly(self, index, before);
    };
    // A turn that is held for half a minute is not waited for any longer, and a slow modem takes
    // that.
    const Scenario& scenario = around_.scenario;
    const bool takes_turns = scenario.calm() && scenario.hidden.empty() && !scenario.slow;
    const Step step = carry_out(
        "import of " + std::to_string(contacts.size()) + " from " +
            shown(stored_of(contacts.front())),
        may_write, [&] { return client_.import(contacts); }, takes_turns);
    if (!step.outcome.done()) return;
    for (const Contact& contact : contacts) {
      const Content wanted = stored_of(contact);
      const auto& written = step.call->written;
      if (std::none_of(written.begin(), written.end(),
                       [&](const auto& write) { return write.second == wanted; })) {
        wrong(step, "nowhere: " + shown(wanted));
      }
    }
  }

  void question() {
    constexpr std::array<std::string_view, 9> kQuestions = {"AT+CSQ",   "AT+CPBS?",  "AT+CPBR=?",
                                                            "AT",       "AT+CMGR=2", "AT+CGMM",
                                                            "AT+CSCS?", "AT+NONE=1", ""};
    std::string line(chance_.of(kQuestions));
    if (line.empty()) line = "AT+CPBR=" + std::to_string(some_index());
    const bool calm = around_.scenario.calm();
    const auto limit = uint32_t(calm ? 20000 : chance_.between(200, 20000));
    const Step step = carry_out(line, nothing, [&] { return client_.command(line, limit); });
    const bool none = !step.outcome.done() || step.outcome.what.empty();
    if (none && calm) wrong(step, "no answer");
  }

  Surroundings& around_;
  const Oracle& oracle_ = around_.oracle;
  int number_;
  Manner manner_;
  Client& client_;
  Chance chance_;
  int first_ = 1;
  int last_ = 1;
  int name_length_ = 0;
};

}  // namespace

void run_client(Surroundings& around, int number, Client& client, Chance chance) {
  ClientProgram(around, number, client, chance).run();
}

}  // namespace qalt::simulation
