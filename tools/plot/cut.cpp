#include "plot/cut.hpp"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "options.hpp"
#include "table.hpp"

namespace p3dgrid::tool::plot {
namespace {

/// Cuts a block cell by cell. Each cell contributes the polygons in which the cut crosses it; a
/// polygon is divided into triangles.
class Cutter {
 public:
  Cutter(const Block& block, std::size_t number, const Cut& cut)
      : block_(block),
        cut_(cut),
        along_(cut.coordinate == 0   ? block.x
               : cut.coordinate == 1 ? block.y
                                     : block.z),
        counts_{block.extents.i, block.extents.j, block.extents.k},
        steps_{1, counts_[0], counts_[0] * counts_[1]} {
    surface_.block = number;
    surface_.cut.emplace();
    along_.visit([&](auto values) {
      above_.reserve(values.size());
      for (const auto value : values) above_.push_back(value >= cut.value ? 1 : 0);
    });
  }

  Surface run() {
    Index at{};
    for (at[2] = 0; at[2] + 1 < counts_[2]; ++at[2]) {
      for (at[1] = 0; at[1] + 1 < counts_[1]; ++at[1]) {
        for (at[0] = 0; at[0] + 1 < counts_[0]; ++at[0]) cut_cell(at);
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

  /// Whether the cut crosses the cell, and all of its corners are finite and not blanked.
  [[nodiscard]] bool crosses(std::int64_t first) const {
    const auto corner = [&](unsigned number) {
      std::int64_t p = first;
      for (std::size_t d = 0; d < 3; ++d) p += (number >> d & 1U) != 0 ? steps_[d] : 0;
      return p;
    };
    int above = 0;
    for (unsigned n = 0; n < 8; ++n) above += is_above(corner(n)) ? 1 : 0;
    if (above == 0 || above == 8) return false;
    for (unsigned n = 0; n < 8; ++n) {
      const std::int64_t p = corner(n);
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
    surface_.points.back()[cut_.coordinate] = static_cast<float>(cut_.value);
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
    if (!crosses(first)) return;
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
      surface_.cut->cells.push_back({start, end, after, after});
      end = after;
    }
  }

  const Block& block_;
  const Cut& cut_;
  const Reals& along_;
  std::vector<char> above_;  ///< whether the coordinate of a point is at least that of the cut
  Index counts_;
  Index steps_;
  Surface surface_;
  std::unordered_map<std::int64_t, std::size_t> crossings_;  ///< by point and direction
  std::vector<CutCells::Line> lines_;                        ///< of one cell
};

std::optional<Cut> single_cut_in(const std::string& text) {
  if (text.size() < 3 || text[0] < 'x' || text[0] > 'z' || text[1] != '=') return std::nullopt;
  const auto value = real_in(text.substr(2));
  return value ? std::optional(Cut{static_cast<std::size_t>(text[0] - 'x'), *value}) : std::nullopt;
}

}  // namespace

std::vector<Cut> cuts_in(const std::string& text) {
  std::vector<Cut> cuts;
  for (std::size_t from = 0;;) {
    const std::size_t comma = text.find(',', from);
    const auto cut = single_cut_in(text.substr(from, comma - from));
    if (!cut) return {};
    cuts.push_back(*cut);
    if (comma == text.npos) return cuts;
    from = comma + 1;
  }
}

std::string describe(const Cut& cut) {
  return std::string(1, "xyz"[cut.coordinate]) + "=" + digits(cut.value);
}

std::optional<Surface> cut_through(const Block& block, std::size_t number, const Cut& cut) {
  Surface surface = Cutter(block, number, cut).run();
  return surface.points.empty() ? std::nullopt : std::optional(std::move(surface));
}

}  // namespace p3dgrid::tool::plot
