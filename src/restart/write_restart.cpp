#include <algorithm>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/flow_parameters.hpp"
#include "restart/restart_arguments.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

class WholeWriter : public WritingVisitor {
 public:
  WholeWriter(const Unit& unit, const LayoutTraits& layout, WholeArrays<const float> arrays)
      : WritingVisitor(unit), layout_(layout), arrays_(arrays) {}

  void begin_block(integer block) const {
    message("Writing flow variables for grid ", block);
    if (layout_.counted_variables) mod_gridvars::numrstrtvar(1) = variables_of_block(block);
  }
  void move(const BodyRecord& record) const { unit_.write(list_of<const void>(arrays_, record)); }
  void extend(const Extension&) const {}

 private:
  const LayoutTraits& layout_;
  WholeArrays<const float> arrays_;
};

struct RestartWrite {
  const FileName& filename;
  const Unit& unit;
  const LayoutTraits& layout;
  Coding coding;
  integer nparamrows;
  integer nblocks;
  array_view<const float, 2> varvalues;
  array_view<const float, 2> auxvalues;
  PointNumbering points;

  [[nodiscard]] FlowParameters parameters() const { return {filename, layout, coding, nblocks}; }
};

/// Rows of the flow array, or of its staging array if that is smaller.
std::int64_t flow_rows(const RestartWrite& write) {
  const std::int64_t rows = write.varvalues.extent(1);
  return holds_doubles(write.coding) ? std::min(variables_per_point(), rows) : rows;
}

/// Refuses invalid arguments before the file is touched.
void check_arguments(const RestartWrite& write) {
  check_state_to_write(write.filename, write.layout, write.nblocks);
  const integer highest =
      std::max(checked_highest_variable(block_records_with_leading(write.layout, write.coding)),
               write.layout.extensions ? highest_extension_variable() : 0);
  if (write.points.total > 0) check_variables(write.filename, highest, flow_rows(write));
  write.parameters().check_to_write(write.nparamrows);
  check_points(write.filename, "varvalues", write.varvalues.extent(2), write.points);
  if (write.layout.triplets) {
    check_triplets(write.filename, "auxvalues", write.auxvalues, write.points);
  }
}

/// Allocates the staging arrays of a double-precision file.
void allocate_staging(const RestartWrite& write, allocatable<double, 2>& flow,
                      allocatable<double, 2>& triplets) {
  if (!holds_doubles(write.coding)) return;
  if (!allocate_checked(flow, variables_per_point(), write.points.total) ||
      (write.layout.triplets && !allocate_checked(triplets, triplet, write.points.total))) {
    refuse_restart(write.filename, "out of memory for a copy in double precision");
  }
}

void write_body(const RestartWrite& write) {
  write.parameters().create_to_write(write.nparamrows);
  allocatable<double, 2> flow;
  allocatable<double, 2> triplets;
  allocate_staging(write, flow, triplets);
  WholeWriter writer(write.unit, write.layout,
                     {write.coding,
                      write.points,
                      write.varvalues,
                      write.auxvalues,
                      write.nparamrows,
                      {flow, triplets}});
  walk_body({block_records_with_leading(write.layout, write.coding), write.nblocks,
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
  RestartWrite write{filename,   unit,    layout,    unit.coding(filename, dblprec),
                     nparamrows, nblocks, varvalues, auxvalues,
                     {}};
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
