// Parsing and reading a +CPBR answer of 1 to 100 entries: the library against the literal version,
// and one pass of memchr over the text as the floor.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "bench/literal_reader.h"
#include "qalt_at/commands.h"

namespace {

const std::string kName = "0041006E006E006100200042006500720067006800610075007300200032";

// As a modem in UCS2 sends it: 14-character names and 15-digit numbers.
std::string answer_of(int64_t entries) {
  std::string text;
  for (int64_t i = 1; i <= entries; ++i) {
    text += "\r\n+CPBR: " + std::to_string(i) + ",\"+49301234567890\",145,\"" + kName + "\"";
  }
  return text + "\r\n\r\nOK\r\n";
}

struct Buffers {
  char text[1 << 15];
  AtRes answer;
  PbItemList list;
};

// kCleared: how much of the record the caller clears before the parse.
template <size_t kCleared, int (*kParse)(char*, AtRes*), typename Read>
void run(benchmark::State& state, Read read) {
  const std::string answer = answer_of(state.range(0));
  auto buffers = std::make_unique<Buffers>();
  for (auto _ : state) {
    std::memcpy(buffers->text, answer.c_str(), answer.size() + 1);
    std::memset(&buffers->answer, 0, kCleared);
    if (kParse(buffers->text, &buffers->answer) != 0) state.SkipWithError("not parsed");
    read(&buffers->answer, &buffers->list);
    benchmark::DoNotOptimize(buffers->list);
  }
  const PbItem& last = buffers->list.items[state.range(0) - 1];
  if (buffers->list.count != state.range(0) || last.text != kName) {
    state.SkipWithError("not read");
  }
}

void library(benchmark::State& state) {
  run<offsetof(AtRes, Paras) + 1, Bk_Parse_At_Res>(state, CPBR_SetATResProcess);
}
void literal_version(benchmark::State& state) {
  run<sizeof(AtRes), literal::parse>(state, literal::read_entries);
}

// What no reader can do without: looking at each byte of the answer once.
void floor(benchmark::State& state) {
  const std::string answer = answer_of(state.range(0));
  for (auto _ : state) {
    const char* text = answer.c_str();
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(std::memchr(text, '\0', answer.size() + 1));
  }
}

BENCHMARK(library)->Arg(1)->Arg(10)->Arg(50)->Arg(100);
BENCHMARK(literal_version)->Arg(1)->Arg(10)->Arg(50)->Arg(100);
BENCHMARK(floor)->Arg(1)->Arg(10)->Arg(50)->Arg(100);

}  // namespace
