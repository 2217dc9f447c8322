#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <p3dgrid/array.hpp>
#include <p3dgrid/form.hpp>
#include <string>
#include <vector>

/// Files of VTK's XML formats.
namespace p3dgrid::tool {

/// An array of a VTK file. Its values are produced when it is written.
struct VtkArray {
  std::string name;
  const char* type;  ///< "Float32", "Float64" or "UInt8"
  std::int32_t components = 1;
  std::int64_t bytes = 0;
  /// Calls its argument for pieces of the values, in order.
  std::function<void(const std::function<void(const void*, std::size_t)>&)> write;
};

/// An array with values of a precision.
[[nodiscard]] VtkArray vtk_array(std::string name, Precision precision, std::int32_t components,
                                 std::int64_t points);

/// Writes a structured grid (.vts): a header in XML, then the bytes of the arrays. Throws an
/// `Error`.
/// @param point_data  a value for each point
/// @param points      the coordinates
void write_vts(const std::string& path, const BlockExtents& extents,
               const std::vector<VtkArray>& point_data, const VtkArray& points);

/// Writes a list of blocks (.vtm).
/// @param files  of the blocks, relative to the folder of the list
void write_vtm(const std::string& path, const std::vector<std::string>& files);

}  // namespace p3dgrid::tool
