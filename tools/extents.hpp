#pragma once

#include <p3dgrid/form.hpp>
#include <vector>

namespace p3dgrid::tool {

/// Takes the values of three arrays of the library's, which may be unallocated.
template <class Array>
[[nodiscard]] Extents extents_from(const Array& idim, const Array& jdim, const Array& kdim) {
  const auto values = [](const Array& array) {
    const auto span = array.span();
    return std::vector<std::int32_t>(span.begin(), span.end());
  };
  return {values(idim), values(jdim), values(kdim)};
}

}  // namespace p3dgrid::tool
