// held_lock.h - a mutex held for a scope, from which no thread is cancelled: the log calls in there
// are cancellation points, and a cancelled thread would never give the mutex back.
#ifndef QALT_COMMON_HELD_LOCK_H_
#define QALT_COMMON_HELD_LOCK_H_

#include <pthread.h>

namespace qalt {

class HeldLock {
 public:
  explicit HeldLock(pthread_mutex_t& mutex) : mutex_(mutex) {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
    pthread_mutex_lock(&mutex_);
  }
  ~HeldLock() {
    pthread_mutex_unlock(&mutex_);
    int disabled;
    pthread_setcancelstate(before_, &disabled);
  }
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;

 private:
  pthread_mutex_t& mutex_;
  int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace qalt

#endif  // QALT_COMMON_HELD_LOCK_H_
