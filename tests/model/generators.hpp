#pragma once

#include <rapidcheck.h>

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

/// Random grids and values. They shrink towards few blocks of few points and round numbers.
namespace model {

using mod_p3dgrid::integer;

using Extents = std::array<integer, 3>;

[[nodiscard]] inline integer points_of(const Extents& extents) {
  return extents[0] * extents[1] * extents[2];
}

/// What the operations take as `idim`, `jdim`, `kdim` and points per block.
struct Blocks {
  std::vector<integer> idim, jdim, kdim, points;
  std::int64_t total = 0;

  explicit Blocks(const std::vector<Extents>& extents);
  [[nodiscard]] integer count() const { return static_cast<integer>(idim.size()); }
  /// Points that lie before block `block`, counted from 0.
  [[nodiscard]] std::int64_t before(std::size_t block) const;
};

/// One to four blocks with extents from 0 to 5.
[[nodiscard]] rc::Gen<std::vector<Extents>> block_extents();

/// Any 32 bits: ordinary numbers, and zeros of both signs, infinities, NaNs, denormals, extremes.
[[nodiscard]] rc::Gen<float> any_real();
[[nodiscard]] rc::Gen<std::vector<float>> any_reals(std::int64_t count);

[[nodiscard]] inline std::uint32_t bits(float value) {
  return std::bit_cast<std::uint32_t>(value);
}
template <class Range>
[[nodiscard]] std::vector<std::uint32_t> bits_of(const Range& values) {
  std::vector<std::uint32_t> all;
  for (const float value : values) all.push_back(bits(value));
  return all;
}

/// A single as it comes back from double precision: a signalling NaN is a quiet one then.
[[nodiscard]] float through_double(float value);

/// Each case begins as a run does, in an empty folder, with all messages kept quiet.
class InEmptyFolder {
 public:
  InEmptyFolder();
};

}  // namespace model
