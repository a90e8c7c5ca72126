#include "cli/import_plan.h"

#include <algorithm>
#include <set>
#include <utility>

#include "cli/output.h"

namespace qalt::cli {
namespace {

class Planner {
 public:
  Planner(const Phonebook& book, const Reading& stored, const ImportRules& rules)
      : book_(book), rules_(rules) {
    for (const Contact& contact : stored.contacts) stored_[contact.index] = contact;
    for (const Unreadable& gap : stored.unreadable) unreadable_[gap.index] = gap;
  }

  ImportPlan plan(const FileContents& contents) {
    plan_.limits = rules_.limits;
    plan_.problems = contents.problems;
    std::vector<Record> placed;
    std::vector<Record> homeless;
    for (Record record : contents.records) {
      if (!leave_out_surplus(record)) continue;
      (record.contact.index == kNoIndex ? homeless : placed).push_back(std::move(record));
    }
    for (const Record& record : placed) take_place(record);
    // What is stored already keeps its place, before others look for one.
    std::vector<Record> added;
    for (const Record& record : homeless) {
      if (!is_stored(record) && is_writable(record)) added.push_back(record);
    }
    for (const Record& record : added) find_place(record);
    if (rules_.replace) {
      for (const auto& [index, contact] : stored_) {
        if (!claimed_.contains(index)) plan_.deletes.push_back(index);
      }
      for (const auto& [index, gap] : unreadable_) {
        if (!claimed_.contains(index)) plan_.kept.push_back(gap);
      }
    }
    for (int index = book_.info().first; index <= book_.info().last; ++index) {
      const bool used = stored_.contains(index) || unreadable_.contains(index);
      if (!used && !claimed_.contains(index)) plan_.spare.push_back(index);
    }
    for (auto* list : {&plan_.problems, &plan_.tried}) {
      std::stable_sort(list->begin(), list->end(),
                       [](const Problem& a, const Problem& b) { return a.line < b.line; });
    }
    return std::move(plan_);
  }

 private:
  void problem(const Record& record, const std::string& what) {
    plan_.problems.push_back({record.line, what});
  }

  // Leaves out what the phonebook has no field for, where that is allowed.
  bool leave_out_surplus(Record& record) {
    const Family family = book_.info().family;
    std::vector<std::string> surplus = record.surplus;
    const auto leave_out = [&](const char* key, std::string& value) {
      if (value.empty()) return;
      surplus.push_back(std::string(key) + " \"" + value + "\"");
      if (rules_.force) value.clear();
    };
    for (const FieldRow& field : kFields) {
      if (!detail::carries(family, field.type)) leave_out(field.key, record.contact.*field.member);
    }
    if (family != Family::kStandard) leave_out("further", record.contact.further);
    for (const std::string& what : surplus) {
      if (rules_.force) {
        plan_.dropped.push_back({record.line, what});
      } else {
        problem(record, "the phonebook has no field for " + what + "; --force leaves it out");
      }
    }
    return surplus.empty() || rules_.force;
  }

  // Asked of what is not stored: what is, is good as it stands.
  bool is_writable(const Record& record) {
    const auto checked = book_.check(record.contact, rules_.limits);
    if (!checked) {
      problem(record, checked.error().what);
      return false;
    }
    const auto announced = book_.check(record.contact);
    if (!announced) plan_.tried.push_back({record.line, announced.error().what});
    return true;
  }

  // A file that does not tell of further parameters says nothing against those that stand there.
  static bool is_same(const Contact& stored, const Record& record) {
    return says_all(stored, record.contact) &&
           (!record.tells_further || says_all(record.contact, stored));
  }

  void take_place(const Record& record) {
    const int index = record.contact.index;
    if (!claimed_.insert(index).second) {
      problem(record, "index " + std::to_string(index) + " stands twice in the file");
      return;
    }
    const auto occupant = stored_.find(index);
    const bool occupied = occupant != stored_.end();
    if (occupied && is_same(occupant->second, record)) {
      ++plan_.unchanged;
      return;
    }
    if (!is_writable(record)) return;
    const bool hidden = unreadable_.contains(index);
    const std::string label = occupied ? label_of_occupant(occupant->second)
                              : hidden ? "a contact that cannot be read"
                                       : "";
    if (!label.empty() && !rules_.force && !rules_.replace) {
      problem(record, "index " + std::to_string(index) + " is occupied by " + label +
                          "; --force overwrites it");
      return;
    }
    plan_.writes.push_back({record.contact, label, false});
  }

  // Each stored contact stands for one record only.
  bool is_stored(const Record& record) {
    for (auto [same, end] = by_label().equal_range(label_of(record.contact)); same != end; ++same) {
      const auto& [index, contact] = *stored_.find(same->second);
      if (is_same(contact, record) && claimed_.insert(index).second) {
        ++plan_.unchanged;
        return true;
      }
    }
    return false;
  }

  void find_place(const Record& record) {
    Contact contact = record.contact;
    contact.index = free_index();
    if (contact.index == kNoIndex) {
      ++plan_.without_place;
      return;
    }
    claimed_.insert(contact.index);
    const auto occupant = stored_.find(contact.index);
    plan_.writes.push_back(
        {contact, occupant == stored_.end() ? "" : label_of_occupant(occupant->second), true});
  }

  // Further parameters go with the contact that is overwritten.
  static std::string label_of_occupant(const Contact& contact) {
    return label_of(contact) + (contact.further.empty() ? "" : " with further parameters");
  }

  const std::multimap<std::string, int>& by_label() {
    if (labels_.empty()) {
      for (const auto& [index, contact] : stored_) labels_.emplace(label_of(contact), index);
    }
    return labels_;
  }

  // The lowest index that is free; where the file replaces everything, else the lowest one that it
  // does not keep.
  int free_index() {
    for (; next_free_ <= book_.info().last; ++next_free_) {
      if (!claimed_.contains(next_free_) && !unreadable_.contains(next_free_) &&
          (rules_.replace || !stored_.contains(next_free_))) {
        return next_free_++;
      }
    }
    return kNoIndex;
  }

  const Phonebook& book_;
  const ImportRules& rules_;
  std::map<int, Contact> stored_;
  std::multimap<std::string, int> labels_;
  std::map<int, Unreadable> unreadable_;
  std::set<int> claimed_;
  int next_free_ = book_.info().first;
  ImportPlan plan_;
};

}  // namespace

ImportPlan plan_import(const Phonebook& book, const Reading& stored, const FileContents& contents,
                       const ImportRules& rules) {
  return Planner(book, stored, rules).plan(contents);
}

}  // namespace qalt::cli
