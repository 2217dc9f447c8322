#include <algorithm>

#include "front/file.hpp"
#include "front/header.hpp"
#include "front/values.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {

struct GridWriter::File {
  GridForm form;
  Extents extents;
  TargetFile target;
};

GridWriter::GridWriter(const std::string& path, const GridForm& form, const Extents& extents) {
  const std::int32_t blocks = extents.blocks();
  require_valid(path, form.coding, extents);
  if (form.multiblock ? blocks < 1 : blocks != 1) {
    refuse(path, std::to_string(blocks) + " blocks",
           form.multiblock ? "at least one" : "one for a file without a block count");
  }
  file_ = std::make_shared<File>(File{form, extents, TargetFile(path, form.coding, blocks)});
  if (form.multiblock) file_->target.write({recordio::scalar(blocks)});
  write_extents(file_->target, form.coding, DimensionKind::one_record, extents);
}

void GridWriter::write(const Block& block) {
  auto& [form, extents, target] = *file_;
  const std::int32_t number = target.next_block();
  require_block(target.path(), form.coding, number, block,
                extents.of(static_cast<std::size_t>(number)));
  target.begin_block();
  recordio::WriteList list;
  for (const Reals* coordinate : {&block.x, &block.y, &block.z}) {
    if (coordinate == &block.z && is_planar(form.coding)) continue;
    list.push_back(values_of(*coordinate, kind_to_write(form.coding, *coordinate)));
  }
  Array<std::int32_t> in_use;
  if (block.iblank.empty() && form.iblank) {
    in_use.assign(static_cast<std::size_t>(block.x.size()), 1);
  }
  const auto& iblank = block.iblank.empty() ? in_use : block.iblank;
  if (form.iblank) list.push_back(recordio::values(iblank.data(), std::ssize(iblank)));
  target.write(list);
}

void GridWriter::reserve() {
  auto& [form, extents, target] = *file_;
  require_places(target.path(), form.coding);
  const std::int64_t points = extents.points_of(static_cast<std::size_t>(target.next_block()));
  target.begin_block();
  target.leave(points * (axes_of(form.coding) * real_bytes(form.coding) + (form.iblank ? 4 : 0)));
}

void GridWriter::close() {
  file_->target.close();
}

Extents Grid::extents() const {
  Extents extents;
  for (const Block& block : blocks) extents.add(block.extents);
  return extents;
}

GridForm form_to_write(const Grid& grid, const StatedGridForm& stated) {
  GridForm form = grid.form;
  form.multiblock = form.multiblock || grid.blocks.size() > 1;
  if (!grid.blocks.empty()) form.coding.precision = grid.blocks.front().x.precision();
  form.iblank =
      std::ranges::any_of(grid.blocks, [](const Block& block) { return !block.iblank.empty(); });
  return applied_to(form, stated);
}

void write_grid(const std::string& path, const Grid& grid, const StatedGridForm& stated) {
  const GridForm form = form_to_write(grid, stated);
  for (std::size_t b = 0; b < grid.blocks.size(); ++b) {
    require_block(path, form.coding, static_cast<std::int32_t>(b), grid.blocks[b],
                  grid.blocks[b].extents);
  }
  GridWriter writer(path, form, grid.extents());
  for (const Block& block : grid.blocks) writer.write(block);
  writer.close();
}

}  // namespace p3dgrid
