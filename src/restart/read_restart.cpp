#include <algorithm>
#include <numeric>
#include <string>

#include "MOD_P3DReader.hpp"
#include "recordio/unit.hpp"
#include "restart/body.hpp"
#include "restart/restart_arguments.hpp"
#include "restart/restart_header.hpp"
#include "restart/staging.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::Unit;

allocatable<double, 2>& enlarged(const allocatable<double, 2>&) {
  return restart_staging().DWTMP;
}
allocatable<float, 2>& enlarged(const allocatable<float, 2>&) {
  return restart_staging().WTMP;
}

constexpr std::int64_t triplet = 3;

/// Copies the rows that both arrays have, point by point, for `points` points.
template <class To, class From>
void copy_rows(const allocatable<From, 2>& from, allocatable<To, 2>& to, std::int64_t rows,
               std::int64_t points) {
  const auto convert = [](From value) { return static_cast<To>(value); };
  const std::int64_t common = std::min({rows, from.extent(1), to.extent(1)});
  if (common == from.extent(1) && common == to.extent(1)) {
    std::transform(from.data(), from.data() + common * points, to.data(), convert);
    return;
  }
  for (std::int64_t p = 0; p < points; ++p) {
    const From* const point = from.data() + p * from.extent(1);
    std::transform(point, point + common, to.data() + p * to.extent(1), convert);
  }
}

/// Reads a whole body into arrays of kind `Real`.
template <class Real>
class BodyReader {
 public:
  BodyReader(const Unit& unit, const FileName& filename, const Layout& layout, BodyPath path,
             const PointNumbering& points, allocatable<Real, 2>& flow,
             allocatable<Real, 2>& triplets)
      : unit_(unit),
        filename_(filename),
        layout_(layout),
        path_(path),
        points_(points),
        flow_(flow),
        triplets_(triplets) {}

  bool read(integer nblocks) {
    const bool leading = whole_read_takes_leading_record(layout_, path_);
    const auto records = block_records(layout_, leading, older_levels());
    const integer highest = checked_highest_variable(records);
    if (points_.total > 0) check_variables(filename_, highest, flow_.extent(1));
    return walk_blocks(records, nblocks, *this) &&
           (!layout_.extensions || walk_extensions(nblocks, *this));
  }

  bool begin_block(integer block) const {
    if (debugprint) message("Reading flow variables for grid ", block);
    if (layout_.counted_variables) mod_gridvars::numrstrtvar(1) = nfvar(block);
    return true;
  }

  bool move(integer block, const BodyRecord& record) {
    switch (record.kind) {
      case BodyRecordKind::parameters:
        return read_parameters(block);
      case BodyRecordKind::leading:
        return unit_.read(
            {variable_lines(triplets_.data(), triplets_.extent(1), points_, block, 1, triplet),
             flow_lines(block, record)});
      case BodyRecordKind::section:
        return unit_.read({flow_lines(block, record)});
      case BodyRecordKind::older_level:
        return skip_older_level(block, record);
    }
    return true;
  }

  bool move_flag(integer position) const { return unit_.read({recordio::scalar(iflag(position))}); }

  bool extend(const Extension& extension) {
    mod_gridvars::numrstrtvar(2) = extension.numrstrtvar;
    if (flow_.extent(1) >= extension.last) return true;
    allocatable<Real, 2>& larger = enlarged(flow_);
    if (!allocate_checked(larger, extension.last, points_.total)) {
      unit_.fail("no memory", std::to_string(extension.last) + " flow variables");
      return false;
    }
    copy_rows(flow_, larger, extension.kept, points_.total);
    flow_ = std::move(larger);
    return true;
  }

  bool chain_without_end() const {
    unit_.fail("three flags, none of them 999",
               "a chain of at most three flags that ends with 999");
    return false;
  }

 private:
  auto flow_lines(integer block, const BodyRecord& record) {
    return variable_lines(flow_.data(), flow_.extent(1), points_, block, record.first, record.last);
  }

  bool read_parameters(integer block) const {
    if (parameters_are_double(path_)) return read_parameters_into(dqvar, block);
    return read_parameters_into(sqvar, block);
  }

  template <class Parameters>
  bool read_parameters_into(Parameters& parameters, integer block) const {
    if (!unit_.read({parameter_row(parameters, block)})) return false;
    // The module's copies follow files of records only; text leaves them as they were.
    if (path_ == BodyPath::text) return true;
    p3dxm1 = static_cast<double>(parameters(block, 1));
    p3dalfa = static_cast<double>(parameters(block, 2));
    p3dre = static_cast<double>(parameters(block, 3));
    p3dtau = static_cast<double>(parameters(block, 4));
    return true;
  }

  /// Text has no such records: it is asked for one without being text, and that fails.
  bool skip_older_level(integer block, const BodyRecord& record) const {
    if (path_ != BodyPath::text) {
      return unit_.read(
          {recordio::dropped(real_kind(path_), record.variables() * points_.npts(block))});
    }
    unit_.fail("a text file", "an unformatted record of an older time level");
    return false;
  }

  const Unit& unit_;
  const FileName& filename_;
  const Layout& layout_;
  BodyPath path_;
  const PointNumbering& points_;
  allocatable<Real, 2>& flow_;
  allocatable<Real, 2>& triplets_;
};

/// The arguments and the header's findings that a body is read with.
struct RestartRead {
  const FileName& filename;
  const Unit& unit;
  const Layout& layout;
  BodyPath path;
  integer ngrid;
  PointNumbering points;
  allocatable<float, 2>& varvalues;
  allocatable<float, 2>& auxvalues;

  [[nodiscard]] bool no_memory(const char* what) const {
    unit.fail("no array to read into", what);
    return false;
  }

  /// A header may announce more variables than memory has room for; the file's size tells.
  [[nodiscard]] bool may_hold_flow() const {
    const std::int64_t variables = std::max<std::int64_t>(0, variables_per_point());
    std::int64_t values = 0;
    if (__builtin_mul_overflow(variables, points.total, &values)) {
      return no_memory("as many flow variables as the header tells");
    }
    return unit.can_hold(
        values, real_kind(path), true,
        std::to_string(variables) + " variables at " + std::to_string(points.total) + " points");
  }

  /// Prepares what layouts 100 and 101 need besides the flow array.
  [[nodiscard]] bool prepare_triplets() const {
    if (!layout.triplets) return true;
    constexpr integer leading_variables = 5;
    mod_gridvars::numrstrtvar(1) = leading_variables;
    iflag.fill(0);
    integer status = auxvalues.allocate(triplet, points.total);
    const bool staged = path == BodyPath::double_records;
    auto& DX = restart_staging().DX;
    if (staged && status == allocation_done) status = DX.allocate(triplet, points.total);
    mod_gridvars::checkallocationerror(status);
    const bool usable =
        covers(auxvalues, triplet, points.total) && (!staged || covers(DX, triplet, points.total));
    return usable || no_memory("an unallocated array for the triplets");
  }

  template <class Real>
  [[nodiscard]] bool read_into(allocatable<Real, 2>& flow, allocatable<Real, 2>& triplets) {
    if (!may_hold_flow()) return false;
    if (!allocate_checked(flow, variables_per_point(), points.total)) {
      return no_memory("an unallocated array for the flow variables");
    }
    if (!prepare_triplets()) return false;
    if (path == BodyPath::text) {  // a null value leaves 0, not a value of chance
      std::ranges::fill(flow.span(), Real{0});
      std::ranges::fill(triplets.span(), Real{0});
    }
    return BodyReader<Real>(unit, filename, layout, path, points, flow, triplets).read(ngrid);
  }

  /// Reads through the staging arrays and rounds all of it at the end.
  [[nodiscard]] bool read_staged() {
    auto& DW = restart_staging().DW;
    auto& DX = restart_staging().DX;
    if (!read_into(DW, DX)) return false;
    if (layout.extensions) {
      // The triplets' array exists since before the blocks were read, and the host is told so. For
      // layout 100 this step is missing: its triplets stay unset and `DX` stays allocated.
      mod_gridvars::checkallocationerror(auxvalues.allocate(triplet, points.total));
      if (!covers(auxvalues, triplet, points.total)) return no_memory("an array for the triplets");
      copy_rows(DX, auxvalues, triplet, points.total);
      DX.deallocate();
    }
    const std::int64_t variables = variables_per_point();
    if (!allocate_checked(varvalues, variables, points.total)) {
      return no_memory("an unallocated array for the flow variables");
    }
    copy_rows(DW, varvalues, variables, points.total);
    DW.deallocate();
    return true;
  }
};

/// The parameters of layout 2, one row of zeros per block.
template <class Parameters>
bool allocate_parameters(const Unit& unit, Parameters& parameters, integer ngrid) {
  constexpr integer parameters_per_block = 4;
  const bool usable = allocate_checked(parameters, std::max(ngrid, 0), parameters_per_block);
  std::ranges::fill(parameters.span(), 0);
  if (!usable) unit.fail("no array to read into", "an unallocated array for the flow parameters");
  return usable;
}

bool prepare_parameters(const Unit& unit, integer iformat, logical dblprec, integer ngrid) {
  constexpr integer variables = 5;
  mod_gridvars::numrstrtvar(1) = variables;
  const bool in_single = !dblprec && recordio::form_of(iformat) != recordio::Form::formatted;
  return in_single ? allocate_parameters(unit, sqvar, ngrid)
                   : allocate_parameters(unit, dqvar, ngrid);
}

/// With `readallvars` false the flow array is sized for one variable and left unset.
void size_for_one_variable(array_view<const integer, 1> blockpoints,
                           allocatable<float, 2>& varvalues) {
  const std::int64_t points = std::accumulate(
      blockpoints.data(), blockpoints.data() + blockpoints.extent(1), std::int64_t{0});
  mod_gridvars::checkallocationerror(varvalues.allocate(1, points));
}

bool read_whole_body(RestartRead& read, integer nblocks, const CallerExtents& extents) {
  if (read.unit.known()) {
    if (read.ngrid > nblocks) {
      read.unit.fail("a header of " + std::to_string(read.ngrid) + " blocks",
                     "at most " + std::to_string(nblocks));
      return false;
    }
    read.points = checked_numbering(read.filename, read.ngrid, extents);
  }
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (!read.unit.known()) return true;
  return read.path == BodyPath::double_records ? read.read_staged()
                                               : read.read_into(read.varvalues, read.auxvalues);
}

/// False after a failed read that the host has not been told of.
bool read_restart(RestartRead& read, integer iformat, logical dblprec, integer nblocks,
                  array_view<const integer, 1> blockpoints, const CallerExtents& extents) {
  if (read.layout.parameters && !prepare_parameters(read.unit, iformat, dblprec, read.ngrid)) {
    return false;
  }
  if (!mod_gridvars::readallvars) {
    size_for_one_variable(blockpoints, read.varvalues);
    read.unit.close();
    return true;
  }
  message("Number of grids is ", read.ngrid);
  if (!read_whole_body(read, nblocks, extents)) return false;
  read.unit.close();
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  return true;
}

}  // namespace

RestartStaging& restart_staging() {
  static RestartStaging staging;
  return staging;
}

void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    array_view<const integer, 1> blockpoints, allocatable<float, 2>& varvalues,
                    allocatable<float, 2>& auxvalues, array_view<const integer, 1> idim,
                    array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                    integer rsttype, logical multiblock) {
  const Layout& layout = layout_of(rsttype);
  announce_restart(announce_restart_read, filename, iformat, dblprec, layout, multiblock);
  check_layout(filename, layout, rsttype);
  const Unit unit(unit_number::restart_read, iformat);
  integer ngrid = 1;
  HeaderExtents dropped;
  if (!read_restart_header(filename, iformat, dblprec, ngrid, rsttype, multiblock, dropped)) {
    return;
  }
  RestartRead read{filename, unit, layout,    body_path(unit, dblprec),
                   ngrid,    {},   varvalues, auxvalues};
  if (!read_restart(read, iformat, dblprec, nblocks, blockpoints, {idim, jdim, kdim})) {
    mod_gridvars::dispfilereaderror();
  }
}

}  // namespace mod_p3dgrid
