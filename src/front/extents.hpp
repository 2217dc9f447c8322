#pragma once

#include "front/file.hpp"
#include "p3dgrid/layout.hpp"

namespace p3dgrid {

/// Throws for a block count from a header below 1, or above what the file can hold.
/// @param in_header  the header holds the extents of the blocks
void require_blocks(const SourceFile& file, std::int32_t blocks, bool in_header);

/// Reads block dimensions from a header. Throws for extents that no block can have.
/// @param functions  gets the variable counts of the blocks, where the header has them
/// @param species    gets the number of species of `DimensionKind::one_record_with_species`
[[nodiscard]] Extents read_extents(SourceFile& file, DimensionKind kind, std::int32_t blocks,
                                   std::vector<std::int32_t>* functions = nullptr,
                                   std::int32_t* species = nullptr);

/// Writes block dimensions.
/// @param functions  variable counts of function files
void write_extents(TargetFile& file, const Coding& coding, DimensionKind kind,
                   const Extents& extents, const std::vector<std::int32_t>* functions = nullptr);

/// Throws for negative extents, for so many points that sums could overflow, and for k extents that
/// a file of two dimensions cannot hold.
void require_valid(const std::string& path, const Coding& coding, const Extents& extents);

}  // namespace p3dgrid
