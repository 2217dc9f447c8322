#include <algorithm>
#include <utility>

#include "format/tecplot.hpp"
#include "front/extents.hpp"
#include "front/file.hpp"
#include "p3dgrid/tecplot.hpp"

namespace p3dgrid {

/// Writes the lines of a Tecplot file in order.
class TecplotWriter::File {
 public:
  File(const std::string& path, const std::vector<std::string>& variables, bool iblank)
      : path_(path),
        variables_((check_names(path, variables), variables.size())),
        iblank_(iblank),
        target_(path, text) {
    write_line(tecplot::variables_line(variables, iblank));
  }

  void write(const Block& block, const std::vector<Reals>& variables) {
    check(block, variables);
    write_line(tecplot::zone_line(++zones_, block.extents));
    std::vector<const Reals*> columns = {&block.x, &block.y, &block.z};
    for (const Reals& variable : variables) columns.push_back(&variable);
    const std::int64_t points = block.extents.points();
    for (std::int64_t first = 0; first < points; first += points_at_a_time) {
      write_points(columns, block.iblank, first, std::min(points - first, points_at_a_time));
    }
  }

  void close() { target_.close(); }

 private:
  static constexpr Coding text = {.encoding = Encoding::formatted};

  /// So few that the values of usual numbers of columns stay in the cache.
  static constexpr std::int64_t points_at_a_time = 256;

  void write_points(const std::vector<const Reals*>& columns, const Array<std::int32_t>& iblank,
                    std::int64_t first, std::int64_t count) {
    const auto width = std::ssize(columns);
    values_.resize(static_cast<std::size_t>(width * count));
    for (std::int64_t column = 0; column < width; ++column) {
      double* to = values_.data() + column;
      columns[static_cast<std::size_t>(column)]->visit([&](auto values) {
        for (const auto value :
             values.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count))) {
          *to = value;
          to += width;
        }
      });
    }
    recordio::WriteList list = {
        recordio::lines(std::as_const(values_).data(), width, width, count)};
    constexpr std::int32_t in_use = 1;
    if (iblank_) {
      list.push_back(iblank.empty() ? recordio::lines(&in_use, 1, 0, count)
                                    : recordio::values(iblank.data() + first, count));
    }
    target_.write_text([&](auto& file) { recordio::write_points(file, list, count); });
  }

  void write_line(const std::string& line) {
    target_.write_text([&](auto& file) { recordio::write_line(file, line); });
  }

  static void check_names(const std::string& path, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      const bool usable = std::ranges::none_of(
          name, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '"'; });
      if (!usable) {
        refuse(path, "the name " + name, "names without quotation marks and control characters");
      }
    }
  }

  void check(const Block& block, const std::vector<Reals>& variables) const {
    require_block(path_, text, zones_, block, block.extents);
    for (const std::int32_t extent : {block.extents.i, block.extents.j, block.extents.k}) {
      if (extent >= 0 && extent <= largest_extent) continue;
      refuse(path_, "an extent of " + std::to_string(extent),
             "extents up to " + std::to_string(largest_extent));
    }
    if (variables.size() != variables_) {
      refuse(path_, std::to_string(variables.size()) + " variables", std::to_string(variables_));
    }
    for (const Reals& variable : variables) {
      if (variable.size() == block.extents.points()) continue;
      refuse(path_, std::to_string(variable.size()) + " values of a variable",
             std::to_string(block.extents.points()));
    }
  }

  std::string path_;
  std::size_t variables_;
  bool iblank_;
  TargetFile target_;
  std::int32_t zones_ = 0;      ///< written
  std::vector<double> values_;  ///< of some points, point by point
};

TecplotWriter::TecplotWriter(const std::string& path, const std::vector<std::string>& variables,
                             bool iblank)
    : file_(std::make_shared<File>(path, variables, iblank)) {}

void TecplotWriter::write(const Block& block, const std::vector<Reals>& variables) {
  file_->write(block, variables);
}

void TecplotWriter::close() {
  file_->close();
}

}  // namespace p3dgrid
