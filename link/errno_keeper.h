// errno_keeper.h - keeps errno over calls that may change it: logging, closing.
#ifndef QALT_LINK_ERRNO_KEEPER_H_
#define QALT_LINK_ERRNO_KEEPER_H_

#include <errno.h>

namespace qalt {

// errno has the same value at the end of the scope as at its start, so that the caller of a
// function that failed, logged and cleaned up still sees the cause.
class ErrnoKeeper {
 public:
  ErrnoKeeper() : value_(errno) {}
  ~ErrnoKeeper() { errno = value_; }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  int value_;
};

}  // namespace qalt

#endif  // QALT_LINK_ERRNO_KEEPER_H_
