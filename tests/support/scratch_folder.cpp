#include "support/scratch_folder.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/recording_host.hpp"

namespace test_support {

namespace fs = std::filesystem;

InScratchFolder::InScratchFolder() : before_(fs::current_path()) {
  std::string pattern = (fs::temp_directory_path() / "p3d-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
  folder_ = pattern;
  fs::current_path(folder_);
  begin_run();
}

InScratchFolder::~InScratchFolder() {
  begin_run();  // closes what a test left open
  fs::current_path(before_);
  fs::remove_all(folder_);
}

void write_file(const std::string& name, const std::string& content) {
  // A new file each time: some file systems write one that is overwritten to the disk at once.
  if (fs::is_regular_file(name)) fs::remove(name);
  std::ofstream file(name, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + name);
}

std::string read_file(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const std::string& name) {
  return fs::exists(name);
}

bool is_open(const std::string& name) {
  for (const auto& descriptor : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::equivalent(descriptor.path(), name, gone)) return true;
  }
  return false;
}

}  // namespace test_support
