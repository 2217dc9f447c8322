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
    if (block < 0 || block >= extents_.blocks()) {
      throw Error({.kind = ErrorKind::argument,
                   .file = source_.path(),
                   .found = "a request for block " + std::to_string(block),
                   .expected = "0 to " + std::to_string(extents_.blocks() - 1)});
    }
    if (block < next_) {
      source_.rewind();
      next_ = 0;
      static_cast<void>(read_header());
    }
    while (next_ < block) source_.skip(whole_block(next_++));
    ++next_;
    return read_points({extents_.of(static_cast<std::size_t>(block)), range});
  }

 private:
  Extents read_header() {
    std::int32_t blocks = 1;
    if (form().multiblock) source_.read({recordio::scalar(blocks)});
    require_blocks(source_, blocks, true);
    return read_extents(source_, DimensionKind::one_record, blocks);
  }

  [[nodiscard]] recordio::ReadList whole_block(std::int32_t block) const {
    const std::int64_t points = extents_.points_of(static_cast<std::size_t>(block));
    recordio::ReadList list = {recordio::dropped(real_kind(form().coding), 3 * points)};
    if (form().iblank) list.push_back(recordio::dropped(recordio::FileKind::integer4, points));
    return list;
  }

  Block read_points(const PointRuns& runs) {
    const recordio::FileKind kind = real_kind(form().coding);
    source_.require_room(3 * runs.points(), kind, recordio::Claim::may_be_truncated);
    Block block{.extents = runs.extents()};
    recordio::ReadList list;
    for (Reals* coordinate : {&block.x, &block.y, &block.z}) {
      *coordinate = Reals(precision_in_memory(form().coding), runs.points());
      runs.add_to(list, values_of(*coordinate, kind));
    }
    if (form().iblank) {
      block.iblank.resize(static_cast<std::size_t>(runs.points()));
      auto entry = recordio::values(block.iblank.data(), runs.points());
      entry.zero_where_left_out = true;
      runs.add_to(list, entry);
    }
    source_.read(list);
    return block;
  }

  Reading reading_;
  SourceFile source_;
  Extents extents_;
  std::int32_t next_ = 0;
};

GridReader::GridReader(const std::string& path, const StatedGridForm& stated)
    : GridReader(path, settle_grid(path, stated)) {}
GridReader::GridReader(const std::string& path, const Reading& reading)
    : file_(std::make_unique<File>(path, reading)) {}
GridReader::GridReader(GridReader&&) noexcept = default;
GridReader& GridReader::operator=(GridReader&&) noexcept = default;
GridReader::~GridReader() = default;

const GridForm& GridReader::form() const {
  return file_->form();
}

const Extents& GridReader::extents() const {
  return file_->extents();
}

Block GridReader::read(std::int32_t block, const IndexRange& range) {
  return file_->read(block, range);
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
