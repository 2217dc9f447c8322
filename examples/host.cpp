/// A whole host, with a `mod_gridvars` of its own: reads a grid and its solution, and writes the
/// solution in double precision and big-endian byte order. OUT appears whole or not at all.
///
///     host GRID SOLUTION OUT
///
/// Grid and solution are unformatted, in single precision, with a block count.

#include <MOD_P3DReader.hpp>
#include <bit>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <stdexcept>

/// An error that ends this host, with its exit status: 1 for a bad file, 2 for anything else.
struct Failure : std::runtime_error {
  Failure(int with_status, const std::string& what)
      : std::runtime_error(what), status(with_status) {}
  int status;
};

namespace mod_gridvars {

integer nfilesect = 1;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer& mode, const integer&, const integer&, const FileName& filename,
                   const integer&, const logical&, const std::optional<integer>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&) {
  std::cout << (mode == 1 ? "reading " : "writing ") << filename.view() << '\n';
}

void checkallocationerror(const integer& status) {
  if (status == mod_p3dgrid::allocation_done) return;
  throw Failure(2, status == mod_p3dgrid::out_of_memory ? "out of memory" : "allocated already");
}

void dispfilereaderror() {
  throw Failure(1, mod_p3dgrid::p3dlastfailure().describe());
}

}  // namespace mod_gridvars

using namespace mod_p3dgrid;

constexpr integer unformatted = 0;
constexpr integer solution_layout = 2;  // PLOT3D solution file
constexpr integer variables = 5;
constexpr integer restart_write_unit = 301;

/// One record for each block, with all five variables.
static void set_sections() {
  mod_gridvars::rstrtvarsct(1, 1) = 1;
  mod_gridvars::rstrtvarsct(1, 2) = variables;
  mod_gridvars::numrstrtvar(1) = variables;
}

/// The names "grid", "solution" and "out" stand for paths of any length.
static void install_handlers(const std::string& grid, const std::string& solution,
                             const std::string& out) {
  p3dsetpaths([=](std::string_view name) {
    return name == "grid" ? grid : name == "solution" ? solution : out;
  });
  p3dsetcoding([](std::string_view name) {
    p3dgrid::StatedCoding coding;
    if (name == "out") coding.byte_order = p3dgrid::ByteOrder::big;
    return coding;
  });
  p3dsetmessages([](std::string_view line) { std::cout << line << '\n'; });
  p3dsetrunend([](const RunEnd& end) {
    if (end.status == 0) throw Failure(1, "the two files do not belong together");
    throw Failure(2, end.message);
  });
  p3dsetdebug(false);
}

static void convert() {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz, flow, triplets;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  readp3dgrid("grid", unformatted, false, nblocks, ndim, xyz, idim, jdim, kdim, iblank, false,
              true);
  checkp3drstrtheader("grid", unformatted, "solution", unformatted, false, solution_layout, true);
  readp3drestart("solution", unformatted, false, nblocks, {}, flow, triplets, idim, jdim, kdim,
                 solution_layout, true);
  writep3drestart("out", unformatted, true, nblocks, nblocks, flow, triplets, idim, jdim, kdim,
                  solution_layout, true);
  p3dcloseunit(restart_write_unit);  // only now is the file complete
}

/// A failed operation leaves its units open. Closing one may fail again; that is ignored.
static void clean_up(const std::string& unfinished) {
  try {
    p3dcloseunit(restart_write_unit);
  } catch (const Failure&) {
  }
  std::error_code ignored;
  std::filesystem::remove(unfinished, ignored);
}

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: host GRID SOLUTION OUT\n", stderr);
    return 2;
  }
  const std::string out = argv[3];
  const std::string unfinished = out + ".unfinished";
  try {
    set_sections();
    install_handlers(argv[1], argv[2], unfinished);
    convert();
    std::error_code error;
    std::filesystem::rename(unfinished, out, error);
    if (error) throw Failure(2, "cannot write " + out + ": " + error.message());
  } catch (const Failure& failure) {
    std::cerr << "host: " << failure.what() << '\n';
    clean_up(unfinished);
    return failure.status;
  }
}
