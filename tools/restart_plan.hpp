#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "extents.hpp"
#include "record_plan.hpp"
#include "restart_form.hpp"

namespace p3dgrid {

/// What decides about the records of a restart file besides its form.
struct RestartShape {
  Extents extents;
  Sections sections;
  std::vector<mod_p3dgrid::integer> functions = {};  ///< of each block, if they differ
  bool triplets = false;                             ///< blocks begin with their triplets
  bool flow_parameters = false;                      ///< the header of layout 0 goes on with them
  int older_levels = 0;                         ///< records of older time levels behind each block
  std::array<mod_p3dgrid::integer, 3> flags{};  ///< of the variable extensions of layout 101
};

/// The equation set of layout 0 that goes on with the flow parameters.
inline constexpr mod_p3dgrid::integer equations_with_parameters = 1;

/// Records of older time levels behind each block that go with a time integration of layout 0. Text
/// has none.
[[nodiscard]] int older_levels(Encoding encoding, mod_p3dgrid::integer time_integration);

/// The shape of a file whose header has just been read; the flags of layout 101 are left 0.
/// @param extents  those of the header or, where it holds none, of the grid
[[nodiscard]] RestartShape shape_of(const RestartForm& form, const Sections& sections,
                                    const Extents& extents);

/// The records of a restart file in order.
[[nodiscard]] std::vector<RecordPlan> plan_of(const RestartForm& form, const RestartShape& shape);

}  // namespace p3dgrid
