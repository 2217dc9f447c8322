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
  /// Value of `next_` after an error, when the position in the file is unknown. It exceeds all
  /// block numbers, so the next read goes back to the beginning.
  static constexpr std::int32_t unknown = std::numeric_limits<std::int32_t>::max();

  /// Goes to a block and calls `take(its extents)`, which reads its record.
  template <class Take>
  void at_block(std::int32_t block, Take take) {
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
    take(extents_.of(static_cast<std::size_t>(block)));
    next_ = block + 1;
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

  void read(std::int32_t block, const BlockAllocator& allocate, const IndexRange& range) {
    at_block(block, [&](const BlockExtents& whole) { read_points({whole, range}, allocate); });
  }

  BlockIndex locate(std::int32_t block) {
    require_places(source_.path(), form().coding);
    BlockIndex arrays;
    at_block(block, [&](const BlockExtents& whole) { arrays = locate_points(whole.points()); });
    return arrays;
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

  void read_points(const PointRuns& runs, const BlockAllocator& allocate) {
    const std::int64_t values = axes_of(form().coding) * runs.points();
    source_.require_room(values, real_kind(form().coding), recordio::Claim::may_be_truncated);
    const Precision precision = precision_in_memory(form().coding);
    source_.begin();
    const BlockMemory memory = allocate(precision, runs.extents());
    if (precision == Precision::double_precision) {
      read_coordinates<double>(runs, memory);
    } else {
      read_coordinates<float>(runs, memory);
    }
    if (form().iblank) {
      auto entry = recordio::values(memory.iblank, runs.points());
      entry.zero_where_left_out = true;
      runs.read(source_, entry);
    }
    source_.end();
  }

  template <class Real>
  void read_coordinates(const PointRuns& runs, const BlockMemory& memory) {
    for (std::size_t axis = 0; axis < memory.coordinates.size(); ++axis) {
      const std::span values(static_cast<Real*>(memory.coordinates[axis]),
                             static_cast<std::size_t>(runs.points()));
      if (axis < static_cast<std::size_t>(axes_of(form().coding))) {
        runs.read(source_, values_of(values, real_kind(form().coding)));
      } else {
        std::ranges::fill(values, Real(0));
      }
    }
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

const Reading& GridReader::reading() const {
  return file_->reading();
}

Block GridReader::read(std::int32_t block, const IndexRange& range) {
  Block result;
  const auto allocate = [&](Precision precision, const BlockExtents& extents) {
    result.extents = extents;
    BlockMemory memory;
    std::size_t axis = 0;
    for (Reals* coordinate : {&result.x, &result.y, &result.z}) {
      *coordinate = Reals(precision, extents.points());
      memory.coordinates[axis++] =
          coordinate->visit([](auto values) -> void* { return values.data(); });
    }
    if (form().iblank) result.iblank.resize(static_cast<std::size_t>(extents.points()));
    memory.iblank = result.iblank.data();
    return memory;
  };
  file_->read(block, allocate, range);
  return result;
}

void GridReader::read(std::int32_t block, const BlockAllocator& allocate, const IndexRange& range) {
  file_->read(block, allocate, range);
}

void GridReader::require_agreement() const {
  p3dgrid::require_agreement(file_->path(), file_->reading());
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
  reader.require_agreement();
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
  reader.require_agreement();
  return grid;
}

}  // namespace p3dgrid
