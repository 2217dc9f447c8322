#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <span>

#include "quality.hpp"

namespace p3dgrid::tool {
namespace {

double determinant(const Vector& a, const Vector& b, const Vector& c) {
  return dot(a, cross(b, c));
}

/// Volume of a hexahedron with trilinear edges. Bit 0 of a corner's number is i, bit 1 j, bit 2 k.
inline double volume(const std::array<Vector, 8>& p) {
  return (determinant(p[7] - p[1] + (p[6] - p[0]), p[7] - p[2], p[3] - p[0]) +
          determinant(p[6] - p[0], p[7] - p[2] + (p[5] - p[0]), p[7] - p[4]) +
          determinant(p[7] - p[1], p[5] - p[0], p[7] - p[4] + (p[3] - p[0]))) /
         12;
}

/// Up to `longest` points of a grid line in the direction i.
struct Run {
  static constexpr std::int32_t longest = 80;  ///< the edges of a run stay in the first cache

  BlockExtents first = {};
  std::int64_t point = 0;  ///< number of the first point
  std::int32_t count = 0;
};

/// Edges in one direction from the points of a run and from the point after it. The components and
/// squared lengths are arrays of a fixed size, so that the compiler vectorises loops over them. A
/// pointer to the x component stands for an edge.
class Edges {
 public:
  void set(std::int32_t edge, const Vector& vector) {
    values_[edge] = vector[0];
    values_[edge + size] = vector[1];
    values_[edge + 2 * size] = vector[2];
    values_[edge + 3 * size] = dot(vector, vector);
  }
  [[nodiscard]] const double* first() const { return values_; }

  [[nodiscard]] static double square(const double* edge) { return edge[3 * size]; }
  [[nodiscard]] static double product(const double* a, const double* b) {
    return a[0] * b[0] + a[size] * b[size] + a[2 * size] * b[2 * size];
  }

 private:
  static constexpr std::ptrdiff_t size = Run::longest + 1;
  double values_[4 * size] = {};
};

/// Whether any of the first values passes a test. g++ vectorises a search that does not end at the
/// first hit, if its result is as wide as the values.
bool any_of_first(std::int64_t count, auto passes) {
  std::int64_t found = 0;
  for (std::int64_t n = 0; n < count; ++n) {
    if (passes(n)) found = 1;
  }
  return found != 0;
}

/// Whether a squared cosine between one of two edges and one of two others exceeds `worst`.
bool any_cosine_exceeds(double worst, const std::array<const double*, 2>& edges,
                        const std::array<const double*, 2>& others, std::int32_t count) {
  const auto excess = [worst](const double* edge, const double* other) {
    const double product = Edges::product(edge, other);
    return product * product - worst * (Edges::square(edge) * Edges::square(other));
  };
  return any_of_first(count, [excess, one = edges[0], opposite_one = edges[1], other = others[0],
                              opposite_other = others[1]](std::int64_t e) {
    return std::max(std::max(excess(one + e, other + e), excess(one + e, opposite_other + e)),
                    std::max(excess(opposite_one + e, other + e),
                             excess(opposite_one + e, opposite_other + e))) > 0;
  });
}

/// Measures a block with coordinates of one type, run by run. Loops over all points of a run test
/// whether any of them may exceed the worst value so far; only then are the points measured one by
/// one.
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
    for (const Direction d : all_directions) {
      if (along(block.extents, d) > 1) wide_.push_back(d);
    }
    is_flat_ = std::ranges::all_of(z_, [this](Real z) { return z == z_[0]; });
  }

  BlockQuality result() {
    const BlockExtents& extents = block_.extents;
    const std::int32_t runs = (extents.i - 1) / Run::longest + 1;
    const std::int32_t length = (extents.i - 1) / runs + 1;
    for (std::int32_t k = 0; k < extents.k; ++k) {
      for (std::int32_t j = 0; j < extents.j; ++j) {
        const std::int64_t line = step(Direction::j) * j + step(Direction::k) * k;
        for (std::int32_t left = extents.i; left > 0; left -= std::min(left, length)) {
          const std::int32_t i = extents.i - left;
          measure({{i, j, k}, line + i, std::min(left, length)});
        }
      }
    }
    summarise();
    return result_;
  }

 private:
  /// Leaves `valid_` empty if all points are valid.
  void find_valid_points() {
    valid_.resize(x_.size());
    bool all = true;
    for (std::size_t p = 0; p < x_.size(); ++p) {
      const bool blanked = !block_.iblank.empty() && block_.iblank[p] == 0;
      const bool finite = std::isfinite(x_[p]) && std::isfinite(y_[p]) && std::isfinite(z_[p]);
      valid_[p] = static_cast<char>(!blanked && finite);
      result_.invalid_points += static_cast<std::int64_t>(!blanked && !finite);
      all = all && !blanked && finite;
    }
    if (all) valid_.clear();
  }

  [[nodiscard]] std::int64_t step(Direction d) const { return steps_[static_cast<std::size_t>(d)]; }
  [[nodiscard]] bool valid(std::int64_t p) const {
    return valid_.empty() || valid_[static_cast<std::size_t>(p)] != 0;
  }
  [[nodiscard]] Vector at(std::int64_t point) const {
    const auto p = static_cast<std::size_t>(point);
    return {x_[p], y_[p], z_[p]};
  }

  /// Number of points at the start of a run, at most `count`, from which these steps stay in the
  /// block.
  [[nodiscard]] std::int32_t room(const Run& run, std::int32_t count,
                                  std::initializer_list<Direction> steps) const {
    BlockExtents end = block_.extents;
    for (const Direction d : steps) --along(end, d);
    if (run.first.j >= end.j || run.first.k >= end.k) return 0;
    return std::clamp(end.i - run.first.i, 0, count);
  }

  /// The edges in a direction that begin at the run.
  [[nodiscard]] const double* edges(Direction d) const {
    return edges_[static_cast<std::size_t>(d)][0].first();
  }
  /// The edges that begin a step further.
  [[nodiscard]] const double* edges(Direction d, Direction after) const {
    if (after == Direction::i) return edges(d) + 1;
    return edges_[static_cast<std::size_t>(d)][static_cast<std::size_t>(after)].first();
  }

  void set_edges(Edges& edges, std::int64_t point, Direction d, std::int32_t count) {
    for (std::int32_t e = 0; e < count; ++e) edges.set(e, at(point + e + step(d)) - at(point + e));
  }

  void measure(const Run& run) {
    for (const Direction d : wide_) {
      auto& [here, after_j, after_k] = edges_[static_cast<std::size_t>(d)];
      set_edges(here, run.point, d, room(run, run.count + 1, {d}));
      set_edges(after_j, run.point + step(Direction::j), d,
                room(run, run.count + 1, {d, Direction::j}));
      set_edges(after_k, run.point + step(Direction::k), d,
                room(run, run.count + 1, {d, Direction::k}));
    }
    for (const Direction d : wide_) measure_edges(run, d);
    if (wide_.size() < 2) return;
    measure_corners(run, wide_[0], wide_[1]);
    if (wide_.size() == 2) {
      return measure_cells(run, room(run, run.count, {wide_[0], wide_[1]}),
                           [&](std::int64_t p) { return area(p, wide_[0], wide_[1]); });
    }
    measure_corners(run, wide_[0], wide_[2]);
    measure_corners(run, wide_[1], wide_[2]);
    measure_cells(run, room(run, run.count, {wide_[0], wide_[1], wide_[2]}),
                  [&](std::int64_t p) { return hexahedron(p); });
  }

  void measure_edges(const Run& run, Direction d) {
    Worst& worst = stretching_[static_cast<std::size_t>(d)];
    const std::int32_t count = room(run, run.count, {d});
    const auto is_zero = [edge = edges(d)](std::int64_t e) { return Edges::square(edge + e) == 0; };
    const auto is_worse = [edge = edges(d), next = edges(d, d),
                           limit = worst.value](std::int64_t e) {
      const double one = Edges::square(edge + e);
      const double other = Edges::square(next + e);
      return std::max(one, other) > limit * std::min(one, other);
    };
    if (!any_of_first(count, is_zero) && !any_of_first(room(run, run.count, {d, d}), is_worse)) {
      return;
    }
    BlockExtents index = run.first;
    for (std::int32_t e = 0; e < count; ++e, ++index.i) measure_edge(run.point + e, index, d);
  }

  void measure_edge(std::int64_t p, const BlockExtents& index, Direction d) {
    const std::int64_t next = p + step(d);
    if (!valid(p) || !valid(next)) return;
    const Vector edge = at(next) - at(p);
    const double length = dot(edge, edge);
    if (length == 0) return zero_edges_[static_cast<std::size_t>(d)].add(index);
    const std::int64_t after = next + step(d);
    if (along(index, d) + 2 >= along(block_.extents, d) || !valid(after)) return;
    const Vector other = at(after) - at(next);
    const double other_length = dot(other, other);
    if (other_length == 0) return;
    const double ratio = squared_ratio(length, other_length);
    Worst& worst = stretching_[static_cast<std::size_t>(d)];
    if (ratio <= worst.value) return;
    worst = {ratio, index};
    ++along(worst.place, d);
  }

  /// The corners of the quadrilaterals in two directions.
  void measure_corners(const Run& run, Direction a, Direction b) {
    Worst& worst = skewness_[static_cast<std::size_t>(a) + static_cast<std::size_t>(b) - 1];
    const std::int32_t count = room(run, run.count, {a, b});
    if (!any_cosine_exceeds(worst.value, {edges(a), edges(a, b)}, {edges(b), edges(b, a)}, count)) {
      return;
    }
    const std::array<std::int64_t, 4> corners = {0, step(a), step(a) + step(b), step(b)};
    BlockExtents index = run.first;
    for (std::int32_t e = 0; e < count; ++e, ++index.i) {
      measure_quadrilateral(run.point + e, index, corners, worst);
    }
  }

  void measure_quadrilateral(std::int64_t p, const BlockExtents& index,
                             const std::array<std::int64_t, 4>& corners, Worst& worst) const {
    std::array<Vector, 4> edges;
    for (std::size_t c = 0; c < 4; ++c) {
      if (!valid(p + corners[c])) return;
      edges[c] = at(p + corners[(c + 1) % 4]) - at(p + corners[c]);
    }
    for (std::size_t c = 0; c < 4; ++c) {
      const double cosine = squared_cosine(edges[c], edges[(c + 1) % 4]);
      if (cosine > worst.value) worst = {cosine, index};
    }
  }

  /// Counts the cells by the sign of their volume.
  template <class Volume>
  void measure_cells(const Run& run, std::int32_t count, Volume volume_of) {
    std::array<double, Run::longest> volumes;
    for (std::int32_t c = 0; c < count; ++c) {
      volumes[static_cast<std::size_t>(c)] = volume_of(run.point + c);
    }
    const auto has_other_sign = [values = volumes.data(), sign = sum_ < 0 ? -1.0 : 1.0](
                                    std::int64_t c) { return !(sign * values[c] > 0); };
    if (valid_.empty() && !any_of_first(count, has_other_sign)) {
      (sum_ < 0 ? negative_ : positive_).add(run.first, count);
      std::for_each_n(volumes.begin(), count, [this](double volume) { sum_ += volume; });
      result_.cells += count;
      return;
    }
    BlockExtents index = run.first;
    for (std::int32_t c = 0; c < count; ++c, ++index.i) {
      if (!cell_is_valid(run.point + c)) continue;
      ++result_.cells;
      const double volume = volumes[static_cast<std::size_t>(c)];
      sum_ += volume;
      if (volume == 0) {
        result_.zero_volumes.add(index);
      } else {
        (volume > 0 ? positive_ : negative_).add(index);
      }
    }
  }

  [[nodiscard]] bool cell_is_valid(std::int64_t p) const {
    if (valid_.empty()) return true;
    for (std::size_t corner = 0; corner < std::size_t{1} << wide_.size(); ++corner) {
      std::int64_t point = p;
      for (std::size_t d = 0; d < wide_.size(); ++d) {
        if ((corner >> d & 1) != 0) point += step(wide_[d]);
      }
      if (!valid(point)) return false;
    }
    return true;
  }

  [[nodiscard]] double hexahedron(std::int64_t p) const {
    const std::int64_t j = step(Direction::j);
    const std::int64_t k = step(Direction::k);
    return volume({at(p), at(p + 1), at(p + j), at(p + j + 1), at(p + k), at(p + k + 1),
                   at(p + k + j), at(p + k + j + 1)});
  }

  /// Area of a quadrilateral, signed in the x-y plane. Elsewhere callers only test whether it is 0.
  [[nodiscard]] double area(std::int64_t p, Direction a, Direction b) const {
    const Vector twice =
        cross(at(p + step(a) + step(b)) - at(p), at(p + step(b)) - at(p + step(a)));
    return (is_flat_ ? twice[2] : std::sqrt(dot(twice, twice))) / 2;
  }

  void summarise() {
    for (std::size_t d = 0; d < all_directions.size(); ++d) {
      if (result_.zero_edges.count == 0) result_.zero_edges.first = zero_edges_[d].first;
      result_.zero_edges.count += zero_edges_[d].count;
      keep_worse(result_.stretching, stretching_[d]);
      keep_worse(result_.skewness, skewness_[d]);
    }
    if (result_.stretching) result_.stretching->value = std::sqrt(result_.stretching->value);
    if (result_.skewness) result_.skewness->value = skewness_of(result_.skewness->value);
    if (sum_ == 0) return;
    if (wide_.size() == 3 || is_flat_) {
      result_.handedness = sum_ > 0 ? Handedness::right : Handedness::left;
    }
    result_.negative = sum_ > 0 ? negative_ : positive_;
  }

  static void keep_worse(std::optional<Worst>& worst, const Worst& other) {
    if (other.value >= 0 && (!worst || other.value > worst->value)) worst = other;
  }

  static constexpr Worst none = {-1, {}};

  const Block& block_;
  std::span<const Real> x_;
  std::span<const Real> y_;
  std::span<const Real> z_;
  std::array<std::int64_t, 3> steps_;
  std::vector<char> valid_;
  std::vector<Direction> wide_;  ///< directions with more than one point
  bool is_flat_ = false;         ///< all points have the same z, so that areas have a sign
  std::array<std::array<Edges, 3>, 3> edges_;  ///< by direction: at the run, a step along j, k
  std::array<Occurrences, 3> zero_edges_;      ///< by direction
  std::array<Worst, 3> stretching_ = {none, none, none};  ///< squared; by direction
  std::array<Worst, 3> skewness_ = {none, none, none};    ///< squared cosines of i-j, i-k, j-k
  Occurrences positive_;
  Occurrences negative_;
  double sum_ = 0;  ///< of all volumes
  BlockQuality result_;
};

}  // namespace

BlockQuality quality_of(const Block& block) {
  return block.x.visit(
      [&]<class Real>(std::span<const Real>) { return Measurement<Real>(block).result(); });
}

}  // namespace p3dgrid::tool
