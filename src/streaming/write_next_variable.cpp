#include <string>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "restart/staging.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Appends "t" to the name until no file has it. A name that cannot grow is a fatal error.
FileName free_file_name(FileName name) {
  while (file_exists(name)) {
    const FileName longer = FileName::cut(std::string(name.view()) + "t");
    if (longer == name) {
      fail_run("no free name for a temporary file: " + path_of(name) +
               " exists and cannot be longer");
    }
    name = longer;
  }
  return name;
}

template <class Real>
void write_next_variable(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                         integer_view blockpoints, array_view<const Real, 2> varvalues,
                         const ExtentViews& extents) try {
  if (ivar < 1 || ivar > tmpfile.size()) {
    fail_run("variable " + std::to_string(ivar) + " cannot be streamed, only 1 to " +
             std::to_string(tmpfile.size()) + " can");
  }
  FileName name = FileName::cut(std::string(prefix.view()) + column(ivar, 6, '0') + ".tmp");
  const PointNumbering points = checked_numbering(restart_file(name), nblocks, extents);
  const std::int64_t allpoints = sum(blockpoints);
  check_points(restart_kind, name, "varvalues", varvalues.extent(1) > 0 ? varvalues.extent(2) : 0,
               points);
  using Staged = p3dgrid::OtherReal<Real>;
  const bool staged = static_cast<bool>(dblprec) != std::is_same_v<Real, double>;
  if (staged) check_points(restart_kind, name, "blockpoints", allpoints, points);
  tmpfile(ivar) = {};
  name = free_file_name(name);
  const Unit unit(unit_number::restart_write, temporary_file_format);
  tmpfile(ivar) = name;
  try {
    write_line("");
    message("Writing Interpolated Variable ", ivar, " to Temporary File ", left_adjusted(name));
    unit.open(name, OpenStatus::fresh);
  } catch (...) {
    // A file of that name belongs to another process, and `combinep3dvarfiles` would delete it.
    tmpfile(ivar) = {};
    throw;
  }
  allocatable<Staged, 2> staging;
  if (staged && (!allocate_staging(staging, 1, allpoints) || staging.extent(1) != 1)) {
    refuse_restart(name, std::string("no array for the variable in ") +
                             p3dgrid::precision_name<Staged>() + " precision");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    message("Writing flow variable ", ivar, " for grid ", b);
    unit.write({recordio::through_staging(array_view<Staged, 2>(staging),
                                          variable_lines(varvalues, points, b, {1, 1}))});
  }
  unit.close();
} catch (...) {
  end_operation("write variable file", prefix);
}

}  // namespace

void writenextp3dvar(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                     integer_view blockpoints, array_view<const float, 2> varvalues,
                     integer_view idim, integer_view jdim, integer_view kdim) {
  write_next_variable(ivar, prefix, dblprec, nblocks, blockpoints, varvalues, {idim, jdim, kdim});
}

void writenextp3dvar(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                     integer_view blockpoints, array_argument<const double, 2> varvalues,
                     integer_view idim, integer_view jdim, integer_view kdim) {
  write_next_variable<double>(ivar, prefix, dblprec, nblocks, blockpoints, varvalues,
                              {idim, jdim, kdim});
}

}  // namespace mod_p3dgrid
