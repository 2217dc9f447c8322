#pragma once

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

namespace p3dgrid {

/// What stands in front of the block dimensions of a restart file.
enum class HeaderKind : std::uint8_t {
  none,
  talven,        ///< version and equation set, run data, for one equation set flow parameters
  time_step,     ///< step count, step size, block count
  single_block,  ///< extents of the one block, step count, step size
  plot3d,        ///< a block count, where the file has one
};

/// How a restart file holds its block dimensions.
enum class DimensionKind : std::uint8_t {
  none,
  record_per_block,           ///< i, j, k of one block to a record
  one_record,                 ///< i, j, k of all blocks in one record
  one_record_with_variables,  ///< i, j, k and number of variables of all blocks in one record
};

/// Everything that depends on the restart layout code.
struct LayoutTraits {
  Layout layout;                                   ///< its code
  const char* name;                                ///< the code as text
  const char* meaning;                             ///< for people
  HeaderKind header = HeaderKind::none;            ///< what its header begins with
  DimensionKind dimensions = DimensionKind::none;  ///< what its header ends with
  std::int32_t iparm1 = 20;                        ///< how a host is told of it
  std::int32_t iparm2 = 300;                       ///< the same
  std::int32_t parameters = 0;                     ///< flow parameters that a block begins with
  bool counted_variables = false;  ///< the header tells the number of variables of each block
  bool triplets = false;           ///< the first record of a block begins with three values a point
  bool extensions = false;         ///< flags and the variables that they announce follow the blocks
  bool writable = true;            ///< files of it can be written
  bool one_block = false;          ///< there is no place for a second block
  bool known = true;               ///< false for any code but those of a layout

  /// The header holds the extents of each block.
  [[nodiscard]] constexpr bool holds_extents() const { return dimensions != DimensionKind::none; }
  /// The header holds a step count and a step size.
  [[nodiscard]] constexpr bool holds_step() const {
    return header != HeaderKind::none && header != HeaderKind::plot3d;
  }
  /// Begins with a block count, if it is told to.
  [[nodiscard]] constexpr bool may_hold_count() const { return header == HeaderKind::plot3d; }
};

/// All layouts, in the order of their codes.
[[nodiscard]] std::span<const LayoutTraits> all_layouts();

/// The traits of a layout.
[[nodiscard]] const LayoutTraits& traits_of(Layout layout);
/// The same by a caller's code, which need not be that of a layout.
[[nodiscard]] const LayoutTraits& traits_of(std::int32_t rsttype);

/// Whether the blocks are read beginning with their triplets, in the leading record. Layout 100 is
/// read without it from single-precision records, although it is never written so.
[[nodiscard]] bool reads_triplets(const LayoutTraits& layout, const Coding& coding);

/// The equation set of layout 0 whose header goes on with a record of flow parameters.
inline constexpr std::int32_t equations_with_parameters = 1;

/// Values per point at the head of a leading record.
inline constexpr std::int64_t triplet = 3;

/// The variables that a flag behind the blocks announces.
struct Extension {
  Section variables;         ///< that its records hold
  std::int32_t kept;         ///< variables that stay when a flow array is enlarged
  std::int32_t numrstrtvar;  ///< what the second entry of that count becomes
};

/// The flag that ends the chain.
inline constexpr std::int32_t end_of_extensions = 999;

/// Flags of a chain at most, the last included.
inline constexpr std::int32_t most_flags = 3;

/// What flag `flag` at position `position`, from 1, announces; null for nothing.
[[nodiscard]] const Extension* extension_of(std::int32_t flag, std::int32_t position);

}  // namespace p3dgrid

#pragma GCC visibility pop
