#include <filesystem>

#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace bench {

using namespace mod_p3dgrid;

namespace {

constexpr const char* prefix = "v";

void write_one(const Request& request, const Source& source, integer variable) {
  const std::vector<integer> all_points{static_cast<integer>(source.points)};
  writenextp3dvar(variable, prefix, is_double(request), source.nblocks, all_points,
                  {source.flow.data(), variables, source.points}, source.idim, source.jdim,
                  source.kdim);
}

}  // namespace

Outcome write_variable(const Request& request) {
  const Source source = load_source(request.input, true);
  const double seconds = timed([&] { write_one(request, source, wanted_variable); });
  std::filesystem::remove(path_of(request, mod_p3dgrid::tmpfile(wanted_variable).view()));
  return {seconds, 0};
}

/// Measures only combining, which also deletes the files of the variables.
Outcome combine_variables(const Request& request) {
  const Source source = load_source(request.input, true);
  allocate_parameters(source.nblocks);
  for (integer v = 1; v <= variables; ++v) write_one(request, source, v);
  const double seconds = timed([&] {
    combinep3dvarfiles({}, "output", form_code(request), is_double(request), source.nblocks,
                       source.nblocks, source.idim, source.jdim, source.kdim, solution_layout,
                       true);
  });
  return {seconds, 0};
}

/// `input` is the grid and `output` its solution, which is not written.
Outcome check_restart(const Request& request) {
  const double seconds = timed([&] {
    checkp3drstrtheader("input", form_code(request), "output", form_code(request),
                        is_double(request), solution_layout, true);
  });
  return {seconds, 0};
}

}  // namespace bench
