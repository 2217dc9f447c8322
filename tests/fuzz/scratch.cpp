#include "scratch.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "host.hpp"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

std::string& folder() {
  static std::string& name = *new std::string;
  return name;
}

void make_folder() {
  folder() = (fs::temp_directory_path() / "p3d-fuzz-XXXXXX").string();
  require(::mkdtemp(folder().data()) != nullptr, "there is a folder for temporary files");
  std::atexit([] {
    std::error_code gone;
    fs::remove_all(folder(), gone);
  });
}

}  // namespace

const std::string& scratch_folder() {
  if (folder().empty()) make_folder();
  return folder();
}

std::string scratch_path(std::string_view name) {
  return scratch_folder() + "/" + std::string(name);
}

void put_file(std::string_view name, std::span<const std::uint8_t> content) {
  constexpr mode_t permissions = 0600;
  const int file = ::open(scratch_path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, permissions);
  const auto length = static_cast<ssize_t>(content.size());
  require(
      file >= 0 && ::write(file, content.data(), content.size()) == length && ::close(file) == 0,
      "a file can be written");
}

void remove_file(std::string_view name) {
  ::unlink(scratch_path(name).c_str());
}

bool file_there(std::string_view name) {
  return ::access(scratch_path(name).c_str(), F_OK) == 0;
}

}  // namespace fuzz
