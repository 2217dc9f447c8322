#pragma once

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"

namespace mod_p3dgrid {

/// The flow parameters of a file, one row per block in `sqvar` or `dqvar`, depending on the coding.
/// Does nothing for layouts without them.
struct FlowParameters {
  const FileName& filename;
  const LayoutTraits& layout;
  Coding coding;
  integer nblocks;

  /// Missing arrays, and arrays without the rows to be written, are a fatal error. Block n is
  /// written from row min(n, nparamrows).
  void check_to_write(integer nparamrows) const;

  /// Creates a missing array from the other one.
  void create_to_write(integer nparamrows) const;

  /// Creates a missing array with the values of the other one, or zeros. An array with fewer rows
  /// than blocks is a fatal error.
  void create_to_read() const;

 private:
  template <class Act>
  void with_arrays(Act act) const;
  template <class Parameters>
  void check_rows(const char* name, const Parameters& parameters, integer rows) const;
  template <class To, class From>
  void create(allocatable<To, 2>& to, const allocatable<From, 2>& from, integer rows) const;
};

}  // namespace mod_p3dgrid
