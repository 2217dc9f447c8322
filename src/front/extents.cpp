#include "front/extents.hpp"

#include <utility>

namespace p3dgrid {
namespace {

/// The first invalid block; the number of blocks if there is none.
std::size_t first_invalid(const Extents& extents) {
  std::int64_t points = 0;
  std::size_t block = 0;
  while (block < extents.i.size() && add_points(points, extents.of(block))) ++block;
  return block;
}

std::string block_text(const Extents& extents, std::size_t block) {
  return "block " + std::to_string(block + 1) + " of " + extents.text_of(block) + " points";
}

constexpr const char* valid_extents = "extents from 0 on, and at most 2^36 points";

}  // namespace

void require_blocks(const SourceFile& file, std::int32_t blocks, bool in_header) {
  if (blocks < 1) file.fail("a block count of " + std::to_string(blocks), "at least one block");
  const auto claim = in_header ? recordio::Claim::one_record : recordio::Claim::records;
  const std::int64_t per_block = in_header ? axes_of(file.coding()) : 1;
  file.require_room(per_block * blocks, recordio::FileKind::integer4, claim);
}

BlockDimensions read_dimensions(SourceFile& file, DimensionKind kind, std::int32_t blocks) {
  BlockDimensions read = read_block_dimensions(
      kind, file.coding(), blocks, [&](const recordio::ReadList& list) { file.read(list); });
  const std::size_t invalid = first_invalid(read.extents);
  if (invalid < read.extents.i.size()) file.fail(block_text(read.extents, invalid), valid_extents);
  return read;
}

void write_extents(TargetFile& file, const Coding& coding, DimensionKind kind,
                   const Extents& extents, const std::vector<std::int32_t>* functions) {
  std::vector columns = {extents.i.data(), extents.j.data(), extents.k.data()};
  if (functions != nullptr) columns.push_back(functions->data());
  walk_dimensions<const std::int32_t>(kind, coding, extents.blocks(), columns,
                                      [&](const recordio::WriteList& list) { file.write(list); });
}

void require_valid(const std::string& path, const Coding& coding, const Extents& extents) {
  const std::size_t invalid = first_invalid(extents);
  if (invalid < extents.i.size()) refuse(path, block_text(extents, invalid), valid_extents);
  for (std::size_t b = 0; is_planar(coding) && b < extents.k.size(); ++b) {
    if (extents.k[b] == 1) continue;
    refuse(path, block_text(extents, b), "a k extent of 1 in two dimensions");
  }
}

BlockExtents extents_of(const std::string& path, const Extents& extents, std::int32_t block) {
  if (block < 0 || block >= extents.blocks()) {
    refuse(path, "a request for block " + std::to_string(block),
           "0 to " + std::to_string(extents.blocks() - 1));
  }
  return extents.of(static_cast<std::size_t>(block));
}

std::vector<Error> differing_blocks(const std::string& path, const Extents& own,
                                    const Extents& grid) {
  std::vector<Error> differences;
  const auto add = [&](const std::string& reason, std::string found, std::string expected) {
    differences.push_back(Error({.kind = ErrorKind::mismatch,
                                 .file = path,
                                 .reason = "does not belong to its grid: " + reason,
                                 .found = std::move(found),
                                 .expected = std::move(expected)}));
  };
  if (own.blocks() != grid.blocks()) {
    const std::string held = std::to_string(own.blocks()) + " blocks";
    const std::string wanted = std::to_string(grid.blocks());
    add("it holds " + held + ", the grid " + wanted, held, wanted + " blocks");
    return differences;
  }
  for (std::size_t b = 0; b < own.i.size(); ++b) {
    if (own.of(b) == grid.of(b)) continue;
    add("its block " + std::to_string(b + 1) + " is " + own.text_of(b) + ", the grid's " +
            grid.text_of(b),
        own.text_of(b), grid.text_of(b));
  }
  return differences;
}

}  // namespace p3dgrid
