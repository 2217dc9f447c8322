#include "p3dgrid/index_range.hpp"

#include <algorithm>
#include <utility>

#include "p3dgrid/grid.hpp"

namespace p3dgrid {
namespace {

constexpr std::size_t number_of(Direction direction) {
  return static_cast<std::size_t>(direction);
}

/// Where the points of a new block lie in an old one: point (i, j, k) of the new block is element
/// `first + i * step[0] + j * step[1] + k * step[2]`.
struct PointMap {
  BlockExtents extents;  ///< of the new block
  std::int64_t first = 0;
  std::array<std::int64_t, 3> step = {};
};

std::array<std::int64_t, 3> steps_of(const BlockExtents& block) {
  return {1, block.i, std::int64_t{block.i} * block.j};
}

PointMap map_of(const BlockExtents& block, const IndexRange& range) {
  const IndexRange part = range.in(block);
  PointMap map{.extents = range.extents_in(block)};
  const auto steps = steps_of(block);
  for (const Direction d : all_directions) {
    map.first += part.of(d).first * steps[number_of(d)];
    map.step[number_of(d)] = part.of(d).stride * steps[number_of(d)];
  }
  return map;
}

PointMap map_of(const BlockExtents& block, const Orientation& orientation) {
  PointMap map{.extents = orientation.extents_of(block)};
  const auto steps = steps_of(block);
  for (std::size_t d = 0; d < 3; ++d) {
    const std::int64_t step = steps[number_of(orientation.axes[d])];
    map.step[d] = orientation.reversed[d] ? -step : step;
    if (orientation.reversed[d]) map.first += step * (along(map.extents, all_directions[d]) - 1);
  }
  return map;
}

/// Copies `count` values that are `step` apart. The common steps have fast paths.
template <class Value>
void copy_line(const Value* from, std::int64_t step, Value* to, std::int64_t count) {
  if (step == 1) {
    std::copy_n(from, count, to);
  } else if (step == -1) {
    std::reverse_copy(from - count + 1, from + 1, to);
  } else {
    for (std::int64_t n = 0; n < count; ++n) to[n] = from[n * step];
  }
}

/// Copies the points of a map. Works in tiles of the two directions that are fastest in the new
/// and in the old block, so that the cache lines of both stay in use.
template <class Value>
void copy(const Value* from, Value* to, const PointMap& map) {
  // Without a change of the fastest direction whole lines are copied.
  const std::int64_t tile = std::abs(map.step[0]) == 1 ? map.extents.points() : 32;
  const std::array<std::int64_t, 3> count = {map.extents.i, map.extents.j, map.extents.k};
  const auto new_steps = steps_of(map.extents);
  const std::size_t other = std::abs(map.step[2]) < std::abs(map.step[1]) ? 2 : 1;
  const std::size_t outer = 3 - other;
  for (std::int64_t c = 0; c < count[outer]; ++c) {
    for (std::int64_t first_b = 0; first_b < count[other]; first_b += tile) {
      const std::int64_t end_b = std::min(first_b + tile, count[other]);
      for (std::int64_t first_a = 0; first_a < count[0]; first_a += tile) {
        const std::int64_t end_a = std::min(first_a + tile, count[0]);
        for (std::int64_t b = first_b; b < end_b; ++b) {
          const Value* const source =
              from + map.first + c * map.step[outer] + b * map.step[other] + first_a * map.step[0];
          Value* const target = to + c * new_steps[outer] + b * new_steps[other] + first_a;
          copy_line(source, map.step[0], target, end_a - first_a);
        }
      }
    }
  }
}

Reals mapped(const Reals& values, const PointMap& map) {
  Reals result(values.precision(), map.extents.points());
  if (result.empty()) return result;
  values.visit([&](auto from) {
    result.visit([&](auto to) {
      if constexpr (sizeof(to[0]) == sizeof(from[0])) copy(from.data(), to.data(), map);
    });
  });
  return result;
}

/// @param result  another block, or the same one, whose arrays are replaced one by one
void map_arrays(const Block& block, const PointMap& map, Block& result) {
  result.x = mapped(block.x, map);
  result.y = mapped(block.y, map);
  result.z = mapped(block.z, map);
  if (!block.iblank.empty()) {
    Array<std::int32_t> iblank(static_cast<std::size_t>(map.extents.points()));
    if (!iblank.empty()) copy(block.iblank.data(), iblank.data(), map);
    result.iblank = std::move(iblank);
  }
  result.extents = map.extents;
}

/// A number from 1 up to `most`.
std::optional<std::int32_t> number_in(std::string_view text, std::int32_t most) {
  std::int64_t number = 0;
  for (const char character : text) {
    if (character < '0' || character > '9' || number > most) return std::nullopt;
    number = 10 * number + (character - '0');
  }
  if (number < 1 || number > most) return std::nullopt;
  return static_cast<std::int32_t>(number);
}

/// An index counted from 1, or `last`.
std::optional<std::int32_t> index_in(std::string_view text) {
  if (text == "last") return Indices::all_points;
  const auto number = number_in(text, Indices::all_points);
  return number ? std::optional(*number - 1) : std::nullopt;
}

/// Takes the text up to the next separator.
std::string_view next_part(std::string_view& text, char separator = ':') {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

}  // namespace

std::optional<Direction> direction_in(std::string_view text) {
  for (const Direction direction : all_directions) {
    if (text.size() == 1 && text.front() == name_of(direction)) return direction;
  }
  return std::nullopt;
}

Indices Indices::in(std::int32_t extent) const {
  Indices result{std::max(first == all_points ? extent - 1 : first, 0), std::min(last, extent - 1),
                 std::max(stride, 1)};
  if (result.count() > 0) result.last = result.first + (result.count() - 1) * result.stride;
  return result;
}

std::optional<Indices> indices_in(std::string_view text) {
  if (text.empty() || text.back() == ':') return std::nullopt;
  const auto first = index_in(next_part(text));
  if (!first) return std::nullopt;
  if (text.empty()) return Indices{*first, *first};
  const auto last = index_in(next_part(text));
  if (!last || *last < *first) return std::nullopt;
  if (text.empty()) return Indices{*first, *last};
  const auto stride = text == "last" ? std::nullopt : index_in(text);
  if (!stride) return std::nullopt;
  return Indices{*first, *last, *stride + 1};
}

std::optional<Sections> numbers_in(std::string_view text) {
  constexpr std::int32_t most = 1'000'000;
  if (text.empty() || text.back() == ',') return std::nullopt;
  Sections ranges;
  while (!text.empty()) {
    std::string_view range = next_part(text, ',');
    const bool is_number = range.find('-') == range.npos;
    const auto first = number_in(next_part(range, '-'), most);
    const auto last = is_number ? first : number_in(range, most);
    if (!first || !last || *last < *first) return std::nullopt;
    ranges.push_back({*first, *last});
  }
  return ranges;
}

void IndexRange::set(Direction direction, const Indices& indices) {
  along(first, direction) = indices.first;
  along(last, direction) = indices.last;
  along(stride, direction) = indices.stride;
}

IndexRange IndexRange::in(const BlockExtents& block) const {
  IndexRange result;
  for (const Direction d : all_directions) result.set(d, of(d).in(along(block, d)));
  return result;
}

BlockExtents IndexRange::extents_in(const BlockExtents& block) const {
  BlockExtents result;
  for (const Direction d : all_directions) along(result, d) = of(d).in(along(block, d)).count();
  return result;
}

bool Orientation::keeps_handedness() const {
  const auto number = [&](std::size_t n) { return number_of(axes[n]); };
  const bool even = (number(0) + 1) % 3 == number(1) && (number(1) + 1) % 3 == number(2);
  return even == (std::ranges::count(reversed, true) % 2 == 0);
}

BlockExtents Orientation::extents_of(const BlockExtents& block) const {
  return {along(block, axes[0]), along(block, axes[1]), along(block, axes[2])};
}

Orientation Orientation::swap(Direction one, Direction other) {
  Orientation result;
  std::swap(result.axes[number_of(one)], result.axes[number_of(other)]);
  return result;
}

Orientation Orientation::reverse(Direction direction) {
  Orientation result;
  result.reversed[number_of(direction)] = true;
  return result;
}

Orientation Orientation::then(const Orientation& next) const {
  Orientation result;
  for (std::size_t d = 0; d < 3; ++d) {
    const std::size_t middle = number_of(next.axes[d]);
    result.axes[d] = axes[middle];
    result.reversed[d] = reversed[middle] != next.reversed[d];
  }
  return result;
}

Reals extract(const Reals& values, const BlockExtents& block, const IndexRange& range) {
  return mapped(values, map_of(block, range));
}

Block extract(const Block& block, const IndexRange& range) {
  Block result;
  map_arrays(block, map_of(block.extents, range), result);
  return result;
}

Reals reorient(const Reals& values, const BlockExtents& block, const Orientation& orientation) {
  return mapped(values, map_of(block, orientation));
}

Block reorient(Block block, const Orientation& orientation) {
  map_arrays(block, map_of(block.extents, orientation), block);
  return block;
}

}  // namespace p3dgrid
