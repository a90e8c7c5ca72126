#include "cli/second_look.h"

#include <algorithm>

#include "cli/failure.h"

namespace qalt::cli {

void expect_same(const Reading& shown, const Reading& now) {
  const auto same_contact = [](const Contact& a, const Contact& b) {
    return a.index == b.index && same_fields(a, b) && a.further == b.further;
  };
  const auto same_index = [](const Unreadable& a, const Unreadable& b) {
    return a.index == b.index;
  };
  if (!std::ranges::equal(shown.contacts, now.contacts, same_contact) ||
      !std::ranges::equal(shown.unreadable, now.unreadable, same_index)) {
    throw Failure(Cause::kCollision,
                  "another client has changed the contacts since the question, nothing was changed",
                  "try again");
  }
}

}  // namespace qalt::cli
