#include <algorithm>
#include <string>

#include "MOD_P3DReader.hpp"
#include "recordio/unit.hpp"
#include "restart/body.hpp"
#include "restart/restart_arguments.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::Unit;

constexpr std::int64_t triplet = 3;
constexpr integer parameters_per_block = 4;

/// Row of the parameter array that a block is written with.
integer parameter_row_of(integer block, integer nparamrows) {
  return std::min(block, nparamrows);
}

/// Writes a whole body from arrays of kind `Real`.
template <class Real>
class BodyWriter {
 public:
  BodyWriter(const Unit& unit, const Layout& layout, BodyPath path, const PointNumbering& points,
             integer nparamrows, array_view<const Real, 2> flow, array_view<const Real, 2> triplets)
      : unit_(unit),
        layout_(layout),
        path_(path),
        points_(points),
        nparamrows_(nparamrows),
        flow_(flow),
        triplets_(triplets) {}

  bool begin_block(integer block) const {
    message("Writing flow variables for grid ", block);
    if (layout_.counted_variables) mod_gridvars::numrstrtvar(1) = nfvar(block);
    return true;
  }

  bool move(integer block, const BodyRecord& record) const {
    switch (record.kind) {
      case BodyRecordKind::parameters:
        write_parameters(block);
        break;
      case BodyRecordKind::leading:
        unit_.write(
            {variable_lines(triplets_.data(), triplets_.extent(1), points_, block, 1, triplet),
             flow_lines(block, record)});
        break;
      case BodyRecordKind::section:
        unit_.write({flow_lines(block, record)});
        break;
      case BodyRecordKind::older_level:
        break;  // never written
    }
    return true;
  }

  bool move_flag(integer position) const {
    unit_.write({recordio::scalar(std::as_const(iflag)(position))});
    return true;
  }
  bool extend(const Extension&) const { return true; }
  bool chain_without_end() const { return true; }  // checked before the file is opened

 private:
  auto flow_lines(integer block, const BodyRecord& record) const {
    return variable_lines(flow_.data(), flow_.extent(1), points_, block, record.first, record.last);
  }

  void write_parameters(integer block) const {
    const integer row = parameter_row_of(block, nparamrows_);
    if (parameters_are_double(path_)) {
      unit_.write({parameter_row(std::as_const(dqvar), row)});
    } else {
      unit_.write({parameter_row(std::as_const(sqvar), row)});
    }
  }

  const Unit& unit_;
  const Layout& layout_;
  BodyPath path_;
  const PointNumbering& points_;
  integer nparamrows_;
  array_view<const Real, 2> flow_;
  array_view<const Real, 2> triplets_;
};

/// The arguments that a body is written with.
struct RestartWrite {
  const FileName& filename;
  const Unit& unit;
  const Layout& layout;
  BodyPath path;
  integer nparamrows;
  integer nblocks;
  array_view<const float, 2> varvalues;
  array_view<const float, 2> auxvalues;
  PointNumbering points;
};

/// Rows of the flow array that are at hand when the records are written.
std::int64_t flow_rows(const RestartWrite& write) {
  const std::int64_t rows = write.varvalues.extent(1);
  return write.path == BodyPath::double_records
             ? std::clamp<std::int64_t>(variables_per_point(), 0, rows)
             : rows;
}

/// Refuses a parameter array without the rows that are written, and two that are missing.
void check_parameters(const RestartWrite& write) {
  const integer rows = std::min(write.nblocks, write.nparamrows);
  if (write.nblocks < 1) return;
  if (write.nparamrows < 1) refuse_restart(write.filename, "nparamrows is below 1");
  const auto check = [&](const char* name, const auto& parameters) {
    if (parameters.extent(1) >= rows && parameters.extent(2) >= parameters_per_block) return;
    refuse_restart(write.filename, std::string(name) + " holds " +
                                       std::to_string(parameters.extent(1)) + " rows of " +
                                       std::to_string(parameters.extent(2)) + ", " +
                                       std::to_string(rows) + " of 4 are to be written");
  };
  const bool in_double = parameters_are_double(write.path);
  if (in_double ? dqvar.allocated() : sqvar.allocated()) {
    return in_double ? check("dqvar", dqvar) : check("sqvar", sqvar);
  }
  if (!sqvar.allocated() && !dqvar.allocated()) {
    refuse_restart(write.filename, "neither sqvar nor dqvar is allocated");
  }
  return in_double ? check("sqvar", sqvar) : check("dqvar", dqvar);
}

/// The records of a block. Layouts 100 and 101 begin with the leading record in every encoding.
std::vector<BodyRecord> records_of(const RestartWrite& write) {
  return block_records(write.layout, write.layout.triplets, 0);
}

/// Refuses variables that the flow array has no rows for.
void check_rows(const RestartWrite& write) {
  integer highest = checked_highest_variable(records_of(write));
  for (integer m = 1; write.layout.extensions && m <= iflag.size(); ++m) {
    if (iflag(m) == end_of_extensions) break;
    if (const Extension* extension = extension_of(iflag(m), m)) {
      highest = std::max(highest, extension->last);
    }
  }
  if (write.points.total > 0) check_variables(write.filename, highest, flow_rows(write));
}

/// Refuses, before the file is touched, what cannot be written.
void check_arguments(const RestartWrite& write) {
  check_rows(write);
  if (write.layout.parameters) check_parameters(write);
  if (write.layout.counted_variables && nfvar.allocated() && nfvar.size() < write.nblocks) {
    refuse_restart(write.filename, "nfvar holds " + std::to_string(nfvar.size()) + " blocks, " +
                                       std::to_string(write.nblocks) + " are to be written");
  }
  if (write.layout.extensions && !extension_chain_ends()) {
    refuse_restart(write.filename, "iflag holds no flag 999 to end its chain");
  }
  const auto check_points = [&](const char* name, const auto& array) {
    if (array.extent(2) >= write.points.total) return;
    refuse_restart(write.filename, std::string(name) + " holds " + std::to_string(array.extent(2)) +
                                       " points, " + std::to_string(write.points.total) +
                                       " are to be written");
  };
  check_points("varvalues", write.varvalues);
  if (!write.layout.triplets) return;
  check_points("auxvalues", write.auxvalues);
  if (write.auxvalues.extent(1) < triplet && write.points.total > 0) {
    refuse_restart(write.filename, "auxvalues holds no three values per point");
  }
}

/// Creates the parameter array that the path writes from, if it is missing, from the other one.
template <class To, class From>
void create_parameters(allocatable<To, 2>& to, const allocatable<From, 2>& from,
                       const RestartWrite& write) {
  if (to.allocated()) return;
  if (!allocate_checked(to, std::max(write.nblocks, 0), parameters_per_block)) {
    refuse_restart(write.filename, "out of memory for the flow parameters");
  }
  for (integer b = 1; b <= write.nblocks; ++b) {
    for (integer m = 1; m <= parameters_per_block; ++m) {
      to(b, m) = static_cast<To>(from(parameter_row_of(b, write.nparamrows), m));
    }
  }
}

/// A copy of the first `rows` rows in double precision.
allocatable<double, 2> widened(const RestartWrite& write, array_view<const float, 2> array,
                               std::int64_t rows) {
  allocatable<double, 2> copy;
  if (!allocate_checked(copy, rows, write.points.total)) {
    refuse_restart(write.filename, "out of memory for a copy in double precision");
  }
  const std::int64_t common = std::min(copy.extent(1), array.extent(1));
  for (std::int64_t p = 0; p < write.points.total; ++p) {
    std::copy_n(array.data() + p * array.extent(1), common, copy.data() + p * copy.extent(1));
  }
  return copy;
}

template <class Real>
void write_records(const RestartWrite& write, array_view<const Real, 2> flow,
                   array_view<const Real, 2> triplets) {
  BodyWriter<Real> writer(write.unit, write.layout, write.path, write.points, write.nparamrows,
                          flow, triplets);
  static_cast<void>(walk_blocks(records_of(write), write.nblocks, writer) &&
                    (!write.layout.extensions || walk_extensions(write.nblocks, writer)));
}

void write_body(const RestartWrite& write) {
  if (write.layout.parameters) {
    if (parameters_are_double(write.path)) {
      create_parameters(dqvar, sqvar, write);
    } else {
      create_parameters(sqvar, dqvar, write);
    }
  }
  if (write.path != BodyPath::double_records) {
    return write_records(write, write.varvalues, write.auxvalues);
  }
  const auto flow = widened(write, write.varvalues, variables_per_point());
  const auto triplets =
      write.layout.triplets ? widened(write, write.auxvalues, triplet) : allocatable<double, 2>{};
  write_records<double>(write, flow, triplets);
}

/// Layout 3 counts its variables per block, layout 101 has five; the others keep what is set.
void set_variables_of_first_section(const Layout& layout) {
  constexpr integer leading_variables = 5;
  if (layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (layout.extensions) mod_gridvars::numrstrtvar(1) = leading_variables;
}

}  // namespace

void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_view<const float, 2> varvalues,
                     array_view<const float, 2> auxvalues, array_view<const integer, 1> idim,
                     array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                     integer rsttype, logical multiblock) {
  const Layout& layout = layout_of(rsttype);
  announce_restart(announce_restart_write, filename, iformat, dblprec, layout, multiblock);
  check_layout(filename, layout, rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  RestartWrite write{filename,  unit,      layout, body_path(unit, dblprec), nparamrows, nblocks,
                     varvalues, auxvalues, {}};
  const bool writable = unit.known() && layout.header != HeaderKind::talven;
  set_variables_of_first_section(layout);
  if (writable) {
    write.points = checked_numbering(filename, nblocks, {idim, jdim, kdim});
    check_arguments(write);
  }
  writerestartheader(filename, iformat, dblprec, nblocks, idim, jdim, kdim, rsttype, multiblock);
  set_variables_of_first_section(layout);  // the header may have allocated nfvar
  if (writable) write_body(write);
  p3dcloseunit(unit_number::restart_read);
}

}  // namespace mod_p3dgrid
