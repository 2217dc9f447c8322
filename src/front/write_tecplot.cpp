#include <algorithm>
#include <utility>

#include "format/tecplot.hpp"
#include "front/file.hpp"
#include "front/header.hpp"
#include "p3dgrid/tecplot.hpp"

namespace p3dgrid {
namespace {

/// Refuses names that would end a line or a quotation.
void require_names(const std::string& path, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const bool usable = std::ranges::none_of(
        name, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '"'; });
    if (usable) continue;
    refuse(path, "the name " + name, "names without quotation marks and control characters");
  }
}

}  // namespace

/// Writes the lines of a Tecplot file in order.
struct TecplotWriter::File {
  static constexpr Coding text = {.encoding = Encoding::formatted};

  /// So few that the values of usual numbers of columns stay in the cache.
  static constexpr std::int64_t points_at_a_time = 256;

  void write_points(const std::vector<const Reals*>& columns, const Array<std::int32_t>& iblank,
                    std::int64_t first, std::int64_t count) {
    const auto width = std::ssize(columns);
    values.resize(static_cast<std::size_t>(width * count));
    for (std::int64_t column = 0; column < width; ++column) {
      double* to = values.data() + column;
      columns[static_cast<std::size_t>(column)]->visit([&](auto reals) {
        for (const auto value :
             reals.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count))) {
          *to = value;
          to += width;
        }
      });
    }
    recordio::WriteList list = {recordio::lines(std::as_const(values).data(), width, width, count)};
    constexpr std::int32_t in_use = 1;
    if (has_iblank) {
      list.push_back(iblank.empty() ? recordio::lines(&in_use, 1, 0, count)
                                    : recordio::values(iblank.data() + first, count));
    }
    target.write_text([&](auto& file) { recordio::write_points(file, list, count); });
  }

  void write_line(const std::string& line) {
    target.write_text([&](auto& file) { recordio::write_line(file, line); });
  }

  void check(const Block& block, const std::vector<Reals>& variables) const {
    require_block(target.path(), text, zones, block, block.extents);
    for (const std::int32_t extent : {block.extents.i, block.extents.j, block.extents.k}) {
      if (extent >= 0 && extent <= largest_extent) continue;
      refuse(target.path(), "an extent of " + std::to_string(extent),
             "extents up to " + std::to_string(largest_extent));
    }
    if (variables.size() != variable_count) {
      refuse(target.path(), std::to_string(variables.size()) + " variables",
             std::to_string(variable_count));
    }
    for (const Reals& variable : variables) {
      if (variable.size() == block.extents.points()) continue;
      refuse(target.path(), std::to_string(variable.size()) + " values of a variable",
             std::to_string(block.extents.points()));
    }
  }

  TargetFile target;
  std::size_t variable_count;
  bool has_iblank;
  std::int32_t zones = 0;           ///< written
  std::vector<double> values = {};  ///< of some points, point by point
};

TecplotWriter::TecplotWriter(const std::string& path, const std::vector<std::string>& variables,
                             bool iblank) {
  require_names(path, variables);
  file_ = std::make_shared<File>(File{TargetFile(path, File::text), variables.size(), iblank});
  file_->write_line(tecplot::variables_line(variables, iblank));
}

void TecplotWriter::write(const Block& block, const std::vector<Reals>& variables) {
  File& file = *file_;
  file.check(block, variables);
  file.write_line(tecplot::zone_line(++file.zones, block.extents));
  std::vector<const Reals*> columns = {&block.x, &block.y, &block.z};
  for (const Reals& variable : variables) columns.push_back(&variable);
  const std::int64_t points = block.extents.points();
  for (std::int64_t first = 0; first < points; first += File::points_at_a_time) {
    file.write_points(columns, block.iblank, first,
                      std::min(points - first, File::points_at_a_time));
  }
}

void TecplotWriter::close() {
  file_->target.close();
}

}  // namespace p3dgrid
