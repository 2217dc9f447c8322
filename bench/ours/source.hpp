#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mod_p3dgrid/logical.hpp"

namespace bench {

using mod_p3dgrid::integer;

inline constexpr integer coordinates = 3;
inline constexpr integer variables = 5;

/// The arrays from which all files are written. A source file holds them as in memory: number of
/// blocks, all i, j and k extents, then the coordinates and the flow values of every point.
struct Source {
  integer nblocks = 0;
  std::vector<integer> idim, jdim, kdim;
  std::int64_t points = 0;
  std::vector<float> xyz;   ///< (3, point)
  std::vector<float> flow;  ///< (5, point), if asked for
};

/// Writes a source file of four blocks; `points` is a multiple of 10,000.
void make_source(const std::string& path, std::int64_t points);

[[nodiscard]] Source load_source(const std::string& path, bool with_flow);

}  // namespace bench
