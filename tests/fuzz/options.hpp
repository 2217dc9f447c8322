#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "MOD_P3DReader.hpp"

namespace fuzz {

/// What an input begins with: how the operation is called. The rest of the input is what the files
/// hold. Every combination of bytes means something, and zeros mean the most ordinary call.
struct Options {
  std::uint8_t format = 0;          ///< see `format_of`
  std::uint8_t flags = 0;           ///< bits of `Flag`
  std::uint8_t layout = 0;          ///< see `layout_code`
  std::uint8_t nfilesect = 0;       ///< see `sections_in_use`
  std::int8_t sections[3][2] = {};  ///< first and last variable of sections 1 to 3
  std::int8_t numrstrtvar[3] = {};  ///< their numbers of variables
  std::int8_t nblocks = 0;          ///< block count of the caller
  std::uint8_t extents[3][3] = {};  ///< i, j, k of its blocks 1 to 3, see `extent_of`
  std::uint8_t oddities = 0;        ///< bits of `Oddity`: what is unusual
  std::int8_t variable = 0;         ///< number of the variable that is wanted
  std::int8_t nparamrows = 0;       ///< rows of flow parameters in use
  std::uint8_t iflag = 0;           ///< two bits for each entry of `iflag`, see `flag_of`
  std::uint8_t allocated = 0;       ///< two bits each: rows of `sqvar`, `dqvar`, `nfvar` before
  std::uint8_t other_format = 0;    ///< format of the grid that a restart file is checked against,
                                    ///< or by how many pieces of 4096 bytes a file is stretched
  std::uint8_t split[2] = {};       ///< length of the first file, or of each but the last, or where
                                    ///< a file is stretched
  std::int8_t nfvar = 0;            ///< what `nfvar` holds before
};
static_assert(sizeof(Options) == 32 && alignof(Options) == 1);

enum Flag : std::uint8_t {
  double_precision = 1,
  multiblock = 2,
  blanking = 4,
  header_only = 8,           ///< `readallvars` is false; grid header: without the point count
  returns_from_status = 16,  ///< the host returns from failed allocations
  ends_at_read_error = 32,   ///< the host ends the run where a read has failed
  quiet = 64,
  twice = 128,  ///< the call is made again, over what the first has left
};

enum Oddity : std::uint8_t {
  short_extents = 1,       ///< extents of one block less
  short_blockpoints = 2,   ///< points of one block less
  more_blockpoints = 4,    ///< a point more in each block
  short_values = 8,        ///< the flow array lacks a point
  results_allocated = 16,  ///< results are allocated already
  no_extents_wanted = 32,  ///< the operation's form without extents
  other_byte_order = 64,   ///< files have the other byte order than the machine
  stretched = 128,         ///< a file is stretched, and block 1 of the caller too unless it is text
};

/// 0 to 2 are the formats, as are the next three, with the rarer traits; the others are none.
[[nodiscard]] mod_p3dgrid::integer format_of(std::uint8_t byte);
/// Whether files have two dimensions and record markers of 8 bytes.
[[nodiscard]] bool has_rare_traits(std::uint8_t byte);
[[nodiscard]] bool is_format(std::uint8_t byte);
/// 2, 3, 0, 1, 100, 101, 102 and 7, which is no layout, in turn.
[[nodiscard]] mod_p3dgrid::integer layout_code(const Options& options);
/// The byte that stands for a layout.
[[nodiscard]] std::uint8_t byte_of_layout(mod_p3dgrid::integer rsttype);
/// 1, 2, 3, 0, 30, 31 and -1, in turn.
[[nodiscard]] mod_p3dgrid::integer sections_in_use(const Options& options);
/// Where a file is split or stretched.
[[nodiscard]] std::size_t split_length(const Options& options,
                                       std::span<const std::uint8_t> content);
inline constexpr std::size_t stretch_unit = 4096;
/// By what the extents of a stretched block 1 are multiplied.
inline constexpr mod_p3dgrid::integer stretched_extents = 8;
/// Lower half of the byte: 14 is -1, 15 is 70000 (two of them are more points than 32 bits count).
[[nodiscard]] mod_p3dgrid::integer extent_of(std::uint8_t byte);
/// 0, 1, 41 or 999.
[[nodiscard]] mod_p3dgrid::integer flag_of(const Options& options, int position);
[[nodiscard]] inline bool has(const Options& options, Flag flag) {
  return (options.flags & flag) != 0;
}
[[nodiscard]] inline bool has(const Options& options, Oddity oddity) {
  return (options.oddities & oddity) != 0;
}

/// The caller's description of the blocks.
struct Blocks {
  explicit Blocks(const Options& options);
  mod_p3dgrid::integer nblocks;
  std::vector<mod_p3dgrid::integer> idim, jdim, kdim, blockpoints;
  std::int64_t total = 0;  ///< points of all blocks, as far as they can be counted
};

/// An input taken apart. False if it is too short to hold options.
[[nodiscard]] bool take_apart(std::span<const std::uint8_t> input, Options& options,
                              std::span<const std::uint8_t>& content);

}  // namespace fuzz
