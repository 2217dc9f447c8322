#include "front/header.hpp"

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
  return "block " + std::to_string(block + 1) + " of " + extents.of(block).text() + " points";
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

void require_block(const std::string& path, const Coding& coding, std::int32_t number,
                   const Block& block, const BlockExtents& announced) {
  const std::string name = "block " + std::to_string(number) + " of ";
  if (block.extents != announced) {
    refuse(path, name + block.extents.text() + " points", announced.text());
  }
  const std::int64_t points = announced.points();
  for (const Reals* coordinate : {&block.x, &block.y, &block.z}) {
    if (coordinate->size() == points) continue;
    refuse(path, name + std::to_string(coordinate->size()) + " values of a coordinate",
           std::to_string(points));
  }
  if (is_planar(coding) && !is_zero(block.z)) {
    refuse(path, name + "z other than 0", "z of 0 in two dimensions");
  }
  if (!block.iblank.empty() && std::ssize(block.iblank) != points) {
    refuse(path, name + std::to_string(block.iblank.size()) + " blanking values",
           std::to_string(points));
  }
}

}  // namespace p3dgrid
