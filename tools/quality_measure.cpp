#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <span>

#include "quality.hpp"

namespace p3dgrid::tool {
namespace {

struct Vector {
  double x = 0;
  double y = 0;
  double z = 0;

  friend Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
};

double dot(const Vector& a, const Vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

double determinant(const Vector& a, const Vector& b, const Vector& c) {
  return a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) +
         a.z * (b.x * c.y - b.y * c.x);
}

/// Volume of a hexahedron with trilinear edges. Bit 0 of a corner's number is i, bit 1 j, bit 2 k.
double volume(const std::array<Vector, 8>& p) {
  return (determinant(p[7] - p[1] + (p[6] - p[0]), p[7] - p[2], p[3] - p[0]) +
          determinant(p[6] - p[0], p[7] - p[2] + (p[5] - p[0]), p[7] - p[4]) +
          determinant(p[7] - p[1], p[5] - p[0], p[7] - p[4] + (p[3] - p[0]))) /
         12;
}

/// Measures a block with coordinates of one type.
template <class Real>
class Measurement {
 public:
  explicit Measurement(const Block& block)
      : block_(block),
        x_(block.x.span<Real>()),
        y_(block.y.span<Real>()),
        z_(block.z.span<Real>()),
        steps_{1, block.extents.i, std::int64_t{block.extents.i} * block.extents.j} {
    result_.extents = block.extents;
    find_valid_points();
  }

  BlockQuality run() {
    if (result_.extents.points() == 0) return result_;
    std::vector<Direction> wide;
    for (const Direction d : all_directions) {
      if (along(result_.extents, d) > 1) wide.push_back(d);
    }
    double worst_ratio = 0;
    for (const Direction d : wide) measure_edges(d, worst_ratio);
    if (result_.stretching) result_.stretching->value = std::sqrt(worst_ratio);
    double worst_cosine = -1;
    for (std::size_t a = 0; a < wide.size(); ++a) {
      for (std::size_t b = a + 1; b < wide.size(); ++b) {
        measure_corners(wide[a], wide[b], worst_cosine);
      }
    }
    if (result_.skewness) {
      result_.skewness->value = std::asin(std::sqrt(std::min(worst_cosine, 1.0))) / right_angle;
    }
    if (wide.size() == 3) {
      measure_cells(wide, [&](std::int64_t p) { return hexahedron(p); });
    } else if (wide.size() == 2) {
      find_flatness();
      measure_cells(wide, [&](std::int64_t p) { return area(p, wide[0], wide[1]); });
      if (!is_flat_) result_.handedness = Handedness::none;
    }
    return result_;
  }

 private:
  static constexpr double right_angle = std::numbers::pi / 2;

  void find_valid_points() {
    valid_.resize(x_.size());
    for (std::size_t p = 0; p < x_.size(); ++p) {
      const bool blanked = !block_.iblank.empty() && block_.iblank[p] == 0;
      const bool finite = std::isfinite(x_[p]) && std::isfinite(y_[p]) && std::isfinite(z_[p]);
      valid_[p] = static_cast<char>(!blanked && finite);
      result_.invalid_points += static_cast<std::int64_t>(!blanked && !finite);
    }
  }

  [[nodiscard]] std::int64_t step(Direction d) const { return steps_[static_cast<std::size_t>(d)]; }
  [[nodiscard]] bool valid(std::int64_t p) const {
    return valid_[static_cast<std::size_t>(p)] != 0;
  }
  [[nodiscard]] Vector at(std::int64_t point) const {
    const auto p = static_cast<std::size_t>(point);
    return {x_[p], y_[p], z_[p]};
  }
  /// The next index in a direction.
  [[nodiscard]] static BlockExtents after_step(BlockExtents index, Direction d) {
    ++along(index, d);
    return index;
  }

  /// Whether all points have the same z, so that areas have a sign.
  void find_flatness() {
    is_flat_ = std::ranges::all_of(z_, [&](Real z) { return z == z_[0]; });
  }

  /// Calls `take` for the points that are not the last in any of the directions.
  template <class Take>
  void for_each_point(std::initializer_list<Direction> short_of, Take take) const {
    BlockExtents end = block_.extents;
    for (const Direction d : short_of) --along(end, d);
    for (std::int32_t k = 0; k < end.k; ++k) {
      for (std::int32_t j = 0; j < end.j; ++j) {
        const std::int64_t row = step(Direction::j) * j + step(Direction::k) * k;
        for (std::int32_t i = 0; i < end.i; ++i) take(row + i, BlockExtents{i, j, k});
      }
    }
  }

  void measure_edges(Direction d, double& worst_ratio) {
    for_each_point({d}, [&](std::int64_t p, const BlockExtents& index) {
      const std::int64_t next = p + step(d);
      if (!valid(p) || !valid(next)) return;
      const Vector edge = at(next) - at(p);
      const double length = dot(edge, edge);
      if (length == 0) return result_.zero_edges.add(index);
      const std::int64_t after = next + step(d);
      if (along(index, d) + 2 >= along(block_.extents, d) || !valid(after)) return;
      const Vector other = at(after) - at(next);
      const double longer = dot(other, other);
      if (longer == 0) return;
      const double ratio = longer > length ? longer / length : length / longer;
      if (ratio <= worst_ratio) return;
      worst_ratio = ratio;
      result_.stretching = Worst{0, after_step(index, d)};
    });
  }

  /// The corners of the quadrilaterals in two directions.
  void measure_corners(Direction a, Direction b, double& worst) {
    const std::array<std::int64_t, 4> corners = {0, step(a), step(a) + step(b), step(b)};
    for_each_point({a, b}, [&](std::int64_t p, const BlockExtents& index) {
      std::array<Vector, 4> edges;
      std::array<double, 4> lengths{};
      for (std::size_t c = 0; c < 4; ++c) {
        if (!valid(p + corners[c])) return;
        edges[c] = at(p + corners[(c + 1) % 4]) - at(p + corners[c]);
        lengths[c] = dot(edges[c], edges[c]);
      }
      for (std::size_t c = 0; c < 4; ++c) {
        const std::size_t next = (c + 1) % 4;
        const double scale = lengths[c] * lengths[next];
        const double product = dot(edges[c], edges[next]);
        if (scale == 0 || product * product <= worst * scale) continue;
        worst = product * product / scale;
        result_.skewness = Worst{0, index};
      }
    });
  }

  /// Counts the cells by the sign of their volume.
  template <class Volume>
  void measure_cells(const std::vector<Direction>& wide, Volume volume_of) {
    Occurrences positive;
    Occurrences negative;
    double sum = 0;
    const auto take = [&](std::int64_t p, const BlockExtents& index) {
      if (!cell_is_valid(p, wide)) return;
      ++result_.cells;
      const double value = volume_of(p);
      sum += value;
      if (value == 0) {
        result_.zero_volumes.add(index);
      } else {
        (value > 0 ? positive : negative).add(index);
      }
    };
    if (wide.size() == 3) {
      for_each_point({wide[0], wide[1], wide[2]}, take);
    } else {
      for_each_point({wide[0], wide[1]}, take);
    }
    if (sum == 0) return;
    result_.handedness = sum > 0 ? Handedness::right : Handedness::left;
    result_.negative = sum > 0 ? negative : positive;
  }

  [[nodiscard]] bool cell_is_valid(std::int64_t p, const std::vector<Direction>& wide) const {
    for (std::size_t corner = 0; corner < std::size_t{1} << wide.size(); ++corner) {
      std::int64_t point = p;
      for (std::size_t d = 0; d < wide.size(); ++d) {
        if ((corner >> d & 1) != 0) point += step(wide[d]);
      }
      if (!valid(point)) return false;
    }
    return true;
  }

  [[nodiscard]] double hexahedron(std::int64_t p) const {
    std::array<Vector, 8> corners;
    for (std::size_t c = 0; c < 8; ++c) {
      corners[c] = at(p + static_cast<std::int64_t>(c & 1) +
                      static_cast<std::int64_t>(c >> 1 & 1) * step(Direction::j) +
                      static_cast<std::int64_t>(c >> 2) * step(Direction::k));
    }
    return volume(corners);
  }

  /// Area of a quadrilateral in the x-y plane. That of others only matters if it is 0.
  [[nodiscard]] double area(std::int64_t p, Direction a, Direction b) const {
    const Vector one = at(p + step(a) + step(b)) - at(p);
    const Vector other = at(p + step(b)) - at(p + step(a));
    const double xy = one.x * other.y - one.y * other.x;
    if (is_flat_) return xy / 2;
    const double yz = one.y * other.z - one.z * other.y;
    const double zx = one.z * other.x - one.x * other.z;
    return std::sqrt(xy * xy + yz * yz + zx * zx) / 2;
  }

  const Block& block_;
  std::span<const Real> x_;
  std::span<const Real> y_;
  std::span<const Real> z_;
  std::array<std::int64_t, 3> steps_;
  std::vector<char> valid_;
  bool is_flat_ = false;
  BlockQuality result_;
};

}  // namespace

BlockQuality quality_of(const Block& block) {
  return block.x.visit(
      [&]<class Real>(std::span<const Real>) { return Measurement<Real>(block).run(); });
}

}  // namespace p3dgrid::tool
