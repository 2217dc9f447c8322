#include <algorithm>
#include <string>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"

namespace mod_p3dgrid {
namespace {

template <class Real>
struct RestartWrite : RestartFile {
  integer nparamrows;
  array_view<const Real, 2> varvalues;
  array_view<const Real, 2> auxvalues;
};

template <class Real>
struct WholeWriter {
  const RestartFile& file;
  WholeArrays<const Real> arrays;

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
template <class Real>
void check_arguments(const RestartWrite<Real>& write) {
  const integer highest = checked_highest_to_write(write);
  std::int64_t rows = write.varvalues.extent(1);
  // The staging array may be smaller.
  if (p3dgrid::needs_staging<Real>(write.coding)) rows = std::min(variables_per_point(), rows);
  if (write.points.total > 0) check_variables(write.filename, highest, rows);
  check_parameters_to_write(write, write.nparamrows);
  check_points(restart_kind, write.filename, "varvalues", write.varvalues.extent(2), write.points);
  check_triplets(write, "auxvalues", write.auxvalues.extents());
}

template <class Real>
void write_body(const RestartWrite<Real>& write) {
  using Staged = p3dgrid::OtherReal<Real>;
  create_parameters_to_write(write, write.nparamrows);
  allocatable<Staged, 2> flow;
  allocatable<Staged, 2> triplets;
  if (p3dgrid::needs_staging<Real>(write.coding) &&
      (!allocate_checked(flow, variables_per_point(), write.points.total) ||
       (write.layout.triplets && !allocate_checked(triplets, triplet, write.points.total)))) {
    refuse_restart(write.filename, std::string("out of memory for a copy in ") +
                                       p3dgrid::precision_name<Staged>() + " precision");
  }
  const WholeWriter<Real> writer{
      write, {write, write.varvalues, write.auxvalues, write.nparamrows, flow, triplets}};
  write_records(write.unit,
                {block_records_with_leading(write), write.nblocks, write.layout.extensions},
                writer);
}

/// Layout 3 has a count per block, and layout 101 five variables; other layouts keep the setting.
void set_variables_of_first_section(const LayoutTraits& layout) {
  if (layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (layout.extensions) mod_gridvars::numrstrtvar(1) = p3dgrid::solution_variables;
}

template <class Real>
void write_restart(const RestartArguments& arguments, integer nparamrows, integer nblocks,
                   array_view<const Real, 2> varvalues, array_view<const Real, 2> auxvalues,
                   const ExtentViews& extents) try {
  announce_restart(host::announce_write, arguments);
  RestartWrite<Real> write{
      {arguments, unit_number::restart_write, nblocks}, nparamrows, varvalues, auxvalues};
  const LayoutTraits& layout = write.layout;
  const bool writable = write.unit.known() && layout.writable;
  set_variables_of_first_section(layout);
  // `write_restart_header` allocates a missing `nfvar` with zeros.
  if (layout.counted_variables && !nfvar.allocated()) mod_gridvars::numrstrtvar(1) = 0;
  if (writable) {
    write.points = checked_numbering(restart_file(write.filename), nblocks, extents);
    check_arguments(write);
  }
  write_restart_header(write, extents);
  set_variables_of_first_section(layout);
  if (writable) write_body(write);
  p3dcloseunit(unit_number::restart_read);
} catch (...) {
  end_operation("write restart file", arguments.filename);
}

}  // namespace

void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_view<const float, 2> varvalues,
                     array_view<const float, 2> auxvalues, integer_view idim, integer_view jdim,
                     integer_view kdim, integer rsttype, logical multiblock) {
  write_restart({filename, iformat, dblprec, rsttype, multiblock}, nparamrows, nblocks, varvalues,
                auxvalues, {idim, jdim, kdim});
}

void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_argument<const double, 2> varvalues,
                     array_view<const double, 2> auxvalues, integer_view idim, integer_view jdim,
                     integer_view kdim, integer rsttype, logical multiblock) {
  write_restart<double>({filename, iformat, dblprec, rsttype, multiblock}, nparamrows, nblocks,
                        varvalues, auxvalues, {idim, jdim, kdim});
}

}  // namespace mod_p3dgrid
