#include "first_line.hpp"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

/// Moves the bytes from `first` to `end` by a distance, piece by piece. If the file grows, its last
/// piece is moved first, so that no byte is overwritten before it is read.
void move_bytes(std::fstream& file, std::int64_t first, std::int64_t end, std::int64_t places) {
  constexpr std::int64_t piece = 1 << 20;
  std::vector<char> bytes(static_cast<std::size_t>(std::min(piece, end - first)));
  while (first < end) {
    const std::int64_t count = std::min(piece, end - first);
    const std::int64_t from = places > 0 ? end - count : first;
    file.seekg(from).read(bytes.data(), count);
    file.seekp(from + places).write(bytes.data(), count);
    (places > 0 ? end : first) += places > 0 ? -count : count;
  }
}

}  // namespace

void replace_first_line(const std::string& path, const std::string& line) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  std::string old;
  std::getline(file, old);
  const auto places = std::ssize(line) - std::ssize(old);
  const auto end = static_cast<std::int64_t>(std::filesystem::file_size(path));
  move_bytes(file, std::ssize(old), end, places);
  file.seekp(0).write(line.data(), std::ssize(line));
  file.close();
  if (!file) throw Unusable("its first line could not be replaced");
  if (places < 0) std::filesystem::resize_file(path, static_cast<std::uintmax_t>(end + places));
}

}  // namespace p3dgrid::tool
