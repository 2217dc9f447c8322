#include "table.hpp"

#include <algorithm>
#include <cstdio>

#include "console.hpp"

namespace p3dgrid::tool {

void Table::print() const {
  std::vector<std::size_t> widths(rows_.front().size(), 0);
  for (const auto& row : rows_) {
    for (std::size_t c = 0; c < widths.size(); ++c) {
      widths[c] = std::max(widths[c], row.at(c).size());
    }
  }
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t c = 0; c < widths.size(); ++c) {
      line.append(2 + widths[c] - row[c].size(), ' ').append(row[c]);
    }
    print_line(line);
  }
}

std::string rounded(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

std::string counted(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string counted(const Extents& extents) {
  return counted(extents.blocks(), "block") + ", " + counted(extents.points(), "point");
}

}  // namespace p3dgrid::tool
