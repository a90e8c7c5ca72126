#include "server/client_settings.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "at/at_line.h"

namespace qalt::server {
namespace {

constexpr std::array<std::string_view, ClientSettings::kSettings> kNames = {"+CSCS", "+CPBS",
                                                                            "+CMEE"};
constexpr size_t kCharset = 0;
constexpr size_t kStorage = 1;
constexpr size_t kErrors = 2;

// Commands that read or write in the selected storage, with texts in the selected character set.
constexpr std::array<std::string_view, 9> kPhonebookCommands = {
    "+CPBR", "+CPBW", "+CPBF", "+JCPBR", "+JCPBW", "^SCPBR", "^SCPBW", "^CPBR", "^CPBW"};
// Those of them whose texts are in the selected set; the vendors' have a coding of their own.
constexpr std::array<std::string_view, 3> kSetTexts = {"+CPBR", "+CPBW", "+CPBF"};
// Further commands with texts.
constexpr std::array<std::string_view, 10> kTextCommands = {
    "+CMGS", "+CMGW", "+CMGR", "+CMGL", "+CUSD", "+COPS", "+CNUM", "+CLCC", "+CSCA", "+CPOL"};
// Commands after which nothing is as it was selected.
constexpr std::array<std::string_view, 3> kResets = {"Z", "&F", "+CFUN"};

template <typename List>
bool contains(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

bool selects(const at::Command& command, size_t setting) {
  return command.form == at::Form::kSet && command.name == kNames[setting];
}

bool acts_on(const at::Command& command, size_t setting) {
  if (setting == kErrors) return true;
  if (contains(kPhonebookCommands, command.name)) return true;
  if (command.name == kNames[setting]) return command.form == at::Form::kQuery;
  return setting == kCharset && contains(kTextCommands, command.name);
}

// A name may have been sent as UCS2, in hexadecimal; it is kept in plain characters, but for one
// that would end its quotes.
std::string plain(const std::string& name) {
  std::string result;
  if (name.empty() || name.size() % 4 != 0) return name;
  for (size_t i = 0; i < name.size(); i += 4) {
    const std::string digits = name.substr(i, 4);
    if (digits.find_first_not_of("0123456789ABCDEFabcdef") != digits.npos) return name;
    const int code = std::stoi(digits, nullptr, 16);
    if (code < 0x20 || code > 0x7E || code == '"') return name;
    result += char(code);
  }
  return result;
}

// The classes of errors become part of a line of the server's own without quotes: they are one
// digit (3GPP TS 27.007, 9.1).
std::optional<std::string> selected_value(size_t setting, std::string_view arguments) {
  const auto list = at::split_arguments(arguments);
  if (!list || list->front().value.empty()) return std::nullopt;
  std::string value = list->front().value;
  if (setting != kErrors) return plain(value);
  if (value.size() != 1 || value[0] < '0' || value[0] > '2') return std::nullopt;
  return value;
}

std::vector<at::Command> commands_of(std::string_view line) {
  return at::read_line(line).commands;
}

}  // namespace

std::optional<std::string> ClientSettings::before(const Peer& peer, std::string_view line) {
  const auto [commands, whole, before_fault] = at::read_line(line);
  if (doubted_) return "AT" + std::string(kNames[kErrors]) + "?";
  for (size_t i = 0; i < kSettings; ++i) {
    const std::string name(kNames[i]);
    const auto selecting = [i](const at::Command& command) { return selects(command, i); };
    const bool may_select = !whole || std::any_of(commands.begin(), commands.end(), selecting);
    if (may_select && !initial_[i] && !current_[i] && !asked_[i]) {
      asked_[i] = true;
      preparing_ = i;
      prepared_value_.reset();
      return "AT" + name + "?";
    }
    for (const at::Command& command : commands) {
      if (selects(command, i)) break;
      if (!acts_on(command, i)) continue;
      const auto found = peers_.find(peer);
      const bool chosen = found != peers_.end() && found->second.values[i];
      const auto& wanted = chosen ? found->second.values[i] : initial_[i];
      if (!wanted || current_[i] == wanted) break;
      preparing_ = i;
      prepared_value_ = wanted;
      std::string selection = "AT" + name + "=";
      selection += i == kErrors ? *wanted : '"' + *wanted + '"';
      return selection;
    }
  }
  return std::nullopt;
}

// What was selected counts as selected, however the modem names it: so nothing is sent twice for
// one line.
bool ClientSettings::prepared(std::string_view answer, bool ok) {
  if (std::exchange(doubted_, false)) {
    gone_ =
        ok && answer.find(std::string(kNames[kErrors]) + ": " + *current_[kErrors]) == answer.npos;
    return true;
  }
  std::optional<std::string>& current = current_[preparing_];
  if (prepared_value_) {
    // A text would be taken in the wrong set; an error of another class is an error all the same.
    if (ok || preparing_ == kErrors) current = prepared_value_;
    return ok || preparing_ == kErrors;
  }
  const std::string name = std::string(kNames[preparing_]) + ":";
  const size_t found = ok ? answer.find(name) : answer.npos;
  if (found == answer.npos) return true;
  const std::string_view value = answer.substr(found + name.size());
  initial_[preparing_] = current = selected_value(preparing_, value.substr(0, value.find('\r')));
  return true;
}

void ClientSettings::carried_out(const Peer& peer, std::string_view line, bool ok) {
  const auto found = peers_.find(peer);
  Values values = found == peers_.end() ? Values() : found->second.values;
  apply(line, ok, values);
  remember(peer, values);
}

void ClientSettings::unanswered(const Peer& peer, std::string_view line) {
  const auto found = peers_.find(peer);
  Values values = found == peers_.end() ? Values() : found->second.values;
  for (const at::Command& command : commands_of(line)) {
    for (size_t i = 0; i < kSettings; ++i) {
      if (!selects(command, i)) continue;
      values[i] = selected_value(i, command.arguments);
      current_[i].reset();
    }
  }
  remember(peer, values);
}

void ClientSettings::answered(std::string_view answer) {
  const bool has_class = answer.find("+CME ERROR:") != answer.npos;
  const bool selected = current_[kErrors].value_or("0") != "0";
  if (!has_class && selected && answer.ends_with("\nERROR\r\n")) doubted_ = classes_;
  classes_ = has_class || (classes_ && !doubted_);
}

bool ClientSettings::touched_by(std::string_view line) {
  const auto [commands, whole, before_fault] = at::read_line(line);
  return !whole || std::any_of(commands.begin(), commands.end(), [](const at::Command& command) {
    return selects(command, kCharset) || selects(command, kStorage) || acts_on(command, kCharset) ||
           acts_on(command, kStorage);
  });
}

bool ClientSettings::forgotten(const Peer& peer, std::string_view line, bool older) {
  const std::vector<at::Command> commands = commands_of(line);
  const auto owed = evicted_.find(peer);
  for (const size_t i : {kCharset, kStorage}) {
    if (owed == evicted_.end() || !owed->second[i]) continue;
    for (const at::Command& command : commands) {
      if (selects(command, i)) break;
      if (!acts_on(command, i)) continue;
      evicted_.erase(owed);
      return true;
    }
  }
  // Of an older one it is not known whether it selected anything.
  const auto selection = std::find_if(commands.begin(), commands.end(), [](const auto& command) {
    return selects(command, kCharset);
  });
  const bool of_a_set = std::any_of(commands.begin(), selection, [](const auto& command) {
    return command.form == at::Form::kSet && contains(kSetTexts, command.name);
  });
  if ((!older && !is_dropped(peer)) || !of_a_set) return false;
  const auto found = peers_.find(peer);
  if (found != peers_.end() && found->second.values[kCharset]) return false;
  return told_.insert(peer).second;
}

void ClientSettings::initialised(std::string_view line, bool ok) {
  // What a reset brings is what it brought when it was asked for.
  const Values known = initial_;
  apply(line, ok, initial_);
  for (size_t i = 0; i < kSettings; ++i) {
    if (!initial_[i]) initial_[i] = known[i];
  }
}

// After a line of one command that failed everything is as before; of several, some may have been
// carried out; and of one that is not understood to its end nobody knows what it selected.
void ClientSettings::apply(std::string_view line, bool ok, Values& chosen) {
  const auto [commands, whole, before_fault] = at::read_line(line);
  for (const at::Command& command : commands) {
    if (ok && contains(kResets, command.name) && command.form != at::Form::kQuery &&
        command.form != at::Form::kTest) {
      lost();
      chosen = {};
    }
    for (size_t i = 0; i < kSettings; ++i) {
      if (!selects(command, i)) continue;
      if (ok) {
        chosen[i] = current_[i] = selected_value(i, command.arguments);
      } else if (commands.size() > 1) {
        current_[i].reset();
      }
    }
  }
  if (!whole) lost();
}

void ClientSettings::lost() {
  doubted_ = false;
  current_ = {};
}

void ClientSettings::reopened() {
  lost();
  classes_ = false;
  initial_ = {};
  asked_ = {};
}

// Nothing is kept of one that selected nothing.
void ClientSettings::remember(const Peer& peer, const Values& values) {
  if (!peer.known()) return;
  if (!peers_.contains(peer)) {
    const auto selected = [](const auto& value) { return value.has_value(); };
    if (std::none_of(values.begin(), values.end(), selected)) return;
    if (peers_.size() == kMostPeers) make_place();
  }
  peers_[peer] = {values, ++uses_};
  const auto owed = evicted_.find(peer);
  if (owed == evicted_.end()) return;
  for (size_t i = 0; i < kSettings; ++i) owed->second[i] &= !values[i];
}

// Whether what it selected may have been forgotten altogether: it began no later than one of those.
bool ClientSettings::is_dropped(const Peer& peer) const {
  return peer.identity != 0 ? peer.identity <= dropped_.identity
                            : peer.started != 0 && peer.started <= dropped_.started;
}

void ClientSettings::make_place() {
  const auto ended = [this](const auto& row) { return !runs_(row.first); };
  if (std::erase_if(peers_, ended) > 0) return;
  const auto oldest =
      std::min_element(peers_.begin(), peers_.end(),
                       [](const auto& a, const auto& b) { return a.second.used < b.second.used; });
  if (evicted_.size() == kMostEvicted && std::erase_if(evicted_, ended) == 0) {
    const Peer dropped = evicted_.begin()->first;
    dropped_.identity = std::max(dropped_.identity, dropped.identity);
    dropped_.started = std::max(dropped_.started, dropped.started);
    evicted_.erase(evicted_.begin());
  }
  auto& owed = evicted_[oldest->first];
  for (size_t i = 0; i < kSettings; ++i) owed[i] |= oldest->second.values[i].has_value();
  peers_.erase(oldest);
}

}  // namespace qalt::server
