#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {
namespace {

/// Cuts a block cell by cell. Each cell contributes the polygons in which the cut crosses it; a
/// polygon is divided into triangles.
class Cutter {
 public:
  Cutter(const Block& block, std::size_t number, const CoordinatePlane& cut)
      : block_(block),
        cut_(cut),
        along_(cut.axis == 0   ? block.x
               : cut.axis == 1 ? block.y
                               : block.z),
        counts_{block.extents.i, block.extents.j, block.extents.k},
        steps_{1, counts_[0], counts_[0] * counts_[1]} {
    surface_.block = number;
    surface_.cut.emplace();
    // A point on the cut is above it, unless no point is below: so a cut is also found at either
    // end of a block.
    along_.visit([&](auto values) {
      const bool has_lower =
          std::ranges::any_of(values, [&](auto value) { return value < cut.value; });
      above_.reserve(values.size());
      for (const auto value : values) {
        above_.push_back(value > cut.value || (has_lower && value == cut.value) ? 1 : 0);
      }
    });
  }

  Surface run() {
    std::vector<char> sums(static_cast<std::size_t>(counts_[0]));
    Index at{};
    for (at[2] = 0; at[2] + 1 < counts_[2]; ++at[2]) {
      for (at[1] = 0; at[1] + 1 < counts_[1]; ++at[1]) {
        at[0] = 0;
        add_lines(at, sums);
        for (; at[0] + 1 < counts_[0]; ++at[0]) {
          const auto i = static_cast<std::size_t>(at[0]);
          const int corners_above = sums[i] + sums[i + 1];
          if (corners_above > 0 && corners_above < 8) cut_cell(at);
        }
      }
    }
    return std::move(surface_);
  }

 private:
  using Index = std::array<std::int64_t, 3>;

  [[nodiscard]] std::int64_t point(const Index& at) const {
    return at[0] + at[1] * steps_[1] + at[2] * steps_[2];
  }
  [[nodiscard]] bool is_above(std::int64_t p) const {
    return above_[static_cast<std::size_t>(p)] != 0;
  }

  /// For each i the number of points above the cut on the four grid lines along a row of cells.
  /// Most rows have no cell that the cut crosses, and these loops are vectorised.
  void add_lines(const Index& at, std::vector<char>& sums) const {
    const char* const line = above_.data() + point(at);
    for (std::size_t i = 0; i < sums.size(); ++i) {
      sums[i] = static_cast<char>(line[i] + line[i + static_cast<std::size_t>(steps_[1])] +
                                  line[i + static_cast<std::size_t>(steps_[2])] +
                                  line[i + static_cast<std::size_t>(steps_[1] + steps_[2])]);
    }
  }

  /// Whether all corners of the cell are finite and not blanked.
  [[nodiscard]] bool is_valid(std::int64_t first) const {
    for (unsigned n = 0; n < 8; ++n) {
      std::int64_t p = first;
      for (std::size_t d = 0; d < 3; ++d) p += (n >> d & 1U) != 0 ? steps_[d] : 0;
      if (!block_.iblank.empty() && block_.iblank[static_cast<std::size_t>(p)] == 0) return false;
      if (!std::isfinite(block_.x[p] + block_.y[p] + block_.z[p])) return false;
    }
    return true;
  }

  /// The point where the cut crosses the edge from a point in a direction.
  std::size_t crossing(std::int64_t from, std::size_t direction) {
    const auto [found, is_new] = crossings_.try_emplace(
        3 * from + static_cast<std::int64_t>(direction), surface_.points.size());
    if (!is_new) return found->second;
    const std::int64_t to = from + steps_[direction];
    const double share = (cut_.value - along_[from]) / (along_[to] - along_[from]);
    surface_.cut->sources.push_back({from, to, share});
    const auto between = [&](const Reals& values) {
      return static_cast<float>(values[from] + share * (values[to] - values[from]));
    };
    surface_.points.push_back({between(block_.x), between(block_.y), between(block_.z)});
    surface_.points.back()[cut_.axis] = static_cast<float>(cut_.value);
    surface_.absent.push_back(0);
    return found->second;
  }

  /// Adds the lines in which the cut crosses the face in directions `a` and `b` of a cell. If it
  /// crosses the face twice, the choice of lines is the same in the neighbouring cell.
  void cut_face(std::int64_t first, std::size_t a, std::size_t b, bool is_outer) {
    std::array<std::size_t, 4> found{};
    std::size_t count = 0;
    const auto edge = [&](std::int64_t from, std::size_t direction) {
      if (is_above(from) == is_above(from + steps_[direction])) return;
      found[count++] = crossing(from, direction);
    };
    edge(first, a);
    edge(first, b);
    edge(first + steps_[b], a);
    edge(first + steps_[a], b);
    for (std::size_t n = 0; n + 1 < count; n += 2) {
      lines_.push_back({found[n], found[n + 1], is_outer});
    }
  }

  void cut_cell(const Index& at) {
    const std::int64_t first = point(at);
    if (!is_valid(first)) return;
    surface_.cut->crossed.push_back(static_cast<std::size_t>(first));
    lines_.clear();
    for (std::size_t d = 0; d < 3; ++d) {
      const std::size_t a = d == 0 ? 1 : 0;
      const std::size_t b = d == 2 ? 1 : 2;
      cut_face(first, a, b, at[d] == 0);
      cut_face(first + steps_[d], a, b, at[d] + 2 == counts_[d]);
    }
    surface_.cut->lines.insert(surface_.cut->lines.end(), lines_.begin(), lines_.end());
    while (!lines_.empty()) add_polygon();
  }

  /// Removes lines that form a polygon, and adds its triangles.
  void add_polygon() {
    const std::size_t start = lines_.back().from;
    std::size_t end = lines_.back().to;
    lines_.pop_back();
    const auto touches = [&](const CutCells::Line& line) {
      return line.from == end || line.to == end;
    };
    for (auto next = std::ranges::find_if(lines_, touches); next != lines_.end();
         next = std::ranges::find_if(lines_, touches)) {
      const std::size_t after = next->from == end ? next->to : next->from;
      lines_.erase(next);
      if (after == start) return;
      surface_.cut->cells.push_back({{start, end, after, after}, surface_.cut->crossed.size() - 1});
      end = after;
    }
  }

  const Block& block_;
  const CoordinatePlane& cut_;
  const Reals& along_;
  std::vector<char> above_;  ///< whether a point is above the cut
  Index counts_;
  Index steps_;
  Surface surface_;
  std::unordered_map<std::int64_t, std::size_t> crossings_;  ///< by point and direction
  std::vector<CutCells::Line> lines_;                        ///< of one cell
};

}  // namespace

std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                   const CoordinatePlane& cut) {
  Surface surface = Cutter(block, number, cut).run();
  return surface.points.empty() ? std::nullopt : std::optional(std::move(surface));
}

}  // namespace p3dgrid::tool::plot
