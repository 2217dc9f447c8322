#include "support/library_restart.hpp"

#include <algorithm>

#include "MOD_P3DReader.hpp"
#include "restart/staging.hpp"
#include "support/host_gridvars.hpp"

namespace interop {
namespace {

using mod_p3dgrid::allocatable;
using mod_p3dgrid::integer;

// The unit that a failed read and the header reader leave open, and that of the writer.
constexpr integer restart_read_unit = 201;
constexpr integer restart_write_unit = 301;

/// The extents as the library's arguments.
struct ExtentArguments {
  std::vector<integer> idim, jdim, kdim, points;

  explicit ExtentArguments(const std::vector<Extents>& extents) {
    for (const Extents& block : extents) {
      idim.push_back(block[0]);
      jdim.push_back(block[1]);
      kdim.push_back(block[2]);
      points.push_back(static_cast<integer>(points_of(block)));
    }
  }
  [[nodiscard]] integer blocks() const { return static_cast<integer>(idim.size()); }
};

/// The module's variables as a run begins.
void begin_run() {
  using namespace mod_p3dgrid;
  eqid = fileversion = nstep = itimeint = isgsmodel = ibeta = talnvar = 0;
  dtau = talalfa = talbeta = talgam = talpr = talprt = talre = tals1 = talxm1 = 0;
  p3dxm1 = p3dalfa = p3dre = p3dtau = 0;
  iflag.fill(0);
  nfvar.deallocate();
  sqvar.deallocate();
  dqvar.deallocate();
  restart_staging<float> = {};
  restart_staging<double> = {};
}

/// The section table of the form. Layout 3 has its number of variables in the header, and the
/// extensions of layout 101 have been found by an earlier read if they are to be written.
void set_sections(const RestartForm& form) {
  using namespace mod_gridvars;
  nfilesect = static_cast<integer>(form.sections.size());
  rstrtvarsct.fill(0);
  numrstrtvar.fill(0);
  for (integer k = 1; k <= nfilesect; ++k) {
    const auto [first, last] = form.sections[static_cast<std::size_t>(k - 1)];
    rstrtvarsct(k, 1) = first;
    rstrtvarsct(k, 2) = last;
    if (form.layout != 3) numrstrtvar(k) = last - first + 1;
  }
}

void take_header(Solution& solution) {
  using namespace mod_p3dgrid;
  solution.version = {fileversion, eqid};
  solution.run = {talnvar, itimeint, ibeta};
  solution.nstep = nstep;
  solution.model = isgsmodel;
  solution.flags = {iflag(1), iflag(2), iflag(3)};
  solution.dtau = dtau;
  solution.talven = {talre, talxm1, talalfa, talbeta, talgam, tals1, talpr, talprt};
  if (nfvar.allocated()) solution.counts.assign(nfvar.span().begin(), nfvar.span().end());
}

template <class Real>
void take_parameters(const allocatable<Real, 2>& array, Solution& solution) {
  for (std::int64_t b = 1; b <= array.extent(1) && array.allocated(); ++b) {
    for (int m = 1; m <= 4; ++m) {
      solution.parameters.at(static_cast<std::size_t>(b - 1))[static_cast<std::size_t>(m - 1)] =
          static_cast<double>(array(b, m));
    }
  }
}

void take_column(const allocatable<float, 2>& array, int row, std::vector<double>& column) {
  if (row > array.extent(1)) return;
  for (std::size_t p = 0; p < column.size(); ++p) {
    column[p] = static_cast<double>(array(row, static_cast<std::int64_t>(p + 1)));
  }
}

/// Fortran's triplets arrive in records only of layout 101, and in text.
bool triplets_arrive(const RestartForm& form) {
  return form.layout == 101 || (form.layout == 100 && form.is_text());
}

Solution taken_over(const RestartForm& form, const std::vector<Extents>& extents,
                    const allocatable<float, 2>& varvalues,
                    const allocatable<float, 2>& auxvalues) {
  const int variables = form.highest_variable();
  Solution solution = empty_solution(extents, static_cast<std::size_t>(variables));
  take_header(solution);
  take_parameters(mod_p3dgrid::sqvar, solution);
  take_parameters(mod_p3dgrid::dqvar, solution);
  for (int v = 1; v <= variables; ++v) {
    if (!form.holds_variable(v) && !form.leaves_out(v)) continue;
    take_column(varvalues, v, solution.flow[static_cast<std::size_t>(v - 1)]);
  }
  for (int c = 1; c <= 3 && triplets_arrive(form); ++c) {
    take_column(auxvalues, c, solution.triplets[static_cast<std::size_t>(c - 1)]);
  }
  return solution;
}

template <class Array>
void allocate(Array& array, std::int64_t rows, std::int64_t columns) {
  if (array.allocate(rows, columns) != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

/// Columns as an array (column, point).
allocatable<float, 2> array_of(const Columns& columns, std::size_t points) {
  allocatable<float, 2> array;
  allocate(array, static_cast<std::int64_t>(columns.size()), static_cast<std::int64_t>(points));
  float* next = array.data();
  for (std::size_t p = 0; p < points; ++p) {
    for (const auto& column : columns) *next++ = static_cast<float>(column[p]);
  }
  return array;
}

template <class Real>
void set_parameters(const Solution& solution, allocatable<Real, 2>& array) {
  allocate(array, static_cast<std::int64_t>(solution.parameters.size()), 4);
  Real* next = array.data();
  for (std::size_t m = 0; m < 4; ++m) {
    for (const auto& block : solution.parameters) *next++ = static_cast<Real>(block[m]);
  }
}

/// The module's variables that a writer takes values from.
void set_module_variables(const RestartForm& form, const Solution& solution) {
  using namespace mod_p3dgrid;
  nstep = solution.nstep;
  dtau = solution.dtau;
  std::ranges::copy(solution.flags, iflag.data());
  if (form.layout == 2 && form.has_double_header()) set_parameters(solution, dqvar);
  if (form.layout == 2 && !form.has_double_header()) set_parameters(solution, sqvar);
  if (form.layout == 3) {
    if (nfvar.allocate(solution.counts.size()) != allocation_done) throw std::bad_alloc();
    std::ranges::copy(solution.counts, nfvar.data());
  }
  if (form.layout == 101) mod_gridvars::numrstrtvar(2) = form.highest_variable() - 5;
}

}  // namespace

std::optional<ReadRestart> read_restart_with_library(const std::string& path,
                                                     const RestartForm& form,
                                                     const std::vector<Extents>& extents) {
  become_host_for(path, form.planar);
  begin_run();
  set_sections(form);
  const int failures = failed_reads();
  constexpr int tolerated = 1;
  tolerate_repeated_allocations(tolerated);
  const ExtentArguments arguments(extents);
  allocatable<float, 2> varvalues, auxvalues;
  mod_p3dgrid::readp3drestart(short_name, form.encoding, form.is_double, arguments.blocks(),
                              arguments.points, varvalues, auxvalues, arguments.idim,
                              arguments.jdim, arguments.kdim, form.layout, form.multiblock);
  const int repeated = tolerated - repeated_allocations_to_come();
  tolerate_repeated_allocations(0);
  if (failed_reads() != failures) {
    mod_p3dgrid::p3dcloseunit(restart_read_unit);
    return std::nullopt;
  }
  return ReadRestart{taken_over(form, extents, varvalues, auxvalues), varvalues.extent(1),
                     varvalues.extent(2), repeated};
}

std::optional<std::vector<Extents>> read_restart_extents_with_library(const std::string& path,
                                                                      const RestartForm& form) {
  become_host_for(path, form.planar);
  begin_run();
  const int failures = failed_reads();
  integer nblocks = -1;
  allocatable<integer, 1> idim, jdim, kdim;
  mod_p3dgrid::readrestartheader(short_name, form.encoding, form.is_double, nblocks, form.layout,
                                 form.multiblock, idim, jdim, kdim);
  mod_p3dgrid::p3dcloseunit(restart_read_unit);
  if (failed_reads() != failures) return std::nullopt;
  std::vector<Extents> extents;
  for (integer b = 1; b <= nblocks; ++b) extents.push_back({idim(b), jdim(b), kdim(b)});
  return extents;
}

void write_restart_with_library(const std::string& path, const RestartForm& form,
                                const Solution& solution) {
  become_host_for(path, form.planar);
  begin_run();
  set_sections(form);
  set_module_variables(form, solution);
  const ExtentArguments arguments(solution.extents);
  const auto flow = array_of(solution.flow, solution.points());
  const auto triplets = array_of(solution.triplets, solution.points());
  mod_p3dgrid::writep3drestart(short_name, form.encoding, form.is_double, arguments.blocks(),
                               arguments.blocks(), flow, triplets, arguments.idim, arguments.jdim,
                               arguments.kdim, form.layout, form.multiblock);
  mod_p3dgrid::p3dcloseunit(restart_write_unit);
}

Solution as_delivered(const RestartForm& form, const Solution& solution) {
  const Solution empty = empty_solution(solution.extents, solution.flow.size());
  Solution delivered = narrowed(solution);
  delivered.older = empty.older;
  if (!triplets_arrive(form)) delivered.triplets = empty.triplets;
  return delivered;
}

}  // namespace interop
