/// Writes the inputs that fuzzing begins with: small files in every layout, encoding and precision,
/// made by the module's own writers, and the options that read them.
///
///     make_seeds FOLDER
///
/// makes a folder in FOLDER for each operation.

#include <unistd.h>

#include <bit>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include "fuzz/options.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"

namespace {

namespace fs = std::filesystem;
using namespace mod_p3dgrid;
using namespace test_support;
using fuzz::Options;

fs::path corpus;

void put_seed(const std::string& operation, const std::string& name, const Options& options,
              const std::string& content) {
  std::string input(sizeof options, '\0');
  std::memcpy(input.data(), &options, sizeof options);
  fs::create_directories(corpus / operation);
  write_file(corpus / operation / name, input + content);
}

std::uint8_t flags_of(const GridForm& form) {
  return static_cast<std::uint8_t>((form.dblprec ? fuzz::double_precision : 0) |
                                   (form.multiblock ? fuzz::multiblock : 0) |
                                   (form.iblank ? fuzz::blanking : 0));
}

Options options_of(const GridForm& form) {
  Options options;
  options.format = static_cast<std::uint8_t>(form.iformat);
  options.flags = flags_of(form);
  return options;
}

/// Files written and read from now on have the other byte order. `begin_run` turns it back.
void turn_byte_order() {
  p3dsetcoding(
      [](std::string_view) { return p3dgrid::StatedCoding{.byte_order = std::endian::big}; });
}

/// A grid in the form, as the module writes it.
std::string written(const GridForm& form, bool turned = false) {
  begin_run();
  write_file("made", HandMadeGrid(form).bytes(true));
  Grid grid;
  grid.read("made", form);
  if (turned) turn_byte_order();
  grid.write("written", form);
  return read_file("written");
}

void put_grids() {
  for (const GridForm& form : all_grid_forms()) {
    const std::string content = written(form);
    Options options = options_of(form);
    put_seed("readp3dgrid", name_of(form), options, content);
    put_seed("front", "Grid" + name_of(form), options, content);
    put_seed("readp3dgridheader", name_of(form), options, content);
    options.flags |= fuzz::header_only;
    put_seed("readp3dgridheader", name_of(form) + "Count", options, content);
    options = options_of(form);
    options.oddities = fuzz::other_byte_order;
    put_seed("readp3dgrid", name_of(form) + "Turned", options, written(form, true));
  }
}

Options options_of(const RestartForm& form) {
  Options options;
  options.format = static_cast<std::uint8_t>(form.iformat);
  options.flags = static_cast<std::uint8_t>((form.dblprec ? fuzz::double_precision : 0) |
                                            (form.multiblock ? fuzz::multiblock : 0));
  options.layout = fuzz::byte_of_layout(form.layout);
  options.nfilesect = static_cast<std::uint8_t>(form.sections.size() - 1);
  for (std::size_t s = 0; s < form.sections.size(); ++s) {
    const auto [first, last] = form.sections[s];
    options.sections[s][0] = static_cast<std::int8_t>(first);
    options.sections[s][1] = static_cast<std::int8_t>(last);
    // Layout 3 counts its variables in the header; all of them are in the sections.
    options.numrstrtvar[s] = static_cast<std::int8_t>(form.layout == 3 ? 0 : last - first + 1);
  }
  options.nblocks = static_cast<std::int8_t>(form.blocks);
  for (int b = 0; b < 3; ++b) {
    for (int d = 0; d < 3; ++d) {
      options.extents[b][d] = static_cast<std::uint8_t>(HandMadeRestart::extent(b, d));
    }
  }
  options.variable = 1;
  options.nparamrows = static_cast<std::int8_t>(form.blocks);
  options.iflag = 3;  // 999, the end
  return options;
}

/// The flow parameters of layout 2, one row per block.
void allocate_parameters(int blocks) {
  sqvar.deallocate();
  dqvar.deallocate();
  if (sqvar.allocate(blocks, 4) != 0 || dqvar.allocate(blocks, 4) != 0) throw std::bad_alloc();
  std::ranges::fill(sqvar.span(), 0.5F);
  std::ranges::fill(dqvar.span(), 0.5);
}

/// Variables that layout 101 can have behind its first five.
constexpr integer most_extension_variables = 8;

int highest_variable(const RestartForm& form) {
  return HandMadeRestart(form).highest_variable();
}

/// A solution in the form, as the module writes it; by hand the layout that it does not write.
std::string written(const RestartForm& form, const std::vector<int>& flags = {999},
                    bool turned = false) {
  if (form.layout == 0) {
    HandMadeRestart made(form);
    if (form.dblprec) made.equation_set = 1;
    return made.bytes();
  }
  begin_run();
  set_sections(form.sections);
  nstep = HandMadeRestart::steps;
  dtau = HandMadeRestart::step_size;
  for (std::size_t m = 0; m < flags.size(); ++m) iflag(m + 1) = flags[m];
  if (flags.size() > 1) mod_gridvars::numrstrtvar(2) = most_extension_variables;
  allocate_parameters(form.blocks);
  if (nfvar.allocate(form.blocks) != 0) throw std::bad_alloc();
  std::ranges::fill(nfvar.span(), highest_variable(form));
  Restart restart(form.blocks);
  restart.fill(15);
  if (turned) turn_byte_order();
  restart.write("written", form);
  p3dcloseunit(301);
  return read_file("written");
}

void put_restarts() {
  for (const RestartForm& form : all_restart_forms()) {
    const std::string content = written(form);
    Options options = options_of(form);
    put_seed("readrestartheader", name_of(form), options, content);
    put_seed("readp3drestart", name_of(form), options, content);
    Options in_front = options;
    in_front.flags |= fuzz::quiet;  // which stands for a solution there
    put_seed("front", name_of(form), in_front, content);
    if (form.layout == 3) options.numrstrtvar[0] = static_cast<std::int8_t>(highest_variable(form));
    put_seed("readnextp3dvar", name_of(form), options, content);
    if (form.layout == 0 || form.sections.size() > 1) continue;
    options.oddities = fuzz::other_byte_order;
    put_seed("readnextp3dvar", name_of(form) + "Turned", options, written(form, {999}, true));
  }
}

/// Single-precision layout 100 as a whole read takes it, older time levels, and the three chains of
/// further variables.
void put_special_restarts() {
  for (const int iformat : {0, 1, 2}) {
    for (const bool dblprec : {false, true}) {
      RestartForm form{101, iformat, dblprec, 1, {{1, 5}}, false};
      Options options = options_of(form);
      int chain = 0;
      for (const std::vector<int>& flags :
           {std::vector{1, 999}, std::vector{41, 999}, std::vector{41, 41, 999}}) {
        const std::string name = name_of(form) + "Chain" + std::to_string(++chain);
        const std::string content = written(form, flags);
        options.variable = 7;
        options.numrstrtvar[1] = most_extension_variables;
        put_seed("readnextp3dvar", name, options, content);
        options.numrstrtvar[1] = 0;
        put_seed("readp3drestart", name, options, content);
      }
      form = {100, iformat, dblprec, 3, {{1, 5}, {6, 7}}, false};
      HandMadeRestart plain(form);
      plain.leading = false;
      put_seed("readp3drestart", name_of(form) + "Plain", options_of(form), plain.bytes());
      form = {0, iformat, dblprec, 3, {{1, 5}}, false};
      HandMadeRestart levels(form);
      levels.time_integration = 3;
      levels.older_levels = 2;
      put_seed("readp3drestart", name_of(form) + "Levels", options_of(form), levels.bytes());
      put_seed("readnextp3dvar", name_of(form) + "Levels", options_of(form), levels.bytes());
    }
  }
}

/// A grid with the extents of the hand-made solutions.
std::string grid_of(int blocks, int iformat, bool multiblock) {
  begin_run();
  const Restart extents(blocks);
  Restart points(blocks);
  points.fill(3);
  writep3dgrid("written", iformat, false, blocks, 3, points.varvalues, extents.idim, extents.jdim,
               extents.kdim, std::vector<integer>{}, false, multiblock);
  return read_file("written");
}

void put_checks() {
  for (const RestartForm& form : all_restart_forms()) {
    if (form.sections.size() > 1) continue;
    const int grid_format = (form.iformat + form.layout) % 3;
    const std::string grid = grid_of(form.blocks, grid_format, form.multiblock);
    Options options = options_of(form);
    options.other_format = static_cast<std::uint8_t>(grid_format);
    options.split[0] = static_cast<std::uint8_t>(grid.size() % 256);
    options.split[1] = static_cast<std::uint8_t>(grid.size() / 256);
    put_seed("checkp3drstrtheader", name_of(form), options, grid + written(form));
  }
}

/// The temporary files of `count` variables, one after another; `length` becomes that of each.
std::string variable_files(const RestartForm& form, int count, std::size_t& length) {
  begin_run();
  Restart restart(form.blocks);
  restart.fill(1);
  std::string all;
  for (int m = 1; m <= count; ++m) {
    writenextp3dvar(m, "v", form.dblprec || form.iformat == 1, form.blocks, restart.blockpoints,
                    restart.varvalues, restart.idim, restart.jdim, restart.kdim);
    const std::string name(mod_p3dgrid::tmpfile(m).view());
    const std::string content = read_file(name);
    length = content.size();
    all += content;
    fs::remove(name);
  }
  return all;
}

void put_combinations() {
  for (const RestartForm& form : all_restart_forms()) {
    Options options = options_of(form);
    options.numrstrtvar[0] = 5;
    options.allocated = static_cast<std::uint8_t>((form.blocks == 1 ? 1 : 0) << 2 | 2 << 4);
    options.nparamrows = 1;
    if (form.layout == 2) options.allocated |= 1;
    options.nfvar = static_cast<std::int8_t>(highest_variable(form));
    if (form.layout == 3) {
      options.allocated |= 3 << 4;
      for (std::size_t s = 1; s < form.sections.size(); ++s) {
        options.numrstrtvar[s] =
            static_cast<std::int8_t>(form.sections[s].second - form.sections[s].first + 1);
      }
    }
    std::size_t length = 0;
    const std::string content = variable_files(form, highest_variable(form), length);
    options.split[0] = static_cast<std::uint8_t>(length);
    put_seed("combinep3dvarfiles", name_of(form), options, content);
  }
}

/// Text for the list reader, taken for numbers of each kind.
void put_texts() {
  for (const RestartForm& form : all_restart_forms()) {
    if (form.iformat != 1 || form.blocks > 1) continue;
    const std::string content = written(form);
    Options options;
    for (const int kind : {0, 1, 2}) {
      options.format = static_cast<std::uint8_t>(kind);
      options.split[0] = static_cast<std::uint8_t>(content.size() % 200);
      put_seed("list_reader", name_of(form) + std::to_string(kind), options, content);
    }
  }
}

/// Takes pieces of nothing but zeros out of a file, for a target to put them in again.
std::string without_zeros(std::string content, Options& options) {
  const std::string piece(fuzz::stretch_unit, '\0');
  const std::size_t at = content.find(piece);
  int pieces = 0;
  for (; content.compare(at, piece.size(), piece) == 0; ++pieces) content.erase(at, piece.size());
  options.oddities |= fuzz::stretched;
  options.other_format = static_cast<std::uint8_t>(pieces);
  options.split[0] = static_cast<std::uint8_t>(at % 256);
  options.split[1] = static_cast<std::uint8_t>(at / 256);
  return content;
}

/// The extents of a block that is large enough for the ways that large blocks are moved in.
constexpr integer large_extents[3]{32, 32, 24};
constexpr integer large_points = 32 * 32 * 24;

/// A block of zeros and a small one behind it.
template <class Values>
void allocate_zeros(Values& values, int rows) {
  if (values.allocate(rows, large_points + 8) != 0) throw std::bad_alloc();
  std::ranges::fill(values.span(), 0.F);
}

void put_large_grids() {
  for (const GridForm& form : all_grid_forms()) {
    if (form.iformat == 1) continue;
    for (const bool turned : {false, true}) {
      begin_run();
      if (turned) turn_byte_order();
      Grid grid;
      allocate_zeros(grid.xyz, 3);
      const std::vector<integer> idim{32, 2}, jdim{32, 2}, kdim{24, 2};
      const std::vector<integer> iblank(large_points + 8, 0);
      writep3dgrid("written", form.iformat, form.dblprec, form.multiblock ? 2 : 1, 3, grid.xyz,
                   idim, jdim, kdim, iblank, form.iblank, form.multiblock);
      Options options = options_of(form);
      if (turned) options.oddities = fuzz::other_byte_order;
      const std::string content = without_zeros(read_file("written"), options);
      put_seed("readp3dgrid", name_of(form) + (turned ? "LargeTurned" : "Large"), options, content);
    }
  }
}

void put_large_restarts() {
  for (const RestartForm& form : all_restart_forms()) {
    const bool written_by_us = form.layout != 0 && form.iformat != 1;
    if (!written_by_us || form.blocks > 1 || form.sections.size() > 1) continue;
    // With triplets in double precision they are more zeros than a byte counts pieces of.
    if (form.dblprec && (form.layout == 100 || form.layout == 101)) continue;
    begin_run();
    iflag(1) = 999;
    allocate_parameters(1);
    if (nfvar.allocate(1) != 0) throw std::bad_alloc();
    nfvar(1) = 5;
    Restart restart(1);
    restart.idim = {large_extents[0]};
    restart.jdim = {large_extents[1]};
    restart.kdim = {large_extents[2]};
    allocate_zeros(restart.varvalues, 5);
    allocate_zeros(restart.auxvalues, 3);
    restart.write("written", form);
    p3dcloseunit(301);
    Options options = options_of(form);
    for (int d = 0; d < 3; ++d) {
      options.extents[0][d] = static_cast<std::uint8_t>(large_extents[d] / fuzz::stretched_extents);
    }
    const std::string content = without_zeros(read_file("written"), options);
    put_seed("readp3drestart", name_of(form) + "Large", options, content);
    if (form.layout == 3) options.numrstrtvar[0] = 5;
    options.variable = 3;
    put_seed("readnextp3dvar", name_of(form) + "Large", options, content);
  }
}

/// Text whose numbers stand where a buffer ends.
void put_long_texts() {
  constexpr int buffer = 256 * 1024;
  for (const RestartForm& form : all_restart_forms()) {
    if (form.iformat != 1 || form.sections.size() > 1) continue;
    Options options = options_of(form);
    const std::string content = written(form);
    options.oddities |= fuzz::stretched;
    options.other_format = static_cast<std::uint8_t>(buffer / fuzz::stretch_unit);
    put_seed("readp3drestart", name_of(form) + "Long", options, content);
  }
}

void put_all() {
  put_grids();
  put_restarts();
  put_special_restarts();
  put_checks();
  put_combinations();
  put_texts();
  put_large_grids();
  put_large_restarts();
  put_long_texts();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: make_seeds FOLDER\n", stderr);
    return 2;
  }
  const fs::path scratch = fs::temp_directory_path() / ("p3d-seeds-" + std::to_string(::getpid()));
  try {
    corpus = fs::absolute(arguments[1]);
    fs::create_directories(scratch);
    fs::current_path(scratch);
    put_all();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_seeds: %s\n", error.what());
    return 1;
  }
  fs::remove_all(scratch);
  return 0;
}
