#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace bench {

using namespace mod_p3dgrid;

constexpr integer unformatted = 0;
constexpr integer formatted = 1;
constexpr integer binary = 2;

integer form_code(const Request& request) {
  if (request.form == "formatted") return formatted;
  return request.form == "binary" ? binary : unformatted;
}

logical is_double(const Request& request) {
  return request.precision == "double";
}

/// The baseline of peak memory.
Outcome nothing(const Request&) {
  return {};
}

/// The results of reading `input`.
struct InputGrid {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;

  void read(const Request& request) {
    readp3dgrid("input", form_code(request), is_double(request), nblocks, ndim, xyz, idim, jdim,
                kdim, iblank, false, true);
  }
};

Outcome read_grid(const Request& request) {
  InputGrid grid;
  const double seconds = timed([&] { grid.read(request); });
  return {seconds, bit_sum(grid.xyz.span())};
}

/// Reads `input`, writes it to `output` in unformatted form and flushes that to the disk.
Outcome convert_grid(const Request& request) {
  InputGrid grid;
  const double seconds = timed([&] {
    grid.read(request);
    writep3dgrid("output", unformatted, false, grid.nblocks, grid.ndim, grid.xyz, grid.idim,
                 grid.jdim, grid.kdim, {}, false, true);
    flush_to_disk(request.output);
  });
  return {seconds, bit_sum(grid.xyz.span())};
}

Outcome write_grid(const Request& request) {
  const Source source = load_source(request.input, false);
  const double seconds = timed([&] {
    writep3dgrid("output", form_code(request), is_double(request), source.nblocks, coordinates,
                 {source.xyz.data(), coordinates, source.points}, source.idim, source.jdim,
                 source.kdim, {}, false, true);
  });
  return {seconds, 0};
}

}  // namespace bench
