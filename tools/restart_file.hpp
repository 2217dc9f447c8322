#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "find.hpp"
#include "form_options.hpp"
#include "library.hpp"

namespace p3dgrid::tool {

struct TimeStep {
  integer count = 0;
  double size = 0;
};

/// The flow parameters of a block, in file order.
struct FlowParameters {
  double mach = 0;
  double alpha = 0;
  double reynolds = 0;
  double time = 0;
  std::vector<double> others = {};  ///< of layouts with more, in file order
};

/// A flow solution in memory.
struct Restart {
  Extents extents;
  Sections sections;                       ///< of all its variables
  std::optional<TimeStep> step;            ///< where the file holds it
  std::vector<FlowParameters> parameters;  ///< of each block, where the file holds them
  allocatable<float, 2> flow;              ///< (variable, point)
  allocatable<float, 2> triplets;          ///< (3, point), where the file holds them
  std::array<integer, 3> flags{};          ///< of layout 101: which variables extend the five
  Sections missing;                        ///< variables that the file skips; they are 0 here

  [[nodiscard]] integer variables() const { return variables_in(sections); }
};

/// The blocks in a restart file's header. Its other values are the library's module variables.
struct RestartHeader {
  integer blocks = 1;
  Extents extents;                 ///< empty where the layout holds none
  std::vector<integer> functions;  ///< of each block, layout 3 only
};

/// Reads a restart file's header. Throws a Failure that names the file.
[[nodiscard]] RestartHeader read_restart_header(const std::string& path, const RestartForm& form);

/// The same; the Failure also names the options that would help.
[[nodiscard]] RestartHeader header_with_advice(const std::string& path, const RestartForm& form);

/// True if a layout-0 header as read last holds the flow parameters.
[[nodiscard]] bool talven_parameters_read();

/// Throws a Failure for a file that cannot be read more than once, such as a pipe.
void require_regular_file(const std::string& path);

/// Allocates the flow variables for the extents and sections. Throws std::bad_alloc.
void allocate_flow(Restart& restart);

/// Allocates the triplets and sets them to 0. Throws std::bad_alloc.
void allocate_triplets(Restart& restart);

/// Reads a restart file in the form that has been found, and compares a stated form with the file.
/// Throws a Failure that names the file and the options that would help.
/// @param grid  extents of the grid; needed for layouts that hold none
[[nodiscard]] Restart read_restart(const std::string& path, const Found& found,
                                   const std::optional<Extents>& grid);

/// The same, with `read_body` for the body. It is given the extents and sections.
[[nodiscard]] Restart read_restart(const std::string& path, const Found& found,
                                   const std::optional<Extents>& grid,
                                   const std::function<void(Restart&)>& read_body);

/// Writes a restart file. The solution must have what the layout requires: step, parameters,
/// triplets, sections that begin with the five variables of a leading record.
void write_restart(const std::string& path, const RestartForm& form, const Restart& restart);

}  // namespace p3dgrid::tool
