#include "front/extents.hpp"

#include <algorithm>
#include <utility>

#include "format/header.hpp"

namespace p3dgrid {
namespace {

/// Columns of the table that the file holds.
template <class ExtentsOrConst, class Functions>
auto columns_of(ExtentsOrConst& extents, Functions* functions) {
  std::vector columns = {extents.i.data(), extents.j.data(), extents.k.data()};
  if (functions != nullptr) columns.push_back(functions->data());
  return columns;
}

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

Extents read_extents(SourceFile& file, DimensionKind kind, std::int32_t blocks,
                     HeaderCounts& counts) {
  const auto size = static_cast<std::size_t>(blocks);
  const bool counted = kind == DimensionKind::one_record_with_variables;
  Extents extents;
  for (auto* column : {&extents.i, &extents.j, &extents.k}) column->resize(size);
  if (counted) counts.variables.resize(size);
  std::int32_t variables = 0;
  std::vector<std::int32_t*> totals;
  if (kind == DimensionKind::one_record_with_species) totals = {&variables, &counts.species};
  walk_dimensions<std::int32_t>(
      kind, file.coding(), blocks, columns_of(extents, counted ? &counts.variables : nullptr),
      [&](const recordio::ReadList& list) { file.read(list); }, totals);
  if (!totals.empty()) counts.variables.assign(size, variables);
  const std::size_t invalid = first_invalid(extents);
  if (invalid < extents.i.size()) file.fail(block_text(extents, invalid), valid_extents);
  return extents;
}

void write_extents(TargetFile& file, const Coding& coding, DimensionKind kind,
                   const Extents& extents, const std::vector<std::int32_t>* functions) {
  walk_dimensions<const std::int32_t>(kind, coding, extents.blocks(),
                                      columns_of(extents, functions),
                                      [&](const recordio::WriteList& list) { file.write(list); });
}

void require_valid(const std::string& path, const Coding& coding, const Extents& extents) {
  const auto refuse = [&](std::size_t block, const char* expected) {
    if (block == extents.i.size()) return;
    throw Error({.kind = ErrorKind::argument,
                 .file = path,
                 .found = block_text(extents, block),
                 .expected = expected});
  };
  refuse(first_invalid(extents), valid_extents);
  if (!is_planar(coding)) return;
  const auto thick = std::ranges::find_if(extents.k, [](std::int32_t k) { return k != 1; });
  refuse(static_cast<std::size_t>(thick - extents.k.begin()), "a k extent of 1 in two dimensions");
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
