#include "ours/source.hpp"

#include <cmath>
#include <fstream>
#include <span>
#include <stdexcept>

namespace bench {
namespace {

constexpr integer blocks = 4;
constexpr integer short_extent = 50;

std::int64_t point_count(const Source& source) {
  std::int64_t points = 0;
  for (std::size_t b = 0; b < source.idim.size(); ++b) {
    points += std::int64_t{source.idim[b]} * source.jdim[b] * source.kdim[b];
  }
  return points;
}

template <class T>
void put(std::ofstream& file, std::span<const T> values) {
  file.write(reinterpret_cast<const char*>(values.data()),
             static_cast<std::streamsize>(values.size_bytes()));
}

template <class T>
void take(std::ifstream& file, std::span<T> values) {
  file.read(reinterpret_cast<char*>(values.data()),
            static_cast<std::streamsize>(values.size_bytes()));
}

/// Smooth values of several magnitudes and both signs that use all digits of single precision.
float value_of(std::int64_t point, integer row) {
  const auto p = static_cast<double>(point);
  return static_cast<float>(std::sin(1e-3 * p * (row + 1)) *
                            std::exp(3.0 * std::cos(7e-5 * p + row)));
}

void put_rows(std::ofstream& file, std::int64_t points, integer first_row, integer rows) {
  std::vector<float> point(static_cast<std::size_t>(rows));
  for (std::int64_t p = 0; p < points; ++p) {
    for (integer r = 0; r < rows; ++r) {
      point[static_cast<std::size_t>(r)] = value_of(p, first_row + r);
    }
    put<float>(file, point);
  }
}

}  // namespace

void make_source(const std::string& path, std::int64_t points) {
  const std::int64_t layer = std::int64_t{blocks} * short_extent * short_extent;
  if (points <= 0 || points % layer != 0) {
    throw std::runtime_error("points: not a multiple of " + std::to_string(layer));
  }
  std::ofstream file(path, std::ios::binary);
  put<integer>(file, std::vector<integer>{blocks});
  put<integer>(file, std::vector<integer>(2 * blocks, short_extent));
  put<integer>(file, std::vector<integer>(blocks, static_cast<integer>(points / layer)));
  put_rows(file, points, 0, coordinates);
  put_rows(file, points, coordinates, variables);
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

Source load_source(const std::string& path, bool with_flow) {
  std::ifstream file(path, std::ios::binary);
  Source source;
  take<integer>(file, {&source.nblocks, 1});
  for (auto* extents : {&source.idim, &source.jdim, &source.kdim}) {
    extents->resize(static_cast<std::size_t>(source.nblocks));
    take<integer>(file, *extents);
  }
  source.points = point_count(source);
  source.xyz.resize(static_cast<std::size_t>(source.points * coordinates));
  take<float>(file, source.xyz);
  if (with_flow) {
    source.flow.resize(static_cast<std::size_t>(source.points * variables));
    take<float>(file, source.flow);
  }
  if (!file) throw std::runtime_error("cannot read " + path);
  return source;
}

}  // namespace bench
