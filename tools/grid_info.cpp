#include "grid_info.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "blanking.hpp"
#include "console.hpp"
#include "grid_file.hpp"
#include "range.hpp"
#include "table.hpp"
#include "variable_report.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

/// What is reported of one block, or of all.
struct Summary {
  std::int64_t points = 0;
  std::array<Range, 3> box;
  std::int64_t not_finite = 0;  ///< points with a coordinate that is infinite or no number
  BlankingCounts blanking;

  void add_point(const float* xyz);
  void add(const Summary& block);
};

void Summary::add_point(const float* xyz) {
  ++points;
  if (!std::all_of(xyz, xyz + 3, [](float value) { return std::isfinite(value); })) {
    ++not_finite;
    return;
  }
  for (std::size_t c = 0; c < 3; ++c) box[c].include(xyz[c]);
}

void Summary::add(const Summary& block) {
  points += block.points;
  for (std::size_t c = 0; c < 3; ++c) box[c].include(block.box[c]);
  not_finite += block.not_finite;
  blanking.add(block.blanking);
}

/// A summary for each block, and one for all of them at the end.
std::vector<Summary> summarize(const Grid& grid) {
  std::vector<Summary> summaries;
  Summary total;
  const float* xyz = grid.xyz.data();
  const std::vector<BlankingCounts> blanking = count_blanking(grid);
  for (integer b = 1; b <= grid.blocks; ++b) {
    Summary block;
    const std::int64_t points = grid.points_of(b);
    for (std::int64_t p = 0; p < points; ++p, xyz += 3) block.add_point(xyz);
    if (!blanking.empty()) block.blanking = blanking[static_cast<std::size_t>(b) - 1];
    total.add(block);
    summaries.push_back(block);
  }
  summaries.push_back(total);
  return summaries;
}

std::string block_label(std::size_t row, const std::vector<Summary>& summaries) {
  return row + 1 < summaries.size() ? std::to_string(row + 1) : "all";
}

void print_extents(const Grid& grid, const std::vector<Summary>& summaries) {
  std::vector<std::string> header = {"block", "i", "j", "k", "points"};
  const bool blanking = grid.iblank.allocated();
  if (blanking) header.insert(header.end(), {"blank 0", "blank 1", "blank <0", "blank >1"});
  Table table(header);
  for (std::size_t row = 0; row < summaries.size(); ++row) {
    const Summary& summary = summaries[row];
    std::vector<std::string> entries = {block_label(row, summaries), "", "", ""};
    if (row + 1 < summaries.size()) {
      entries[1] = std::to_string(grid.idim(row + 1));
      entries[2] = std::to_string(grid.jdim(row + 1));
      entries[3] = std::to_string(grid.kdim(row + 1));
    }
    entries.push_back(std::to_string(summary.points));
    if (blanking) {
      const BlankingCounts& counts = summary.blanking;
      for (const auto count : {counts.blanked, counts.used, counts.negative, counts.other}) {
        entries.push_back(std::to_string(count));
      }
    }
    table.add(entries);
  }
  table.print();
}

void print_box(const std::vector<Summary>& summaries) {
  std::vector<std::string> header = {"block", "x min", "x max", "y min", "y max", "z min", "z max"};
  const bool not_finite = summaries.back().not_finite > 0;
  if (not_finite) header.emplace_back("not finite");
  Table table(header);
  for (std::size_t row = 0; row < summaries.size(); ++row) {
    std::vector<std::string> entries = {block_label(row, summaries)};
    for (const Range& range : summaries[row].box) {
      entries.push_back(range.empty() ? "-" : digits(range.low));
      entries.push_back(range.empty() ? "-" : digits(range.high));
    }
    if (not_finite) entries.push_back(std::to_string(summaries[row].not_finite));
    table.add(entries);
  }
  table.print();
}

}  // namespace

void print_grid_info(const std::string& path, const Found& found, const Grid& grid) {
  const std::vector<Summary> summaries = summarize(grid);
  print_line("file    " + path);
  print_line("read as " + describe(found.grid()));
  print_line("because " + found.reason);
  print_line("holds   " + counted(grid.blocks, "block") + ", " +
             counted(summaries.back().points, "point"));
  print_line("");
  print_extents(grid, summaries);
  print_line("");
  print_box(summaries);
  print_variables(report_on_coordinates(grid.xyz, extents_of(grid)), "coordinate");
}

}  // namespace p3dgrid::tool
