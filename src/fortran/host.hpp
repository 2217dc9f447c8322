#pragma once

#include <cstddef>
#include <cstdint>

#include "mod_p3dgrid/arrays.hpp"

/// The interface between the library and the module for hosts in Fortran
/// (`fortran/mod_p3dgrid.f90`). The functions with C linkage that the module calls have no
/// declarations here: the module declares them.
namespace mod_p3dgrid::fortran {

/// An allocatable array of Fortran: the address of its descriptor, which differs between compilers.
using Descriptor = void*;

/// An array that the module passes, `given_array` there. An absent or empty one has no address.
struct GivenArray {
  void* address;
  std::int64_t extents[2];
  integer real_bytes;  ///< 4 or 8; 0 for integers

  [[nodiscard]] operator integer_view() const {
    return {static_cast<const integer*>(address), extents[0]};
  }
};

/// What most operations know of a file, `given_file` there: their arguments but for the name. Those
/// that are results of an operation, or that it does not have, are 0.
struct GivenFile {
  std::size_t name_length;
  integer iformat;
  logical dblprec;
  integer nblocks;
  GivenArray idim, jdim, kdim;
  integer rsttype;
  logical useiblank, multiblock;
};

/// Procedures of the module for arrays of one type.
struct ArrayProcedures {
  /// Allocates the array and returns its storage; null on failure.
  void* (*allocate)(Descriptor array, const std::int64_t* extents);
  void (*release)(Descriptor array);
  /// Returns storage and extents of the array; null if it is not allocated.
  void* (*locate)(Descriptor array, std::int64_t* extents);
};

/// Procedures of the module, in the order of its type `procedures`. Names and lines are not
/// NUL-terminated.
struct Procedures {
  ArrayProcedures integers;  ///< of rank 1
  ArrayProcedures singles;   ///< of rank 2
  ArrayProcedures doubles;   ///< of rank 2
  void (*print_line)(const char* line, std::size_t length);
  void (*end_run)(integer status, const char* message, std::size_t length);
  /// Calls `mod_p3dgrid_set_path` with `path`, a `std::string`.
  void (*find_path)(const char* name, std::size_t length, void* path);
  void (*choose_coding)(const char* name, std::size_t length, integer* byte_order,
                        integer* marker_bytes, integer* dimensions);
};

/// Valid once the module has connected, which it does before it calls an operation.
inline Procedures procedures;

}  // namespace mod_p3dgrid::fortran
