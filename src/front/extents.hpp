#pragma once

#include <vector>

#include "front/file.hpp"
#include "p3dgrid/grid.hpp"
#include "p3dgrid/layout.hpp"

namespace p3dgrid {

/// Throws for a block count from a header below 1, or above what the file can hold.
/// @param in_header  the header holds the extents of the blocks
void require_blocks(const SourceFile& file, std::int32_t blocks, bool in_header);

/// Numbers that a header may hold beside the extents.
struct HeaderCounts {
  std::vector<std::int32_t> variables = {};  ///< of each block; empty if the header has none
  std::int32_t species = 0;
};

/// Reads block dimensions from a header. Throws for extents that no block can have.
[[nodiscard]] Extents read_extents(SourceFile& file, DimensionKind kind, std::int32_t blocks,
                                   HeaderCounts& counts);

/// Writes block dimensions.
/// @param functions  variable counts of function files
void write_extents(TargetFile& file, const Coding& coding, DimensionKind kind,
                   const Extents& extents, const std::vector<std::int32_t>* functions = nullptr);

/// Throws for negative extents, for so many points that sums could overflow, and for k extents that
/// a file of two dimensions cannot hold.
void require_valid(const std::string& path, const Coding& coding, const Extents& extents);

/// Throws for a block that differs from its announced extents, whose arrays do not have a value for
/// each point, or whose third coordinate a file of two dimensions cannot hold.
/// @param number  of the block, from 0
void require_block(const std::string& path, const Coding& coding, std::int32_t number,
                   const Block& block, const BlockExtents& announced);

}  // namespace p3dgrid
