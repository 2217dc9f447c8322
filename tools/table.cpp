#include "table.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include "console.hpp"

namespace p3dgrid::tool {
namespace {

template <class Real>
std::string shortest(Real value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value).ptr;
  return {text.begin(), end};
}

}  // namespace

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

std::string digits(float value) {
  return shortest(value);
}

std::string digits(double value) {
  return shortest(value);
}

std::string counted(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string counted(const Extents& extents) {
  return counted(extents.blocks(), "block") + ", " + counted(extents.points(), "point");
}

}  // namespace p3dgrid::tool
