#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// Index arithmetic: parts of a block, and the order of its points.
namespace p3dgrid {

class Reals;
struct Block;

/// The index directions of a block. The values count them from 0.
enum class Direction : std::uint8_t { i, j, k };

/// All directions, the fastest first.
inline constexpr std::array all_directions = {Direction::i, Direction::j, Direction::k};

/// "i", "j" or "k".
[[nodiscard]] constexpr char name_of(Direction direction) {
  return "ijk"[static_cast<std::size_t>(direction)];
}

/// The number of a direction; none for a text other than "i", "j" and "k".
[[nodiscard]] std::optional<Direction> direction_in(std::string_view text);

/// The entry of a direction.
[[nodiscard]] constexpr std::int32_t& along(BlockExtents& extents, Direction direction) {
  if (direction == Direction::i) return extents.i;
  return direction == Direction::j ? extents.j : extents.k;
}
/// @copydoc along
[[nodiscard]] constexpr std::int32_t along(const BlockExtents& extents, Direction direction) {
  if (direction == Direction::i) return extents.i;
  return direction == Direction::j ? extents.j : extents.k;
}

/// Indices in one direction, counted from 0: `first`, `first + stride` and so on up to `last`.
struct Indices {
  /// As `first`: the last point. As `last`: up to the last point.
  static constexpr std::int32_t all_points = 0x7fffffff;

  std::int32_t first = 0;          ///< lowest index
  std::int32_t last = all_points;  ///< highest; at most that of the last point
  std::int32_t stride = 1;         ///< step; at least 1

  /// The same for a direction of `extent` points, with `last` the highest index that the steps
  /// reach. Indices below 0 become 0.
  [[nodiscard]] Indices in(std::int32_t extent) const;

  /// Number of indices, after `in`.
  [[nodiscard]] constexpr std::int32_t count() const {
    return last < first ? 0 : (last - first) / stride + 1;
  }

  /// Compares all members.
  friend bool operator==(const Indices&, const Indices&) = default;
};

/// Parses "FIRST:LAST:STRIDE", "FIRST:LAST" or one index. Indices count from 1; `last` is that of
/// the last point. None for an invalid text.
[[nodiscard]] std::optional<Indices> indices_in(std::string_view text);

/// Parses a list of blocks or variables, such as "1,3-5". Numbers count from 1. None for an invalid
/// text, and for numbers above 1,000,000, which are taken for typing errors.
[[nodiscard]] std::optional<Sections> numbers_in(std::string_view text);

/// The points of a block from `first` up to `last`, which are included, in steps of `stride`;
/// counted from 0. `Indices` describes the members.
struct IndexRange {
  BlockExtents first = {};  ///< lowest indices
  /// Highest indices; at most the block's last.
  BlockExtents last = {Indices::all_points, Indices::all_points, Indices::all_points};
  BlockExtents stride = {1, 1, 1};  ///< steps; at least 1

  /// The indices of a direction.
  [[nodiscard]] Indices of(Direction direction) const {
    return {along(first, direction), along(last, direction), along(stride, direction)};
  }
  /// Replaces the indices of a direction.
  void set(Direction direction, const Indices& indices);

  /// The same for a block of these extents.
  [[nodiscard]] IndexRange in(const BlockExtents& block) const;

  /// Extents of the part of a block of these extents.
  [[nodiscard]] BlockExtents extents_in(const BlockExtents& block) const;
};

/// A permutation of the directions of a block, some of them reversed.
struct Orientation {
  /// For each new direction the old one.
  std::array<Direction, 3> axes = all_directions;
  /// For each new direction whether it runs from the last point to the first.
  std::array<bool, 3> reversed = {};

  /// Whether right-handed blocks stay right-handed.
  [[nodiscard]] bool keeps_handedness() const;

  /// The extents of a block after the change.
  [[nodiscard]] BlockExtents extents_of(const BlockExtents& block) const;

  /// Exchanges two directions.
  [[nodiscard]] static Orientation swap(Direction one, Direction other);
  /// Reverses a direction.
  [[nodiscard]] static Orientation reverse(Direction direction);
  /// This change, then another.
  [[nodiscard]] Orientation then(const Orientation& next) const;

  /// Compares both members.
  friend bool operator==(const Orientation&, const Orientation&) = default;
};

/// The points of a range of an array with the points of a block.
[[nodiscard]] Reals extract(const Reals& values, const BlockExtents& block,
                            const IndexRange& range);
/// The points of a range of a block.
[[nodiscard]] Block extract(const Block& block, const IndexRange& range);

/// An array with the points of a block in another order.
[[nodiscard]] Reals reorient(const Reals& values, const BlockExtents& block,
                             const Orientation& orientation);
/// The block with its points in another order. If the block is moved, memory for one more array is
/// needed.
[[nodiscard]] Block reorient(Block block, const Orientation& orientation);

}  // namespace p3dgrid

#pragma GCC visibility pop
