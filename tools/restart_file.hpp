#pragma once

#include <MOD_P3DReader.hpp>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "find.hpp"
#include "form_options.hpp"
#include "restart_header.hpp"

namespace p3dgrid::tool {

/// How far a computation has gone.
struct TimeStep {
  mod_p3dgrid::integer count = 0;
  double size = 0;
};

/// The flow parameters of a block, in the order in which solution files hold them.
struct FlowParameters {
  double mach = 0;
  double alpha = 0;
  double reynolds = 0;
  double time = 0;
};

/// A flow solution in memory.
struct Restart {
  Extents extents;
  Sections sections;                            ///< of all its variables
  std::optional<TimeStep> step;                 ///< where the file holds it
  std::vector<FlowParameters> parameters;       ///< of each block, where the file holds them
  mod_p3dgrid::allocatable<float, 2> flow;      ///< (variable, point)
  mod_p3dgrid::allocatable<float, 2> triplets;  ///< (3, point), where the file holds them
  std::array<mod_p3dgrid::integer, 3> flags{};  ///< of layout 101: which variables extend the five
  Sections missing;                             ///< variables that the file skips; they are 0 here

  [[nodiscard]] mod_p3dgrid::integer variables() const { return variables_in(sections); }
};

/// Sizes the flow variables for the extents and sections that are set. Throws std::bad_alloc.
void allocate_flow(Restart& restart);

/// Sizes the triplets likewise and sets them to 0. Throws std::bad_alloc.
void allocate_triplets(Restart& restart);

/// The sections stated or, without that, what the layout usually holds. Throws a Failure where the
/// file cannot have them.
[[nodiscard]] Sections sections_of(const std::string& path, const RestartForm& form,
                                   const RestartHeader& header);

/// Reads a whole restart file in the form that has been found. Throws a Failure that names the
/// file; a form that was stated and not looked for is compared with the file, and the options that
/// would help are named.
/// @param grid  extents of the grid; needed for layouts that hold none
[[nodiscard]] Restart read_restart(const std::string& path, const Found& found,
                                   const std::optional<Extents>& grid);

/// Writes a restart file; what `path` names is complete once this returns. The solution must hold
/// what the layout asks for: step, parameters, triplets, sections that begin with the five
/// variables of a leading record.
void write_restart(const std::string& path, const RestartForm& form, const Restart& restart);

}  // namespace p3dgrid::tool
