#include <limits>
#include <utility>

#include "front/extents.hpp"
#include "front/file.hpp"
#include "front/lists.hpp"
#include "front/point_runs.hpp"
#include "front/settle.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {

/// Reads the records of a grid file in order.
class GridReader::File {
  /// Value of `next_` after an error, when the place in the file is not known. Above all blocks, so
  /// that the next read goes back to the beginning.
  static constexpr std::int32_t unknown = std::numeric_limits<std::int32_t>::max();

  /// Goes to a block and returns what `take(its extents)` returns, which reads its record.
  template <class Take>
  auto at_block(std::int32_t block, Take take) {
    if (block < 0 || block >= extents_.blocks()) {
      refuse(source_.path(), "a request for block " + std::to_string(block),
             "0 to " + std::to_string(extents_.blocks() - 1));
    }
    std::int32_t next = std::exchange(next_, unknown);
    if (block < next) {
      source_.rewind();
      next = 0;
      static_cast<void>(read_header());
    }
    while (next < block) source_.skip(whole_block(next++));
    auto result = take(extents_.of(static_cast<std::size_t>(block)));
    next_ = block + 1;
    return result;
  }

 public:
  File(const std::string& path, Reading reading)
      : reading_(std::move(reading)), source_(path, form().coding) {
    extents_ = read_header();
  }

  [[nodiscard]] const Reading& reading() const { return reading_; }
  [[nodiscard]] const GridForm& form() const { return reading_.grid(); }
  [[nodiscard]] const Extents& extents() const { return extents_; }
  [[nodiscard]] const std::string& path() const { return source_.path(); }

  Block read(std::int32_t block, const IndexRange& range) {
    return at_block(block, [&](const BlockExtents& whole) { return read_points({whole, range}); });
  }

  BlockIndex locate(std::int32_t block) {
    require_places(source_.path(), form().coding);
    return at_block(block,
                    [&](const BlockExtents& whole) { return locate_points(whole.points()); });
  }

 private:
  Extents read_header() {
    std::int32_t blocks = 1;
    if (form().multiblock) source_.read({recordio::scalar(blocks)});
    require_blocks(source_, blocks, true);
    HeaderCounts none;
    return read_extents(source_, DimensionKind::one_record, blocks, none);
  }

  [[nodiscard]] recordio::ReadList whole_block(std::int32_t block) const {
    const std::int64_t points = extents_.points_of(static_cast<std::size_t>(block));
    const std::int64_t values = axes_of(form().coding) * points;
    recordio::ReadList list = {recordio::dropped(real_kind(form().coding), values)};
    if (form().iblank) list.push_back(recordio::dropped(recordio::FileKind::integer4, points));
    return list;
  }

  Block read_points(const PointRuns& runs) {
    const recordio::FileKind kind = real_kind(form().coding);
    const std::int64_t values = axes_of(form().coding) * runs.points();
    source_.require_room(values, kind, recordio::Claim::may_be_truncated);
    Block block{.extents = runs.extents()};
    source_.begin();
    const Precision precision = precision_in_memory(form().coding);
    for (Reals* coordinate : {&block.x, &block.y, &block.z}) {
      if (coordinate == &block.z && is_planar(form().coding)) {
        block.z = zeros(precision, runs.points());
        continue;
      }
      *coordinate = Reals(precision, runs.points());
      runs.read(source_, values_of(*coordinate, kind));
    }
    if (form().iblank) {
      block.iblank.resize(static_cast<std::size_t>(runs.points()));
      auto entry = recordio::values(block.iblank.data(), runs.points());
      entry.zero_where_left_out = true;
      runs.read(source_, entry);
    }
    source_.end();
    return block;
  }

  BlockIndex locate_points(std::int64_t points) {
    BlockIndex arrays;
    const auto locate = [&](Content content, std::int32_t number, recordio::FileKind kind) {
      arrays.push_back(source_.locate({content, number, kind, points}));
    };
    source_.begin();
    for (std::int32_t axis = 1; axis <= axes_of(form().coding); ++axis) {
      locate(Content::coordinate, axis, real_kind(form().coding));
    }
    if (form().iblank) locate(Content::iblank, 1, recordio::FileKind::integer4);
    source_.end();
    return arrays;
  }

  Reading reading_;
  SourceFile source_;
  Extents extents_;
  std::int32_t next_ = 0;  ///< next block in the file
};

GridReader::GridReader(const std::string& path, const StatedGridForm& stated)
    : GridReader(path, settle_grid(path, stated)) {}
GridReader::GridReader(const std::string& path, const Reading& reading)
    : file_(std::make_shared<File>(path, reading)) {}

const GridForm& GridReader::form() const {
  return file_->form();
}

const Extents& GridReader::extents() const {
  return file_->extents();
}

Block GridReader::read(std::int32_t block, const IndexRange& range) {
  return file_->read(block, range);
}

BlockIndex GridReader::locate(std::int32_t block) {
  return file_->locate(block);
}

Index index_grid(const std::string& path, const StatedGridForm& stated) {
  return index_grid(path, settle_grid(path, stated));
}

Index index_grid(const std::string& path, const Reading& reading) {
  GridReader reader(path, reading);
  Index index{.byte_order = reading.coding().byte_order, .extents = reader.extents()};
  for (std::int32_t b = 0; b < index.extents.blocks(); ++b) {
    index.blocks.push_back(reader.locate(b));
  }
  require_agreement(path, reading);
  return index;
}

Grid read_grid(const std::string& path, const StatedGridForm& stated) {
  return read_grid(path, settle_grid(path, stated));
}

Grid read_grid(const std::string& path, const Reading& reading) {
  GridReader reader(path, reading);
  Grid grid{.form = reader.form()};
  for (std::int32_t b = 0; b < reader.extents().blocks(); ++b) {
    grid.blocks.push_back(reader.read(b));
  }
  require_agreement(path, reading);
  return grid;
}

}  // namespace p3dgrid
