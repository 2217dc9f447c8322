#include "options.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace fuzz {
namespace {

using mod_p3dgrid::integer;

constexpr std::array<integer, 8> layouts{2, 3, 0, 1, 100, 101, 102, 7};
constexpr std::array<integer, 7> section_counts{1, 2, 3, 0, 30, 31, -1};
constexpr std::array<integer, 4> extension_flags{0, 1, 41, 999};

constexpr std::int64_t most_points = 25000;
constexpr std::int64_t most_counted = std::numeric_limits<integer>::max();

/// Whatever the caller says, it has extents of so many blocks.
constexpr std::size_t most_blocks = 8;

}  // namespace

integer format_of(std::uint8_t byte) {
  const int code = byte % 8;
  return code < 6 ? code % 3 : code == 6 ? 3 : -1;
}

bool has_rare_traits(std::uint8_t byte) {
  return byte % 8 >= 3 && byte % 8 < 6;
}

bool is_format(std::uint8_t byte) {
  return format_of(byte) >= 0 && format_of(byte) <= 2;
}

integer layout_code(const Options& options) {
  return layouts[options.layout % layouts.size()];
}

std::uint8_t byte_of_layout(integer rsttype) {
  return static_cast<std::uint8_t>(std::ranges::find(layouts, rsttype) - layouts.begin());
}

integer sections_in_use(const Options& options) {
  return section_counts[options.nfilesect % section_counts.size()];
}

integer extent_of(std::uint8_t byte) {
  const integer extent = byte % 16;
  return extent == 14 ? -1 : extent == 15 ? 70000 : extent;
}

integer flag_of(const Options& options, int position) {
  return extension_flags[(options.iflag >> (2 * (position - 1))) % extension_flags.size()];
}

Blocks::Blocks(const Options& options) : nblocks(options.nblocks) {
  const std::size_t described =
      std::min(static_cast<std::size_t>(std::max(nblocks, 0)), most_blocks);
  for (std::size_t b = 0; b < described; ++b) {
    const auto& extents = options.extents[b % 3];
    const bool larger = b == 0 && has(options, stretched) && format_of(options.format) != 1;
    const integer factor = larger ? stretched_extents : 1;
    idim.push_back(extent_of(extents[0]) * factor);
    jdim.push_back(extent_of(extents[1]) * factor);
    kdim.push_back(extent_of(extents[2]) * factor);
    const std::int64_t layer = std::int64_t{idim.back()} * jdim.back();
    // A large block costs more time than it finds, unless nobody can count its points.
    if (layer * kdim.back() > most_points && layer <= most_counted) kdim.back() = 1;
    if (layer > most_points && layer <= most_counted) kdim.back() = 0;
    const std::int64_t points = std::clamp<std::int64_t>(layer * kdim.back(), 0, most_points);
    blockpoints.push_back(static_cast<integer>(points) + (has(options, more_blockpoints) ? 1 : 0));
    total += points;
  }
  if (has(options, short_extents) && described > 0) kdim.pop_back();
  if (has(options, short_blockpoints) && described > 0) blockpoints.pop_back();
}

std::size_t split_length(const Options& options, std::span<const std::uint8_t> content) {
  const std::size_t length = options.split[0] + std::size_t{256} * options.split[1];
  return std::min(length, content.size());
}

bool take_apart(std::span<const std::uint8_t> input, Options& options,
                std::span<const std::uint8_t>& content) {
  if (input.size() < sizeof options) return false;
  std::memcpy(&options, input.data(), sizeof options);
  content = input.subspan(sizeof options);
  return true;
}

}  // namespace fuzz
