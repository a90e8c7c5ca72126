// world.h - the time of the simulation and who acts in it, one at a time.
//
// Nothing here waits: time goes on from event to event. A task is a client's program on a thread of
// its own, and runs only while it has the baton. One that waits for something carries out the
// events that are due until the one that wakes it; where that wakes another task, the baton goes
// there. So the order of everything is that of the events, which a seed decides.
#ifndef QALT_TESTS_SIMULATION_WORLD_H_
#define QALT_TESTS_SIMULATION_WORLD_H_

#include <semaphore.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <queue>
#include <string>
#include <string_view>
#include <vector>

namespace qalt::simulation {

using Time = std::chrono::milliseconds;  // since the beginning of the world

// What a task waits for. (A semaphore of the standard library may sleep for ever in some releases.)
class Baton {
 public:
  Baton() { sem_init(&semaphore_, 0, 0); }
  void release() { sem_post(&semaphore_); }
  void acquire() {
    while (sem_wait(&semaphore_) != 0) continue;
  }

 private:
  sem_t semaphore_;
};

class World {
 public:
  struct Task {
    const int number;  // in the order in which they were spawned
    Baton baton = {};
    uint64_t ticket = 0;  // of the last wait
  };

  Time now() const { return now_; }
  // Events of one time are carried out in the order in which they were asked for.
  void at(Time when, std::function<void()> what) {
    queue_.push({when, ++events_, std::move(what)});
  }
  void after(Time delay, std::function<void()> what) { at(now_ + delay, std::move(what)); }

  // A program, begun by run().
  void spawn(std::function<void()> program);
  // Carries everything out until all programs have ended. The world stays until the process ends.
  void run();

  // For tasks. None: the caller is no task, and its calls are the real ones.
  static Task* current();
  // Lets time pass until wake(), or for `limit`.
  void wait(Time limit = Time::max());
  void wake(Task* task) { wake(task, now_); }

  // What happened, in the form of the server's transcripts: `kind` is '>', '<' or '#'.
  void record(char kind, std::string_view bytes);
  const std::string& transcript() const { return transcript_; }
  // Something that must not be: called once, and does not return.
  std::function<void(const std::string& what)> when_wrong;
  void wrong(const std::string& what);

 private:
  struct Event {
    Time when;
    uint64_t number;
    std::function<void()> what;
    bool operator<(const Event& other) const {  // the earliest is on top of the queue
      return when != other.when ? when > other.when : number > other.number;
    }
  };

  // Carries events out up to the one that gives the baton to a task, which is returned; none when
  // all tasks have ended.
  Task* next_task();
  void pass_to(Task* task);
  // If it still waits then as it does now.
  void wake(Task* task, Time when);

  Time now_{0};
  uint64_t events_ = 0;
  std::priority_queue<Event> queue_;
  std::vector<std::unique_ptr<Task>> tasks_;
  size_t running_ = 0;
  Task* woken_ = nullptr;  // by the event that is carried out
  Baton all_ended_;
  std::string transcript_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_WORLD_H_
