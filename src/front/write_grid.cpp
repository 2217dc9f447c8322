#include <algorithm>

#include "front/extents.hpp"
#include "front/file.hpp"
#include "front/lists.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {

/// Writes the records of a grid file in order.
class GridWriter::File {
 public:
  File(const std::string& path, const GridForm& form, const Extents& extents)
      : path_(path),
        form_(form),
        extents_((check_extents(path, form, extents), extents)),
        target_(path, form.coding) {
    const std::int32_t blocks = extents.blocks();
    if (form.multiblock) target_.write({recordio::scalar(blocks)});
    write_extents(target_, form.coding, DimensionKind::one_record, extents_);
  }

  void write(const Block& block) {
    require_next();
    require_block(path_, form_.coding, next_, block, extents_.of(static_cast<std::size_t>(next_)));
    ++next_;
    recordio::WriteList list;
    for (const Reals* coordinate : {&block.x, &block.y, &block.z}) {
      if (coordinate == &block.z && is_planar(form_.coding)) continue;
      list.push_back(values_of(*coordinate, kind_to_write(form_.coding, *coordinate)));
    }
    Array<std::int32_t> in_use;
    if (block.iblank.empty() && form_.iblank) {
      in_use.assign(static_cast<std::size_t>(block.x.size()), 1);
    }
    const auto& iblank = block.iblank.empty() ? in_use : block.iblank;
    if (form_.iblank) list.push_back(recordio::values(iblank.data(), std::ssize(iblank)));
    target_.write(list);
  }

  void reserve() {
    require_places(path_, form_.coding);
    require_next();
    const std::int64_t points = extents_.points_of(static_cast<std::size_t>(next_++));
    const std::int64_t bytes_per_point =
        axes_of(form_.coding) * real_bytes(form_.coding) + (form_.iblank ? 4 : 0);
    target_.leave(points * bytes_per_point);
  }

  void close() {
    if (next_ < extents_.blocks()) {
      refuse(path_, std::to_string(next_) + " blocks",
             "the " + std::to_string(extents_.blocks()) + " of the header");
    }
    target_.close();
  }

 private:
  void require_next() const {
    if (next_ < extents_.blocks()) return;
    refuse(path_, "one more block", "the " + std::to_string(next_) + " of the header");
  }

  static void check_extents(const std::string& path, const GridForm& form, const Extents& extents) {
    require_valid(path, form.coding, extents);
    if (form.multiblock ? extents.blocks() > 0 : extents.blocks() == 1) return;
    refuse(path, std::to_string(extents.blocks()) + " blocks",
           form.multiblock ? "at least one" : "one for a file without a block count");
  }

  std::string path_;
  GridForm form_;
  Extents extents_;
  TargetFile target_;
  std::int32_t next_ = 0;
};

GridWriter::GridWriter(const std::string& path, const GridForm& form, const Extents& extents)
    : file_(std::make_shared<File>(path, form, extents)) {}

void GridWriter::write(const Block& block) {
  file_->write(block);
}

void GridWriter::reserve() {
  file_->reserve();
}

void GridWriter::close() {
  file_->close();
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
