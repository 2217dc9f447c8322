#pragma once

#include <cstdint>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "ours/measure.hpp"

/// The library's operations as measured cases. Files are multi-block without blanking; solutions
/// have layout 2 and five variables in one section.
namespace bench {

inline constexpr mod_p3dgrid::integer solution_layout = 2;
inline constexpr mod_p3dgrid::integer wanted_variable = 3;

[[nodiscard]] mod_p3dgrid::integer form_code(const Request& request);
[[nodiscard]] mod_p3dgrid::logical is_double(const Request& request);

/// Extents of the blocks of a solution file, which are arguments of its readers.
struct Extents {
  mod_p3dgrid::integer nblocks = 0;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> idim, jdim, kdim;
  std::vector<mod_p3dgrid::integer> blockpoints;
  std::int64_t points = 0;
};
[[nodiscard]] Extents extents_of_solution(const Request& request);

/// Deallocates the flow parameters of earlier operations.
void release_parameters();
/// Sets flow parameters for a file to write.
void allocate_parameters(mod_p3dgrid::integer nblocks);

Outcome nothing(const Request& request);
Outcome read_grid(const Request& request);
Outcome write_grid(const Request& request);
Outcome convert_grid(const Request& request);
Outcome read_restart(const Request& request);
Outcome write_restart(const Request& request);
Outcome read_variable(const Request& request);
Outcome write_variable(const Request& request);
Outcome combine_variables(const Request& request);
Outcome check_restart(const Request& request);
Outcome write_tecplot(const Request& request);
Outcome read_grid_by_front(const Request& request);
Outcome read_restart_by_front(const Request& request);

}  // namespace bench
