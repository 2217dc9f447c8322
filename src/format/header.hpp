#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

#include "p3dgrid/layout.hpp"
#include "p3dgrid/run_data.hpp"
#include "recordio/record_list.hpp"

/// The header records of grid and restart files. `visit(list)` reads, writes or measures one
/// record; it may throw.
namespace p3dgrid {

namespace recordio = mod_p3dgrid::recordio;

/// Kind of the reals of a body, and of coordinates. Text has the digits of singles.
[[nodiscard]] constexpr recordio::FileKind real_kind(const Coding& coding) {
  return holds_doubles(coding) ? recordio::FileKind::real8 : recordio::FileKind::real4;
}

/// The other kind of reals than `Real`.
template <class Real>
using OtherReal =
    std::conditional_t<std::is_same_v<std::remove_const_t<Real>, float>, double, float>;

/// The name of the precision in messages.
template <class Real>
[[nodiscard]] constexpr const char* precision_name() {
  return std::is_same_v<Real, float> ? "single" : "double";
}

/// Whether the file and an array of `Real` hold reals of different kinds; false for text. Such an
/// array is read and written through a staging array of the file's kind.
template <class Real>
[[nodiscard]] constexpr bool needs_staging(const Coding& coding) {
  return !is_text(coding) && real_kind(coding) != recordio::kind_of<Real>();
}

/// Kind of the time-step size of a header. Text has the digits of a double.
[[nodiscard]] constexpr recordio::FileKind step_kind(const Coding& coding) {
  return holds_singles(coding) ? recordio::FileKind::real4 : recordio::FileKind::real8;
}

/// Records of older time levels per block of layout 0 for a time-integration scheme.
[[nodiscard]] constexpr std::int32_t older_levels(std::int32_t itimeint) {
  return itimeint == 3 ? 2 : itimeint >= 2 ? 1 : 0;
}

/// The same for a coding: text has none.
[[nodiscard]] constexpr std::int32_t older_levels(const Coding& coding, std::int32_t itimeint) {
  return is_text(coding) ? 0 : older_levels(itimeint);
}

/// The form of a PLOT3D solution, which has the same header as a grid.
[[nodiscard]] inline RestartForm with_header_of(const GridForm& grid) {
  return {.layout = Layout::solution, .coding = grid.coding, .multiblock = grid.multiblock};
}

/// Limit on the points of all blocks, so that numbers of values and bytes fit 64 bits.
inline constexpr std::int64_t most_points = std::int64_t{1} << 36;

/// Adds the points of a block. False for extents that no block can have, and above the limit.
[[nodiscard]] constexpr bool add_points(std::int64_t& points, const BlockExtents& block) {
  if (block.i < 0 || block.j < 0 || block.k < 0) return false;
  const std::int64_t plane = std::int64_t{block.i} * block.j;  // 31 bits times 31 bits
  if (plane > most_points || (plane > 0 && block.k > most_points / plane)) return false;
  points += plane * block.k;
  return points <= most_points;
}

/// The values of a restart header. Single-block headers contain the extents.
struct HeaderValues : RunData {
  std::int32_t nblocks = 1, i = 0, j = 0, k = 0;
};

/// Walks the records before the block dimensions of a restart file.
/// @param header  `HeaderValues`, const for writing, or references to variables of these names
template <class Header, class Visit>
void walk_lead(const LayoutTraits& layout, const Coding& coding, bool multiblock, Header& header,
               Visit&& visit) {
  using recordio::scalar;
  const auto record = [&](auto... values) {
    using Memory = std::remove_pointer_t<std::common_type_t<decltype(values.memory)...>>;
    visit(recordio::RecordList<Memory>{values...});
  };
  const auto step = [&] { return recordio::stored_as(step_kind(coding), scalar(header.dtau)); };
  switch (layout.header) {
    case HeaderKind::none:
      return;
    case HeaderKind::talven:
      record(scalar(header.fileversion), scalar(header.eqid));
      record(scalar(header.nblocks), scalar(header.talnvar), scalar(header.itimeint),
             scalar(header.ibeta), scalar(header.nstep), step());
      if (header.eqid != equations_with_parameters) return;
      return record(scalar(header.isgsmodel), scalar(header.talre), scalar(header.talxm1),
                    scalar(header.talalfa), scalar(header.talbeta), scalar(header.talgam),
                    scalar(header.tals1), scalar(header.talpr), scalar(header.talprt));
    case HeaderKind::time_step:
      return record(scalar(header.nstep), step(), scalar(header.nblocks));
    case HeaderKind::single_block:
      return record(scalar(header.i), scalar(header.j), scalar(header.k), scalar(header.nstep),
                    step());
    case HeaderKind::plot3d:
      if (multiblock) record(scalar(header.nblocks));
  }
}

/// Walks the block dimensions of a restart file; those of a grid are `DimensionKind::one_record`.
/// @param columns  arrays with an entry per block: i, j and k extents and, if the file has them,
///                 variable counts; const for writing. Values that a read leaves out, or does not
///                 reach before it fails, are unchanged. Of a file of two dimensions the k extents
///                 are read as 1.
/// @param totals   numbers behind those of the blocks: of `one_record_with_species` the number of
///                 variables and that of species
template <class Int, class Visit>
void walk_dimensions(DimensionKind kind, const Coding& coding, std::int32_t nblocks,
                     std::span<Int* const> columns, Visit&& visit,
                     std::span<Int* const> totals = {}) {
  using recordio::scalar;
  if (kind == DimensionKind::none) return;
  if (is_planar(coding)) {
    constexpr std::size_t k = 2;
    if constexpr (!std::is_const_v<Int>) std::fill_n(columns[k], std::max(nblocks, 0), 1);
    std::vector<Int*> held(columns.begin(), columns.end());
    held.erase(held.begin() + k);
    return walk_dimensions<Int>(kind, Coding(), nblocks, held, visit, totals);
  }
  if (kind == DimensionKind::record_per_block) {
    for (std::int32_t b = 0; b < nblocks; ++b) {
      visit(recordio::RecordList<recordio::MemoryOf<Int>>{
          scalar(columns[0][b]), scalar(columns[1][b]), scalar(columns[2][b])});
    }
    return;
  }
  // In the file the entries of one block are adjacent.
  std::vector<std::int32_t> table(columns.size() * static_cast<std::size_t>(std::max(nblocks, 0)) +
                                  totals.size());
  const auto for_each_entry = [&](auto move) {
    auto value = table.begin();
    for (std::int32_t b = 0; b < nblocks; ++b) {
      for (Int* const column : columns) move(*value++, column[b]);
    }
    for (Int* const total : totals) move(*value++, *total);
  };
  for_each_entry([](std::int32_t& value, Int& entry) { value = entry; });
  const recordio::RecordList<recordio::MemoryOf<Int>> list{
      recordio::values(static_cast<Int*>(table.data()), std::ssize(table))};
  if constexpr (std::is_const_v<Int>) {
    visit(list);
  } else {
    const auto distribute = [&] {
      for_each_entry([](std::int32_t& value, Int& entry) { entry = value; });
    };
    try {
      visit(list);
    } catch (...) {
      distribute();
      throw;
    }
    distribute();
  }
}

/// The block dimensions of a header, and the counts beside them.
struct BlockDimensions {
  Extents extents = {};
  std::vector<std::int32_t> variables = {};  ///< of each block; empty if the header has none
  std::int32_t species = 0;
};

/// Reads the block dimensions of a header.
template <class Visit>
[[nodiscard]] BlockDimensions read_block_dimensions(DimensionKind kind, const Coding& coding,
                                                    std::int32_t nblocks, Visit&& visit) {
  BlockDimensions read;
  auto& [extents, variables, species] = read;
  std::vector<std::int32_t*> columns;
  const auto add = [&](std::vector<std::int32_t>& column) {
    column.resize(static_cast<std::size_t>(nblocks));
    columns.push_back(column.data());
  };
  for (auto* column : {&extents.i, &extents.j, &extents.k}) add(*column);
  if (kind == DimensionKind::one_record_with_variables) add(variables);
  std::int32_t of_each = 0;
  std::vector<std::int32_t*> totals;
  if (kind == DimensionKind::one_record_with_species) totals = {&of_each, &species};
  walk_dimensions<std::int32_t>(kind, coding, nblocks, columns, visit, totals);
  if (!totals.empty()) variables.assign(extents.i.size(), of_each);
  return read;
}

}  // namespace p3dgrid
