#include "restart/flow_parameters.hpp"

#include <algorithm>
#include <string>

#include "restart/restart_arguments.hpp"
#include "state/allocation.hpp"

namespace mod_p3dgrid {
namespace {

/// Calls `act(name, array of the coding, name of the other, the other array)`.
template <class Act>
void with_arrays(const Coding& coding, Act act) {
  if (parameters_are_double(coding)) return act("dqvar", dqvar, "sqvar", sqvar);
  return act("sqvar", sqvar, "dqvar", dqvar);
}

template <class Parameters>
void check_rows(const FileName& filename, const char* name, const Parameters& parameters,
                integer rows) {
  if (parameters.extent(1) >= rows && parameters.extent(2) >= parameters_per_block) return;
  refuse_restart(filename, std::string(name) + " holds " + std::to_string(parameters.extent(1)) +
                               " rows of " + std::to_string(parameters.extent(2)) + ", " +
                               std::to_string(rows) + " of 4 are needed");
}

/// Allocates a row per block, and fills row n with row min(n, `rows`) of the other array.
template <class To, class From>
void create(const FileName& filename, allocatable<To, 2>& to, const allocatable<From, 2>& from,
            integer nblocks, integer rows) {
  if (!allocate_checked(to, std::max(nblocks, 0), parameters_per_block)) {
    refuse_restart(filename, "out of memory for the flow parameters");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    for (integer m = 1; m <= parameters_per_block; ++m) {
      to(b, m) = rows > 0 ? static_cast<To>(from(std::min(b, rows), m)) : To{0};
    }
  }
}

}  // namespace

void check_parameters_to_write(const FileName& filename, const Coding& coding, integer nblocks,
                               integer nparamrows) {
  if (nblocks < 1) return;
  if (nparamrows < 1) refuse_restart(filename, "nparamrows is below 1");
  with_arrays(coding,
              [&](const char* name, const auto& own, const char* other_name, const auto& other) {
                const integer rows = std::min(nblocks, nparamrows);
                if (own.allocated()) return check_rows(filename, name, own, rows);
                if (!other.allocated())
                  refuse_restart(filename, "neither sqvar nor dqvar is allocated");
                check_rows(filename, other_name, other, rows);
              });
}

void create_parameters_to_write(const FileName& filename, const Coding& coding, integer nblocks,
                                integer nparamrows) {
  with_arrays(coding, [&](const char*, auto& own, const char*, const auto& other) {
    if (!own.allocated()) create(filename, own, other, nblocks, nparamrows);
  });
}

void create_parameters_to_read(const FileName& filename, const Coding& coding, integer nblocks) {
  with_arrays(coding, [&](const char* name, auto& own, const char*, const auto& other) {
    const bool convertible = other.allocated() && other.extent(2) >= parameters_per_block;
    const auto rows = static_cast<integer>(convertible ? other.extent(1) : 0);
    if (!own.allocated()) create(filename, own, other, nblocks, rows);
    if (nblocks > 0) check_rows(filename, name, own, nblocks);
  });
}

}  // namespace mod_p3dgrid
