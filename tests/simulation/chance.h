// chance.h - numbers by chance, the same on every machine: what a seed gives depends on nothing
// else. (The distributions of the standard library are each library's own.)
#ifndef QALT_TESTS_SIMULATION_CHANCE_H_
#define QALT_TESTS_SIMULATION_CHANCE_H_

#include <cstdint>

namespace qalt::simulation {

class Chance {
 public:
  explicit Chance(uint64_t seed) : state_(seed) {}

  // SplitMix64.
  uint64_t next() {
    uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
    z = (z ^ z >> 27) * 0x94D049BB133111EBu;
    return z ^ z >> 31;
  }
  int below(int count) { return int(next() % uint64_t(count)); }
  int between(int first, int last) { return first + below(last - first + 1); }
  // True once in `count` times; never where that is 0.
  bool one_in(int count) { return count > 0 && below(count) == 0; }
  // One of a table's rows.
  template <typename Table>
  auto& of(Table& table) {
    return table[size_t(below(int(table.size())))];
  }
  // A source of its own: how often it is asked changes nothing here.
  Chance branch() { return Chance(next()); }

 private:
  uint64_t state_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_CHANCE_H_
