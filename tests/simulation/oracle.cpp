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

Oracle::Oracle(World& world, const Machine& machine) : world_(world), machine_(machine) {
  for (const auto& [index, stored] : machine.contacts())
    versions_[index].push_back({0, normal(stored), nullptr});
}

Content Oracle::at(int index) const {
  const Content content = machine_.at(index);
  return content ? normal(*content) : content;
}

void Oracle::changed(int index, const std::shared_ptr<Call>& call) {
  auto& versions = versions_[index];
  if (versions.empty()) versions.push_back({0, Content(), nullptr});
  const Content before = versions.back().content;
  const Content content = at(index);
  const std::string wrong = call ? call->may_write(*call, index, before, content) : "";
  versions.push_back({++now_, content, call});
  const std::string change = shown(content) + " instead of " + shown(before);
  world_.record('#', "index " + std::to_string(index) + ": " + change + ", by " +
                         (call ? call->what : "the modem"));
  if (call) call->written[index] = content;
  if (!wrong.empty()) {
    world_.wrong(call->what + " made of index " + std::to_string(index) + " " + change + ": " +
                 wrong);
  }
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
