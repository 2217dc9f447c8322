/// Has the module do what its model does, and looks at it afterwards.

#include <filesystem>
#include <sstream>

#include "model/module_model.hpp"
#include "restart/restart_case.hpp"
#include "restart/staging.hpp"
#include "support/scratch_folder.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;
namespace fs = std::filesystem;

constexpr integer rows = 13;

/// The arguments that all operations take alike.
struct Arguments {
  std::vector<integer> idim, jdim, kdim, points;
  integer blocks;
  std::vector<float> flow;
  std::vector<double> wide;
  integer total = 0;

  explicit Arguments(int count) : blocks(count) {
    for (int b = 0; b < count; ++b) {
      const auto [i, j, k] = extents_of(b);
      idim.push_back(i);
      jdim.push_back(j);
      kdim.push_back(k);
      points.push_back(i * j * k);
      total += points.back();
    }
    flow.assign(static_cast<std::size_t>(rows * total), 0.5F);
    wide.assign(static_cast<std::size_t>(5 * total), 0.25);
  }
  [[nodiscard]] array_view<const float, 2> values(integer of_rows) const {
    return {flow.data(), of_rows, total};
  }
};

void set_table(const Operation& of, bool with_extensions) {
  if (of.sections == 1) test_support::set_sections({{1, 5}});
  if (of.sections == 2) test_support::set_sections({{1, 5}, {6, 7}});
  if (with_extensions && of.layout == 101) mod_gridvars::numrstrtvar(2) = 8;
}

void make_restart(const Operation& of, bool leading) {
  test_support::write_file("restart", Cursor(of, restart_records(of, leading)).bytes());
}

void make_grid(const Operation& of, int blocks) {
  test_support::write_file("grid", Cursor(of, grid_records(of, blocks)).bytes());
}

void read_grid(const Operation& of) {
  make_grid(of, of.blocks);
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  readp3dgrid("grid", of.iformat, of.dblprec, nblocks, ndim, xyz, idim, jdim, kdim, iblank, false,
              of.multiblock);
}

void read_grid_header(const Operation& of) {
  make_grid(of, of.blocks);
  integer nblocks = 0;
  integer ndim = 0;
  integer npoints = 0;
  if (of.dblprec) {
    readp3dgridheader("grid", of.iformat, nblocks, ndim, of.multiblock, npoints);
  } else {
    readp3dgridheader("grid", of.iformat, nblocks, ndim, of.multiblock);
  }
}

void check(const Operation& of) {
  Operation whole = of;
  whole.missing = 0;
  const bool grid_is_short = of.flags % 2 == 1;
  make_grid(grid_is_short ? of : whole, blocks_of_checked_grid(of));
  make_restart(grid_is_short ? whole : of, true);
  checkp3drstrtheader("grid", of.iformat, "restart", of.iformat, of.dblprec, of.layout,
                      of.multiblock);
}

void read_restart(const Operation& of, const Arguments& with) {
  make_restart(of, whole_read_takes_triplets(of));
  set_table(of, false);
  mod_gridvars::readallvars = of.readallvars;
  allocatable<float, 2> flow, triplets;
  readp3drestart("restart", of.iformat, of.dblprec, with.blocks, with.points, flow, triplets,
                 with.idim, with.jdim, with.kdim, of.layout, of.multiblock);
}

void read_next_variable(const Operation& of, const Arguments& with) {
  make_restart(of, of.triplets());
  set_table(of, true);
  std::vector<float> values(static_cast<std::size_t>(with.total));
  readnextp3dvar(of.variable, "restart", of.iformat, of.dblprec, with.blocks, with.points,
                 array_view<float, 2>(values.data(), 1, with.total), with.idim, with.jdim,
                 with.kdim, of.layout, of.multiblock);
}

void write_variable(const Operation& of, const Arguments& with) {
  writenextp3dvar(of.variable, "v", of.dblprec, with.blocks, with.points, with.values(1), with.idim,
                  with.jdim, with.kdim);
}

void combine(const Operation& of, const Arguments& with) {
  set_table(of, true);
  const integer variables = mod_gridvars::numrstrtvar(1) + mod_gridvars::numrstrtvar(2);
  for (integer m = 1; of.write_first && m <= variables; ++m)
    write_variable(of.of_variable(m), with);
  combinep3dvarfiles(with.values(3), "combined", of.iformat, of.dblprec, with.blocks, with.blocks,
                     with.idim, with.jdim, with.kdim, of.layout, of.multiblock);
}

void act_on_restart(const Operation& of) {
  const Arguments with(of.blocks);
  integer nblocks = 0;
  switch (of.act) {
    case Act::read_restart_header:
      make_restart(of, true);
      return readrestartheader("restart", of.iformat, of.dblprec, nblocks, of.layout,
                               of.multiblock);
    case Act::write_restart_header:
      return writerestartheader("written", of.iformat, of.dblprec, with.blocks, with.idim,
                                with.jdim, with.kdim, of.layout, of.multiblock);
    case Act::check:
      return check(of);
    case Act::read_restart:
      return read_restart(of, with);
    case Act::write_restart:
      set_table(of, true);
      return writep3drestart("written", of.iformat, of.dblprec, with.blocks, with.blocks,
                             with.values(rows), with.values(3), with.idim, with.jdim, with.kdim,
                             of.layout, of.multiblock);
    case Act::read_next_variable:
      return read_next_variable(of, with);
    case Act::write_next_variable:
      return write_variable(of, with);
    default:
      return combine(of, with);
  }
}

void act(const Operation& of) {
  const Arguments with(of.blocks);
  switch (of.act) {
    case Act::read_grid:
      return read_grid(of);
    case Act::read_grid_header:
      return read_grid_header(of);
    case Act::write_grid:
      return writep3dgrid("grid written", of.iformat, of.dblprec, with.blocks, 3, with.values(3),
                          with.idim, with.jdim, with.kdim, {}, false, of.multiblock);
    case Act::write_tecplot:
      return writetecplotfile_p3d("tecplot", with.blocks,
                                  array_view<const double, 2>(with.wide.data(), 3, with.total),
                                  array_view<const double, 2>(with.wide.data(), 5, with.total),
                                  with.idim, with.jdim, with.kdim, {}, false);
    case Act::close_unit:
      return p3dcloseunit(of.unit);
    case Act::set_debug:
      return p3dsetdebug(of.multiblock);
    case Act::release_nfvar:
      static_cast<void>(nfvar.deallocate());
      return;
    case Act::release_sqvar:
      static_cast<void>(sqvar.deallocate());
      return;
    case Act::release_dqvar:
      static_cast<void>(dqvar.deallocate());
      return;
    case Act::set_flags:
      std::ranges::copy(flags_of(of), iflag.data());
      return;
    default:
      return act_on_restart(of);
  }
}

/// Files of this folder that the process has open, as the system tells.
std::vector<std::string> open_files() {
  const std::string folder = fs::current_path().string() + "/";
  std::vector<std::string> open;
  for (const auto& descriptor : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    std::string path = fs::read_symlink(descriptor.path(), gone).string();
    if (!path.starts_with(folder)) continue;
    path.erase(0, folder.size());
    open.push_back(path.substr(0, path.find(" (deleted)")));
  }
  std::ranges::sort(open);
  return open;
}

std::vector<std::string> variable_files() {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(fs::current_path())) {
    const std::string name = entry.path().filename().string();
    if (name.find(".tmp") != name.npos) files.push_back(name);
  }
  std::ranges::sort(files);
  return files;
}

template <class Range>
std::string text_of(const Range& values) {
  std::ostringstream text;
  for (const auto& value : values) text << value << ' ';
  return text.str();
}

template <class Real>
std::string text_of_parameters(const allocatable<Real, 2>& array) {
  if (!array.allocated()) return "-";
  std::string text = std::to_string(array.extent(1)) + " rows: ";
  for (std::int64_t b = 1; b <= array.extent(1); ++b) {
    text += text_of(std::array{array(b, 1), array(b, 2), array(b, 3), array(b, 4)});
  }
  return text;
}

template <class T, std::size_t Rank>
void add_staging(std::string& all, const char* name, const allocatable<T, Rank>& array) {
  if (!array.allocated()) return;
  all += std::string(name) + "(" + std::to_string(array.extent(1)) + "," +
         std::to_string(Rank == 2 ? array.extent(Rank) : 1) + ") ";
}

/// In the order of the names, as the model tells them.
std::string staging() {
  std::string all;
  const RestartStaging& whole = restart_staging();
  add_staging(all, "DW", whole.DW);
  add_staging(all, "DWTMP", whole.DWTMP);
  add_staging(all, "DX", whole.DX);
  add_staging(all, "WTMP", whole.WTMP);
  const OneVariableStaging& one = one_variable_staging();
  add_staging(all, "one.DPNTR", one.DPNTR);
  add_staging(all, "one.DW", one.DW);
  add_staging(all, "one.READII", one.READII);
  add_staging(all, "one.SPNTR", one.SPNTR);
  add_staging(all, "one.SW", one.SW);
  add_staging(all, "write.DW", variable_write_staging().DW);
  return all;
}

std::int64_t failed_allocations() {
  return test_support::count_calls("checkallocationerror") -
         std::ranges::count(test_support::calls, "checkallocationerror(0)");
}

}  // namespace

int perform(const Operation& operation) {
  test_support::calls.clear();
  test_support::messages.clear();
  try {
    act(operation);
    return -1;
  } catch (const test_support::RunEnded& end) {
    return end.status;
  }
}

State observed(int ended) {
  State state{{"eqid", std::to_string(eqid)},         {"fileversion", std::to_string(fileversion)},
              {"nstep", std::to_string(nstep)},       {"ibeta", std::to_string(ibeta)},
              {"itimeint", std::to_string(itimeint)}, {"isgsmodel", std::to_string(isgsmodel)},
              {"talnvar", std::to_string(talnvar)},   {"dtau", std::to_string(dtau)}};
  state["open files"] = text_of(open_files());
  state["variable files"] = text_of(variable_files());
  state["tal values"] =
      text_of(std::array{talre, talxm1, talalfa, talbeta, talgam, tals1, talpr, talprt});
  state["p3d values"] = text_of(std::array{p3dxm1, p3dalfa, p3dre, p3dtau});
  state["debugprint"] = debugprint ? "1" : "0";
  state["iflag"] = text_of(iflag.span());
  state["numrstrtvar"] = text_of(mod_gridvars::numrstrtvar.span().first(2));
  state["nfvar"] = nfvar.allocated() ? text_of(nfvar.span()) : "-";
  state["sqvar"] = text_of_parameters(sqvar);
  state["dqvar"] = text_of_parameters(dqvar);
  std::string names;
  for (const FileName& name : mod_p3dgrid::tmpfile.span()) names += std::string(name.view()) + " ";
  state["tmpfile"] = names;
  state["staging"] = staging();
  state["announcements"] = std::to_string(test_support::count_calls("dispreadwrite"));
  state["failed allocations"] = std::to_string(failed_allocations());
  state["failed reads"] = std::to_string(test_support::count_calls("dispfilereaderror"));
  state["run ended with"] = std::to_string(ended);
  return state;
}

}  // namespace model
