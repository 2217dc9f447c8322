#pragma once

#include <MOD_P3DReader.hpp>
#include <new>
#include <p3dgrid/form.hpp>
#include <string>
#include <string_view>
#include <vector>

/// Arguments and results of the library's operations.
namespace p3dgrid::tool {

using mod_p3dgrid::allocatable;
using mod_p3dgrid::integer;

/// The name of a file for the library. A path that is too long gets a short name, which the library
/// resolves to the path. Valid until the process ends.
/// @param coding  of the file from now on
[[nodiscard]] mod_p3dgrid::FileName name_for(const std::string& path, const Coding& coding = {});

/// A short prefix for names that the library makes up; they resolve to `path_stem` with the same
/// ending. No name from `name_for` begins with it.
[[nodiscard]] mod_p3dgrid::FileName prefix_for(const std::string& path_stem);

/// The path of a name. Other names are paths.
[[nodiscard]] std::string path_behind(std::string_view name);

[[nodiscard]] inline integer format_code(const Coding& coding) {
  return static_cast<mod_p3dgrid::integer>(coding.encoding);
}

[[nodiscard]] inline mod_p3dgrid::logical precision_flag(const Coding& coding) {
  return coding.precision == Precision::double_precision;
}

/// Throws std::bad_alloc if the allocation has failed.
inline void require_memory(integer allocation_status) {
  if (allocation_status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

/// Whether a variable is 0 at all points.
/// @param values    (variable, point)
/// @param variable  counted from 1
[[nodiscard]] inline bool is_zero(mod_p3dgrid::array_view<const float, 2> values,
                                  std::int64_t variable) {
  for (std::int64_t p = 0; p < values.extent(2); ++p) {
    if (values.data()[p * values.extent(1) + variable - 1] != 0) return false;
  }
  return true;
}

/// The extents in arrays that may be unallocated.
template <class Array>
[[nodiscard]] Extents extents_from(const Array& idim, const Array& jdim, const Array& kdim) {
  const auto values = [](const Array& array) {
    return std::vector<std::int32_t>(array.span().begin(), array.span().end());
  };
  return {values(idim), values(jdim), values(kdim)};
}

}  // namespace p3dgrid::tool
