/// Runs a target on the files of the folders that are named, one after another.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_of(const fs::path& folder) {
  std::vector<fs::path> files;
  if (!fs::exists(folder)) return files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

void replay(const fs::path& path) {
  std::fprintf(stderr, "%s\n", path.c_str());
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int count, char** arguments) {
  int replayed = 0;
  for (int n = 1; n < count; ++n) {
    for (const fs::path& path : files_of(arguments[n])) {
      replay(path);
      ++replayed;
    }
  }
  const auto [done, failed_reads, run_ends] = fuzz::tally();
  std::fprintf(stderr, "%d files replayed: %d calls done, %d failed reads, %d ends of the run\n",
               replayed, done, failed_reads, run_ends);
  return replayed > 0 ? 0 : 1;
}
