#pragma once

#include <vector>

#include "format/header.hpp"
#include "front/file.hpp"
#include "p3dgrid/solution.hpp"

/// Headers, and the blocks that they describe.
namespace p3dgrid {

/// Throws for a block count from a header below 1, or above what the file can hold.
/// @param in_header  the header holds the extents of the blocks
void require_blocks(const SourceFile& file, std::int32_t blocks, bool in_header);

/// Reads block dimensions from a header. Throws for extents that no block can have.
[[nodiscard]] BlockDimensions read_dimensions(SourceFile& file, DimensionKind kind,
                                              std::int32_t blocks);

/// Writes block dimensions.
/// @param functions  variable counts of function files
void write_extents(TargetFile& file, const Coding& coding, DimensionKind kind,
                   const Extents& extents, const std::vector<std::int32_t>* functions = nullptr);

/// Throws for negative extents, for so many points that sums could overflow, and for k extents that
/// a file of two dimensions cannot hold.
void require_valid(const std::string& path, const Coding& coding, const Extents& extents);

/// The extents of a block, counted from 0. Throws for a block that does not exist.
[[nodiscard]] BlockExtents extents_of(const std::string& path, const Extents& extents,
                                      std::int32_t block);

/// Throws for a block that differs from its announced extents, whose arrays do not have a value for
/// each point, or whose third coordinate a file of two dimensions cannot hold.
/// @param number  of the block, from 0
void require_block(const std::string& path, const Coding& coding, std::int32_t number,
                   const Block& block, const BlockExtents& announced);

/// Throws for sections that no file can have.
/// @param leading  blocks begin with a leading record, which holds five variables
void require_sections(const std::string& path, const Sections& sections, bool leading);

/// Throws for a coding of which the layout has no files.
void require_files_of(const std::string& path, const RestartForm& form);

/// The variables that a record of a block holds.
/// @param section  of the record; an only section is as long as the header counts for the block
[[nodiscard]] Section variables_of(const SolutionHeader& header, std::size_t block,
                                   const Section& section);

/// The variables that a chain of flags announces, in file order.
[[nodiscard]] Sections extensions_in(const std::vector<std::int32_t>& flags);

}  // namespace p3dgrid
