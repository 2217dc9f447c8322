#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace bench {

using namespace mod_p3dgrid;

constexpr integer restart_read_unit = 201;
constexpr integer restart_write_unit = 301;
constexpr integer parameters = 4;

Extents extents_of_solution(const Request& request) {
  Extents extents;
  readrestartheader("input", form_code(request), is_double(request), extents.nblocks,
                    solution_layout, true, extents.idim, extents.jdim, extents.kdim);
  p3dcloseunit(restart_read_unit);
  for (integer b = 1; b <= extents.nblocks; ++b) {
    extents.blockpoints.push_back(extents.idim(b) * extents.jdim(b) * extents.kdim(b));
    extents.points += extents.blockpoints.back();
  }
  return extents;
}

void release_parameters() {
  sqvar.deallocate();
  dqvar.deallocate();
}

void allocate_parameters(integer nblocks) {
  release_parameters();
  static_cast<void>(dqvar.allocate(nblocks, parameters));
  for (double& parameter : dqvar.span()) parameter = 0.5;
}

Outcome read_restart(const Request& request) {
  const Extents extents = extents_of_solution(request);
  release_parameters();
  allocatable<float, 2> flow, triplets;
  const double seconds = timed([&] {
    readp3drestart("input", form_code(request), is_double(request), extents.nblocks,
                   extents.blockpoints, flow, triplets, extents.idim, extents.jdim, extents.kdim,
                   solution_layout, true);
  });
  return {seconds, bit_sum(flow.span())};
}

Outcome write_restart(const Request& request) {
  const Source source = load_source(request.input, true);
  allocate_parameters(source.nblocks);
  const double seconds = timed([&] {
    writep3drestart("output", form_code(request), is_double(request), source.nblocks,
                    source.nblocks, {source.flow.data(), variables, source.points}, {}, source.idim,
                    source.jdim, source.kdim, solution_layout, true);
    p3dcloseunit(restart_write_unit);
  });
  return {seconds, 0};
}

/// The allocation of the result is measured, as in a read of all variables.
Outcome read_variable(const Request& request) {
  const Extents extents = extents_of_solution(request);
  release_parameters();
  allocatable<float, 2> variable;
  const double seconds = timed([&] {
    static_cast<void>(variable.allocate(1, extents.points));
    readnextp3dvar(wanted_variable, "input", form_code(request), is_double(request),
                   extents.nblocks, extents.blockpoints, variable, extents.idim, extents.jdim,
                   extents.kdim, solution_layout, true);
  });
  return {seconds, bit_sum(variable.span())};
}

}  // namespace bench
