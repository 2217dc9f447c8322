#include <limits>
#include <utility>

#include "front/file.hpp"
#include "front/header.hpp"
#include "front/settle.hpp"
#include "front/values.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {

/// Reads the records of a grid file in order.
struct GridReader::File {
  /// Value of `next` after an error, when the position in the file is unknown. It exceeds all block
  /// numbers, so the next read goes back to the beginning.
  static constexpr std::int32_t unknown = std::numeric_limits<std::int32_t>::max();

  File(const std::string& path, Reading settled)
      : reading(std::move(settled)), source(path, form.coding), extents(read_header()) {}

  /// Goes to a block and calls `take(its extents)`, which begins its record and reads it.
  template <class Take>
  void at_block(std::int32_t block, Take take) {
    const BlockExtents whole = extents_of(source.path(), extents, block);
    std::int32_t at = std::exchange(next, unknown);
    if (block < at) {
      source.rewind();
      at = 0;
      static_cast<void>(read_header());
    }
    while (at < block) source.skip(whole_block(at++));
    take(whole);
    source.end();
    next = block + 1;
  }

  Extents read_header() {
    std::int32_t blocks = 1;
    if (form.multiblock) source.read({recordio::scalar(blocks)});
    require_blocks(source, blocks, true);
    return read_dimensions(source, DimensionKind::one_record, blocks).extents;
  }

  [[nodiscard]] recordio::ReadList whole_block(std::int32_t block) const {
    const std::int64_t points = extents.points_of(static_cast<std::size_t>(block));
    recordio::ReadList list = {recordio::dropped(kind, axes_of(form.coding) * points)};
    if (form.iblank) list.push_back(recordio::dropped(recordio::FileKind::integer4, points));
    return list;
  }

  template <class Real>
  void read_coordinates(const PointRuns& runs, const BlockMemory& memory) {
    for (std::size_t axis = 0; axis < memory.coordinates.size(); ++axis) {
      const std::span values(static_cast<Real*>(memory.coordinates[axis]),
                             static_cast<std::size_t>(runs.points()));
      if (axis < static_cast<std::size_t>(axes_of(form.coding))) {
        runs.read(source, values_of(values, kind));
      } else {
        std::ranges::fill(values, Real(0));
      }
    }
  }

  Reading reading;
  const GridForm& form = reading.grid();
  recordio::FileKind kind = real_kind(form.coding);  ///< of the coordinates
  SourceFile source;
  Extents extents;
  std::int32_t next = 0;  ///< next block in the file
};

GridReader::GridReader(const std::string& path, const StatedGridForm& stated)
    : GridReader(path, settle_grid(path, stated)) {}
GridReader::GridReader(const std::string& path, const Reading& reading)
    : file_(std::make_shared<File>(path, reading)) {}

const GridForm& GridReader::form() const {
  return file_->form;
}

const Extents& GridReader::extents() const {
  return file_->extents;
}

const Reading& GridReader::reading() const {
  return file_->reading;
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
  read(block, allocate, range);
  return result;
}

void GridReader::read(std::int32_t block, const BlockAllocator& allocate, const IndexRange& range) {
  File& file = *file_;
  file.at_block(block, [&](const BlockExtents& whole) {
    const PointRuns runs(whole, range);
    file.source.require_room(axes_of(file.form.coding) * runs.points(), file.kind,
                             recordio::Claim::may_be_truncated);
    const Precision precision = precision_in_memory(file.form.coding);
    file.source.begin();
    const BlockMemory memory = allocate(precision, runs.extents());
    if (precision == Precision::double_precision) {
      file.read_coordinates<double>(runs, memory);
    } else {
      file.read_coordinates<float>(runs, memory);
    }
    if (file.form.iblank) {
      auto entry = recordio::values(memory.iblank, runs.points());
      entry.zero_where_left_out = true;
      runs.read(file.source, entry);
    }
  });
}

void GridReader::require_agreement() const {
  p3dgrid::require_agreement(file_->source.path(), file_->reading);
}

BlockIndex GridReader::locate(std::int32_t block) {
  File& file = *file_;
  require_places(file.source.path(), file.form.coding);
  BlockIndex arrays;
  file.at_block(block, [&](const BlockExtents& whole) {
    const auto locate = [&](Content content, std::int32_t number, recordio::FileKind kind) {
      arrays.push_back(file.source.locate({content, number, kind, whole.points()}));
    };
    file.source.begin();
    for (std::int32_t axis = 1; axis <= axes_of(file.form.coding); ++axis) {
      locate(Content::coordinate, axis, file.kind);
    }
    if (file.form.iblank) locate(Content::iblank, 1, recordio::FileKind::integer4);
  });
  return arrays;
}

Index index_grid(const std::string& path, const StatedGridForm& stated) {
  GridReader reader(path, stated);
  Index index{.byte_order = reader.form().coding.byte_order, .extents = reader.extents()};
  const std::int32_t blocks = index.extents.blocks();
  for (std::int32_t b = 0; b < blocks; ++b) index.blocks.push_back(reader.locate(b));
  reader.require_agreement();
  return index;
}

Grid read_grid(const std::string& path, const StatedGridForm& stated) {
  GridReader reader(path, stated);
  Grid grid{.form = reader.form()};
  const std::int32_t blocks = reader.extents().blocks();
  for (std::int32_t b = 0; b < blocks; ++b) grid.blocks.push_back(reader.read(b));
  reader.require_agreement();
  return grid;
}

}  // namespace p3dgrid
