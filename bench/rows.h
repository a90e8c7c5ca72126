// rows.h - benchmarks that become rows of the table: one body a side, the same items for each.
#ifndef QALT_BENCH_ROWS_H_
#define QALT_BENCH_ROWS_H_

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench {

// "ours", "floor", or the name of a peer; `wanted` is given with ours: bounds such as "peer<=0.5",
// "floor<=4", separated by blanks.
template <typename Body>
void side(const std::string& work, const std::string& who, int64_t items, Body body,
          const std::string& wanted = "") {
  const std::string name = work + "/" + who;
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) {
      body();
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * items);
    state.SetLabel(wanted);
  });
}

// What is measured must be the same work: a difference in results ends the program.
inline void require(bool same, const char* what) {
  if (same) return;
  std::fprintf(stderr, "%s: the sides differ\n", what);
  std::exit(1);
}

inline int measure(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace bench

#endif  // QALT_BENCH_ROWS_H_
