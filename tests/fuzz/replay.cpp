// Runs a fuzz target over folders of kept inputs, without a fuzzer: what every build does with the
// corpus.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/property.h"

int main(int argc, char** argv) {
  size_t runs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::fprintf(stderr, "%s\n", entry.path().c_str());
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      ++runs;
    }
  }
  std::fprintf(stderr, "%zu inputs\n", runs);
  return runs == 0;
}
