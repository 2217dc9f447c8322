#pragma once

#include <MOD_P3DReader.hpp>
#include <cstdint>
#include <string>
#include <vector>

namespace p3dgrid {

/// Points of each block in the three directions.
struct Extents {
  std::vector<mod_p3dgrid::integer> i;
  std::vector<mod_p3dgrid::integer> j;
  std::vector<mod_p3dgrid::integer> k;

  [[nodiscard]] mod_p3dgrid::integer blocks() const {
    return static_cast<mod_p3dgrid::integer>(i.size());
  }

  /// Points of a block, counted from 0.
  [[nodiscard]] std::int64_t points_of(std::size_t block) const {
    return std::int64_t{i[block]} * j[block] * k[block];
  }

  /// Points of all blocks.
  [[nodiscard]] std::int64_t points() const {
    std::int64_t sum = 0;
    for (std::size_t block = 0; block < i.size(); ++block) sum += points_of(block);
    return sum;
  }

  /// "49x25x5", the block counted from 0.
  [[nodiscard]] std::string text_of(std::size_t block) const {
    return std::to_string(i[block]) + "x" + std::to_string(j[block]) + "x" +
           std::to_string(k[block]);
  }

  /// Takes the values of three arrays, which may be unallocated.
  template <class Array>
  [[nodiscard]] static Extents of(const Array& idim, const Array& jdim, const Array& kdim) {
    const auto values = [](const Array& array) {
      const auto span = array.span();
      return std::vector<mod_p3dgrid::integer>(span.begin(), span.end());
    };
    return {values(idim), values(jdim), values(kdim)};
  }
};

}  // namespace p3dgrid
