#pragma once

#include <optional>
#include <p3dgrid/index_range.hpp>
#include <string>
#include <vector>

#include "command.hpp"
#include "form_options.hpp"
#include "restart_conversion.hpp"

namespace p3dgrid::tool {

/// Adds options that describe the grid file to be read. Members without an option are left open.
/// The first option given is that in the order of the help.
void add_grid_options(Command& command, StatedForms& stated);

/// The same for a grid file and a restart file.
void add_input_options(Command& command, StatedForms& stated);

/// Adds the option that names the grid of a restart file.
void add_grid_of_restart(Command& command, std::string& path);

/// Adds options that describe the coding of a file to be written in the dimensions of the file
/// read.
void add_target_options(Command& command, StatedCoding& change);

/// Adds options that describe the grid file to be written.
void add_target_options(Command& command, StatedGridForm& change);

/// Adds options that describe the restart file to be written, and header values that go into it.
void add_target_options(Command& command, StatedRestartForm& change, HeaderValues& values);

/// Options of commands that write parts of grids and, optionally, the same parts of their
/// solutions.
struct PartOptions {
  std::vector<std::string> grids;      ///< paths of those read, then of the one written
  std::vector<std::string> solutions;  ///< the same for `--restart`; empty without
  StatedForms stated;                  ///< of the files read
  StatedGridForm change;               ///< of both files written, except for the layout
  std::optional<Layout> layout;        ///< of the restart file written

  [[nodiscard]] bool has_solution() const { return !solutions.empty(); }
  /// The solution written; empty for none. Throws a Failure if its name belongs to a format that is
  /// not written.
  [[nodiscard]] std::string solution_output() const;
};

/// The arguments GRID and OUT.
/// @param meaning  of OUT
[[nodiscard]] std::vector<Argument> grid_and_output(
    PartOptions& options, const std::string& meaning = "Grid file to write");

/// Adds the options that describe the files read and written, and the option `--restart`.
/// @param values  of `--restart`
void add_part_options(Command& command, PartOptions& options, int values = 2);

/// A finite number; none for any other text.
[[nodiscard]] std::optional<double> real_in(const std::string& text);

/// The entries of a list with commas between them.
[[nodiscard]] std::vector<std::string> entries_in(const std::string& text);

/// The reason why the text is no list of blocks, counted from 1, such as "1,3-5"; empty if it is
/// one.
[[nodiscard]] std::string wrong_block_list(const std::string& text);

/// The blocks of a list, counted from 0, in its order; all for an empty text. Throws a Failure if
/// the file has fewer.
/// @param path   of the file
/// @param count  its number of blocks
[[nodiscard]] std::vector<std::int32_t> blocks_in(const std::string& text, const std::string& path,
                                                  std::int32_t count);

/// Makes an option set `target` to what `parse` returns, which is none for an invalid text.
template <class Parsed, class Parse>
[[nodiscard]] Option parsed(Option option, Parsed& target, Parse parse,
                            const std::string& complaint) {
  option.target = [&target, parse](const std::string& text) { target = *parse(text); };
  option.check = checked(complaint, parse);
  return option;
}

/// A plane on which one coordinate is constant.
struct CoordinatePlane {
  std::size_t axis = 0;  ///< 0 for x, 1 for y, 2 for z
  double value = 0;
};

/// Parses a plane such as "x=0.5"; none for any other text.
[[nodiscard]] std::optional<CoordinatePlane> coordinate_plane_in(const std::string& text);

/// The points of a block at which one index is constant.
struct IndexPlane {
  Direction direction = Direction::k;
  std::int32_t index = 0;  ///< from 0; `Indices::all_points` for the last
};

/// Parses a plane such as "k=1" or "k=last"; none for any other text.
[[nodiscard]] std::optional<IndexPlane> index_plane_in(const std::string& text);

/// The text that `index_plane_in` parses.
[[nodiscard]] std::string describe(const IndexPlane& plane);

/// The option that states the ratio of specific heats, which is for `purpose`.
[[nodiscard]] Option gamma_option(double& gamma, const std::string& purpose);

}  // namespace p3dgrid::tool
