#include "grid/dimensions.hpp"

#include <string>
#include <vector>

#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Arrays for up to this many blocks, 4 MiB each, are allocated without a check of the file's
/// length. Grids have far fewer blocks.
constexpr integer trusted_blocks = integer{1} << 20;

std::string extents_of(integer nblocks) {
  return "the extents of " + std::to_string(nblocks) + " blocks";
}

}  // namespace

void read_dimensions(const Unit& unit, const p3dgrid::Coding& coding, DimensionKind kind,
                     integer nblocks, const ExtentTargets& extents,
                     allocatable<integer, 1>* functions) {
  std::vector<integer*> columns;
  columns.reserve(4);
  for (auto* array : {extents[0], extents[1], extents[2], functions}) {
    if (array == nullptr) continue;
    if (array->extent(1) < nblocks) unit.fail("no array to read into", extents_of(nblocks));
    columns.push_back(array->data());
  }
  p3dgrid::walk_dimensions<integer>(kind, coding, nblocks, columns,
                                    [&](const recordio::ReadList& list) { unit.read(list); });
}

void write_dimensions(const Unit& unit, const p3dgrid::Coding& coding, DimensionKind kind,
                      integer nblocks, const ExtentViews& extents, integer_view functions) {
  std::vector<const integer*> columns;
  const auto add = [&](integer_view array) {
    if (array.extent(1) < nblocks) {
      fail_run("cannot write " + extents_of(nblocks) + ": the arrays are shorter");
    }
    columns.push_back(array.data());
  };
  for (const auto& array : {extents.i, extents.j, extents.k}) add(array);
  if (kind == DimensionKind::one_record_with_variables) add(functions);
  p3dgrid::walk_dimensions<const integer>(
      kind, coding, nblocks, columns, [&](const recordio::WriteList& list) { unit.write(list); });
}

void check_planes(const std::string& file, const p3dgrid::Coding& coding, integer nblocks,
                  const ExtentViews& extents) {
  for (integer b = 1; is_planar(coding) && b <= nblocks; ++b) {
    if (extents.k(b) == 1) continue;
    fail_run(file + ": block " + std::to_string(b) + " has a k extent of " +
             std::to_string(extents.k(b)) + ", and files of two dimensions have none but 1");
  }
}

void require_room_for_dimensions(const Unit& unit, const p3dgrid::Coding& coding, integer nblocks,
                                 recordio::Claim claim) {
  using recordio::FileKind;
  if (nblocks <= trusted_blocks) return;
  // One repeat count can stand for all extents of a text, but each block has a later line.
  unit.require_room(nblocks, FileKind::integer4, recordio::Claim::records, extents_of(nblocks));
  unit.require_room(nblocks * axes_of(coding), FileKind::integer4, claim, extents_of(nblocks));
}

void fail_on_extents(const Unit& unit, integer block, const BlockExtents& extents) {
  const auto [i, j, k] = extents;
  unit.fail("block " + std::to_string(block) + " of " + std::to_string(i) + " x " +
                std::to_string(j) + " x " + std::to_string(k) + " points",
            "extents from 0 on, and points that 32 bits can count");
}

}  // namespace mod_p3dgrid
