// ledger.h - what an owner may find at each of its indices.
//
// After a write or delete that succeeded, that and nothing else. One that failed may have been
// carried out or not, so both the new content and those before it are allowed until a read tells.
#ifndef QALT_SOAK_LEDGER_H_
#define QALT_SOAK_LEDGER_H_

#include <map>
#include <string>
#include <vector>

namespace soak {

// A contact; empty is none. Names have characters up to U+FFFF.
struct Content {
  std::wstring name;
  std::string number;

  bool empty() const { return name.empty() && number.empty(); }
  bool operator==(const Content& other) const = default;
};

using Contents = std::map<int, Content>;

class Ledger {
 public:
  Ledger(int first, int count);

  int first() const { return first_; }
  int last() const { return first_ + static_cast<int>(allowed_.size()) - 1; }
  void wrote(int index, const Content& content, bool succeeded);
  // A read from `first` to `last` gave `found`. The indices that hold something that is not
  // allowed; the others are settled.
  std::vector<int> read(int first, int last, const Contents& found);
  const std::vector<Content>& allowed(int index) const { return allowed_[size_t(index - first_)]; }

 private:
  int first_;
  std::vector<std::vector<Content>> allowed_;
};

// "+CPBR: 5,"+49",145,"0041"", as a modem with its texts in UCS2 answers a read of the contact.
std::string answer_line(int index, const Content& content);

}  // namespace soak

#endif  // QALT_SOAK_LEDGER_H_
