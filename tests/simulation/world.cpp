#include "tests/simulation/world.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

#include "at/escape.h"

namespace qalt::simulation {
namespace {

// A world in which nobody comes to an end.
constexpr Time kLongest = std::chrono::hours(24 * 365);
constexpr size_t kLongestTranscript = 64 << 20;

thread_local World::Task* t_task = nullptr;

}  // namespace

World::Task* World::current() {
  return t_task;
}

void World::spawn(std::function<void()> program) {
  Task* task = tasks_.emplace_back(std::make_unique<Task>(int(tasks_.size()))).get();
  ++running_;
  std::thread([this, task, program = std::move(program)] {
    task->baton.acquire();
    t_task = task;
    program();
    --running_;
    pass_to(next_task());
  }).detach();
  wake(task, now_);
}

void World::run() {
  pass_to(next_task());
  all_ended_.acquire();
}

void World::pass_to(Task* task) {
  (task != nullptr ? task->baton : all_ended_).release();
}

World::Task* World::next_task() {
  while (running_ != 0) {
    if (queue_.empty() || queue_.top().when > kLongest) wrong("nobody goes on any more");
    const Event event = queue_.top();
    queue_.pop();
    now_ = event.when;
    event.what();
    if (woken_ != nullptr) return std::exchange(woken_, nullptr);
  }
  return nullptr;
}

void World::wait(Time limit) {
  Task* const self = t_task;
  ++self->ticket;
  if (limit != Time::max()) wake(self, now_ + limit);
  Task* const task = next_task();
  if (task != self) {
    pass_to(task);
    self->baton.acquire();
  }
  ++self->ticket;
}

void World::wake(Task* task, Time when) {
  at(when, [this, task, ticket = task->ticket] {
    if (task->ticket == ticket) woken_ = task;
  });
}

void World::record(char kind, std::string_view bytes) {
  if (transcript_.size() > kLongestTranscript) return;
  const std::time_t seconds = std::time_t(now_.count() / 1000);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char stamp[64];
  const size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(stamp + length, sizeof stamp - length, ".%03d000Z", int(now_.count() % 1000));
  transcript_.append(stamp).append({' ', kind, ' '}).append(at::escaped(bytes)).append("\n");
}

void World::wrong(const std::string& what) {
  record('#', "WRONG: " + what);
  when_wrong(what);
  std::abort();
}

}  // namespace qalt::simulation
