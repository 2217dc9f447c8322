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

}  // namespace p3dgrid::tool
