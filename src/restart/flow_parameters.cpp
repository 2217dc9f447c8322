#include "restart/flow_parameters.hpp"

#include <algorithm>
#include <string>

#include "restart/restart_arguments.hpp"
#include "state/allocation.hpp"

namespace mod_p3dgrid {

/// Calls `act(name, array, other name, other array)`, where `array` is the one of the coding.
template <class Act>
void FlowParameters::with_arrays(Act act) const {
  if (layout.parameters == 0) return;
  if (parameters_are_double(coding)) return act("dqvar", dqvar, "sqvar", sqvar);
  return act("sqvar", sqvar, "dqvar", dqvar);
}

template <class Parameters>
void FlowParameters::check_rows(const char* name, const Parameters& parameters,
                                integer rows) const {
  if (parameters.extent(1) >= rows && parameters.extent(2) >= layout.parameters) return;
  refuse_restart(filename, std::string(name) + " holds " + std::to_string(parameters.extent(1)) +
                               " rows of " + std::to_string(parameters.extent(2)) + ", " +
                               std::to_string(rows) + " of " + std::to_string(layout.parameters) +
                               " are needed");
}

/// Allocates a row per block, and fills row n with row min(n, `rows`) of the other array.
template <class To, class From>
void FlowParameters::create(allocatable<To, 2>& to, const allocatable<From, 2>& from,
                            integer rows) const {
  if (!allocate_checked(to, nblocks, layout.parameters)) {
    refuse_restart(filename, "out of memory for the flow parameters");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    for (integer m = 1; m <= layout.parameters; ++m) {
      to(b, m) = rows > 0 ? static_cast<To>(from(std::min(b, rows), m)) : To{0};
    }
  }
}

void FlowParameters::check_to_write(integer nparamrows) const {
  if (nblocks < 1) return;
  with_arrays([&](const char* name, const auto& own, const char* other_name, const auto& other) {
    if (nparamrows < 1) refuse_restart(filename, "nparamrows is below 1");
    const integer rows = std::min(nblocks, nparamrows);
    if (own.allocated()) return check_rows(name, own, rows);
    if (!other.allocated()) refuse_restart(filename, "neither sqvar nor dqvar is allocated");
    check_rows(other_name, other, rows);
  });
}

void FlowParameters::create_to_write(integer nparamrows) const {
  with_arrays([&](const char*, auto& own, const char*, const auto& other) {
    if (!own.allocated()) create(own, other, nparamrows);
  });
}

void FlowParameters::create_to_read() const {
  with_arrays([&](const char* name, auto& own, const char*, const auto& other) {
    const bool convertible = other.allocated() && other.extent(2) >= layout.parameters;
    const auto rows = static_cast<integer>(convertible ? other.extent(1) : 0);
    if (!own.allocated()) create(own, other, rows);
    if (nblocks > 0) check_rows(name, own, nblocks);
  });
}

}  // namespace mod_p3dgrid
