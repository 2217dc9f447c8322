#pragma once

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"

namespace mod_p3dgrid {

/// The flow parameters of a file whose layout has them, one row per block in `sqvar` or `dqvar`,
/// whichever the coding uses. Does nothing for other layouts.
struct FlowParameters {
  const FileName& filename;
  const LayoutTraits& layout;
  Coding coding;
  integer nblocks;

  /// Refuses a parameter array without the rows that are to be written (block n takes row
  /// min(n, nparamrows)), and two that are missing.
  void check_to_write(integer nparamrows) const;

  /// Creates the array to write from out of the other one, if it is missing.
  void create_to_write(integer nparamrows) const;

  /// Makes the array to read into hold a row per block: one that is missing is allocated with the
  /// other one's values, or zeros; one that is too small is a fatal error.
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
