#include "tests/simulation/oracle.h"

#include "sim/text.h"

namespace qalt::simulation {
namespace {

// The write itself, and what selects again after a command without answer.
constexpr int kCommandsBetween = 4;

}  // namespace

// Without blanks around a comma, and without a first one of 0.
Stored normal(Stored stored) {
  std::string text;
  bool quoted = false;
  for (const char c : stored.further) {
    if (c == '"') quoted = !quoted;
    if (c != ' ' || quoted) text += c;
  }
  if (text.starts_with(",0,")) text.erase(1, 1);
  stored.further = text;
  return stored;
}

std::string shown(const Content& content) {
  if (!content) return "nothing";
  return '"' + sim::to_utf8(content->name) + "\" " + content->number + content->further;
}

Oracle::Oracle(World& world, const Machine& machine) : world_(world) {
  for (const auto& [index, stored] : machine.contacts())
    versions_[index].push_back({0, normal(stored), nullptr});
}

const Content& Oracle::at(int index) const {
  static const Content kEmpty;
  const auto found = versions_.find(index);
  return found == versions_.end() ? kEmpty : found->second.back().content;
}

void Oracle::changed(int index, const Content& given, const std::shared_ptr<Call>& call) {
  const Content content = given ? Content(normal(*given)) : Content();
  const Content before = at(index);
  std::string wrong;
  if (call != nullptr) wrong = call->may_write(*call, index, before, content);
  auto& versions = versions_[index];
  if (versions.empty()) versions.push_back({0, Content(), nullptr});
  versions.push_back({++now_, content, call});
  world_.record('#', "index " + std::to_string(index) + ": " + shown(content) + " instead of " +
                         shown(before) + ", by " + (call != nullptr ? call->what : "the modem"));
  if (call == nullptr) return;
  call->written[index] = content;
  if (wrong.empty()) return;
  world_.wrong(call->what + " made of index " + std::to_string(index) + ", where " + shown(before) +
               " stood, " + shown(content) + ": " + wrong);
}

// Another's contact may come between the last look and the write, and nothing else. A modem that
// says ERROR for an empty index has its contacts counted behind it.
std::string Oracle::taken_blindly(const Call& call, int index, const Content& before) const {
  const auto seen = call.looks.find(index);
  Call::Look look = seen == call.looks.end() ? Call::Look() : seen->second;
  if (call.counted.command > look.command) look = call.counted;
  if (seen == call.looks.end() || call.commands - look.command > kCommandsBetween) {
    return "it has not looked right before";
  }
  if (!before) return "";
  const Version& occupant = versions_.at(index).back();
  if (occupant.since <= look.moment) return "it was occupied when last looked at";
  const bool turns = call.takes_turns && occupant.author && occupant.author->takes_turns;
  return turns ? "another of those who take turns has just written there" : "";
}

void Oracle::looked(int first, int last, Call& call) const {
  for (int index = first; index <= last; ++index) call.looks[index] = {now_, call.commands};
}

bool Oracle::stood(int index, Moment since, const std::function<bool(const Content&)>& is) const {
  const auto found = versions_.find(index);
  if (found == versions_.end()) return is(Content());
  const auto& versions = found->second;
  for (size_t k = versions.size(); k-- != 0;) {
    if (is(versions[k].content)) return true;
    if (versions[k].since <= since) return false;
  }
  return false;
}

bool Oracle::stood(int index, Moment since, const Content& content) const {
  return stood(index, since, [&](const Content& other) { return other == content; });
}

std::string Oracle::story(int index, Moment since) const {
  std::string text;
  stood(index, since, [&](const Content& content) {
    text = shown(content) + (text.empty() ? "" : ", then ") + text;
    return false;
  });
  return text;
}

}  // namespace qalt::simulation
