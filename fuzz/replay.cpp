// Runs a fuzz target over files and folders of kept inputs, without a fuzzer: what every build does
// with the corpus.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz/property.h"

namespace {

namespace fs = std::filesystem;

std::set<fs::path> inputs(const fs::path& path) {
  std::set<fs::path> files;
  if (fs::is_directory(path)) {
    for (const auto& entry : fs::directory_iterator(path)) files.insert(entry.path());
  } else {
    files.insert(path);
  }
  return files;
}

void run(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  size_t runs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& path : inputs(argv[i])) {
      std::fprintf(stderr, "%s\n", path.filename().c_str());
      run(path);
      ++runs;
    }
  }
  std::fprintf(stderr, "%zu inputs\n", runs);
  return runs == 0;
}
