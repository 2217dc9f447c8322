#pragma once

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

namespace p3dgrid {

/// The records before the block dimensions of a restart file.
enum class HeaderKind : std::uint8_t {
  none,
  talven,        ///< version and equation set; run data; flow parameters of one equation set
  time_step,     ///< step count, step size, block count
  single_block,  ///< extents of the one block, step count, step size
  plot3d,        ///< an optional block count
};

/// How a restart file holds its block dimensions.
enum class DimensionKind : std::uint8_t {
  none,
  record_per_block,           ///< a record with i, j, k for each block
  one_record,                 ///< i, j, k of all blocks in one record
  one_record_with_variables,  ///< i, j, k and number of variables of all blocks in one record
  one_record_with_species,    ///< i, j, k of all blocks, then the numbers of variables and species
};

/// Properties of a restart layout.
struct LayoutTraits {
  Layout layout;                                   ///< its code
  const char* name;                                ///< the code as text
  const char* meaning;                             ///< short description
  HeaderKind header = HeaderKind::none;            ///< beginning of the header
  DimensionKind dimensions = DimensionKind::none;  ///< end of the header
  std::int32_t iparm1 = 20;                        ///< argument of `dispreadwrite`
  std::int32_t iparm2 = 300;                       ///< argument of `dispreadwrite`
  std::int32_t parameters = 0;                     ///< flow parameters at the beginning of a block
  bool more_parameters = false;    ///< further ones follow, as many as its record shows
  bool counted_variables = false;  ///< the header holds the number of variables of the blocks
  bool triplets = false;           ///< blocks begin with three values per point
  bool extensions = false;         ///< flags and the variables that they announce follow the blocks
  bool writable = true;            ///< the layout can be written
  bool one_block = false;          ///< files have exactly one block
  bool planar = false;             ///< files of two dimensions exist
  bool module_code = true;         ///< the operations of the module have it
  bool records_only = false;       ///< files are unformatted
  bool known = true;               ///< false for unknown codes

  /// Each block has a number of variables of its own.
  [[nodiscard]] constexpr bool counts_by_block() const {
    return dimensions == DimensionKind::one_record_with_variables;
  }
  /// The header holds the extents of each block.
  [[nodiscard]] constexpr bool holds_extents() const { return dimensions != DimensionKind::none; }
  /// The header holds a step count and a step size.
  [[nodiscard]] constexpr bool holds_step() const {
    return header != HeaderKind::none && header != HeaderKind::plot3d;
  }
  /// The header holds a block count if the file is multi-block.
  [[nodiscard]] constexpr bool may_hold_count() const { return header == HeaderKind::plot3d; }
};

/// The names of a block's flow parameters, such as "Mach number".
/// @param count    number of parameters
/// @param species  number of species, on which their meaning depends
[[nodiscard]] std::vector<std::string> parameter_names(std::int32_t count, std::int32_t species);

/// All layouts, in the order of their codes.
[[nodiscard]] std::span<const LayoutTraits> all_layouts();

/// The traits of a layout.
[[nodiscard]] const LayoutTraits& traits_of(Layout layout);
/// The same for a code of the module's operations, which may be unknown.
[[nodiscard]] const LayoutTraits& traits_of(std::int32_t rsttype);

/// Whether the layout has files of this coding, which may have two dimensions.
[[nodiscard]] constexpr bool has_files_of(const LayoutTraits& layout, const Coding& coding) {
  const bool encoded = !layout.records_only || coding.encoding == Encoding::unformatted;
  return encoded && (layout.planar || !is_planar(coding));
}
/// Why it has none, as a sentence.
[[nodiscard]] std::string no_files_of(const LayoutTraits& layout, const Coding& coding);

/// The variable that files of this coding leave out: in two dimensions the third momentum of a
/// solution; 0 for none.
[[nodiscard]] std::int32_t absent_variable(const LayoutTraits& layout, const Coding& coding);

/// Whether the module reads blocks with a leading record, which begins with the triplets. Known
/// quirk: it writes layout 100 in single-precision records with it and reads it without.
[[nodiscard]] bool reads_triplets(const LayoutTraits& layout, const Coding& coding);

/// The equation set of layout 0 whose header has a record of flow parameters.
inline constexpr std::int32_t equations_with_parameters = 1;

/// Values per point at the beginning of a leading record.
inline constexpr std::int64_t triplet = 3;

/// The variables that a flag after the blocks announces.
struct Extension {
  Section variables;         ///< variables of its records
  std::int32_t kept;         ///< variables that are kept when a flow array is enlarged
  std::int32_t numrstrtvar;  ///< new value of `numrstrtvar(2)`
};

/// The flag that ends the chain.
inline constexpr std::int32_t end_of_extensions = 999;

/// Most flags of a chain, including the last.
inline constexpr std::int32_t most_flags = 3;

/// The extension that a flag at a position, from 1, announces; null for none.
[[nodiscard]] const Extension* extension_of(std::int32_t flag, std::int32_t position);

}  // namespace p3dgrid

#pragma GCC visibility pop
