#include <algorithm>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "restart/restart_header.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

struct RestartWrite : RestartFile {
  integer nparamrows;
  array_view<const float, 2> varvalues;
  array_view<const float, 2> auxvalues;
};

struct WholeWriter {
  const RestartFile& file;
  WholeArrays<const float> arrays;

  void begin_block(integer block) const {
    message("Writing flow variables for grid ", block);
    if (file.layout.counted_variables) mod_gridvars::numrstrtvar(1) = variables_of_block(block);
  }
  void move(const BodyRecord& record) const {
    file.unit.write(list_of<const void>(arrays, record));
  }
  void extend(const Extension&) const {}
};

/// Refuses invalid arguments before the file is touched.
void check_arguments(const RestartWrite& write) {
  const integer highest = checked_highest_to_write(write);
  std::int64_t rows = write.varvalues.extent(1);
  // The staging array may be smaller.
  if (holds_doubles(write.coding)) rows = std::min(variables_per_point(), rows);
  if (write.points.total > 0) check_variables(write.filename, highest, rows);
  check_parameters_to_write(write, write.nparamrows);
  check_points(restart_kind, write.filename, "varvalues", write.varvalues.extent(2), write.points);
  check_triplets(write, "auxvalues", write.auxvalues);
}

void write_body(const RestartWrite& write) {
  create_parameters_to_write(write, write.nparamrows);
  allocatable<double, 2> flow;
  allocatable<double, 2> triplets;
  if (holds_doubles(write.coding) &&
      (!allocate_checked(flow, variables_per_point(), write.points.total) ||
       (write.layout.triplets && !allocate_checked(triplets, triplet, write.points.total)))) {
    refuse_restart(write.filename, "out of memory for a copy in double precision");
  }
  const WholeWriter writer{write,
                           {write.coding,
                            write.points,
                            write.varvalues,
                            write.auxvalues,
                            write.nparamrows,
                            {flow, triplets}}};
  write_records(write.unit,
                {block_records_with_leading(write.layout, write.coding), write.nblocks,
                 write.layout.extensions},
                writer);
}

/// Layout 3 has a count per block, and layout 101 five variables; other layouts keep the setting.
void set_variables_of_first_section(const LayoutTraits& layout) {
  if (layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (layout.extensions) mod_gridvars::numrstrtvar(1) = p3dgrid::solution_variables;
}

}  // namespace

void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_view<const float, 2> varvalues,
                     array_view<const float, 2> auxvalues, array_view<const integer, 1> idim,
                     array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                     integer rsttype, logical multiblock) try {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  announce_restart(host::announce_write, filename, iformat, dblprec, layout, multiblock);
  check_layout(filename, layout, rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  RestartWrite write{{filename, unit, layout, unit.coding(filename, dblprec), nblocks},
                     nparamrows,
                     varvalues,
                     auxvalues};
  const ExtentViews extents{idim, jdim, kdim};
  const bool writable = unit.known() && layout.writable;
  set_variables_of_first_section(layout);
  // `write_restart_header` allocates a missing `nfvar` with zeros.
  if (layout.counted_variables && !nfvar.allocated()) mod_gridvars::numrstrtvar(1) = 0;
  if (writable) {
    write.points = checked_numbering(restart_file(filename), nblocks, extents);
    check_arguments(write);
  }
  write_restart_header(filename, iformat, dblprec, nblocks, extents, rsttype, multiblock);
  set_variables_of_first_section(layout);
  if (writable) write_body(write);
  p3dcloseunit(unit_number::restart_read);
} catch (...) {
  end_operation("write restart file", filename);
}

}  // namespace mod_p3dgrid
