#pragma once

#include <optional>
#include <p3dgrid/solution.hpp>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// Header values stated by the user.
struct HeaderValues {
  std::optional<double> mach;
  std::optional<double> alpha;
  std::optional<double> reynolds;
  std::optional<double> time;
  std::optional<std::int32_t> step;
  std::optional<double> step_size;
};

/// Why the solution cannot be written in that form, as part of a sentence; empty if it can.
[[nodiscard]] std::string obstacle(const SolutionHeader& read, const RestartForm& written);

/// Why no file of that form can be written with the stated values; empty if one can.
[[nodiscard]] std::string obstacle(const HeaderValues& values, const RestartForm& written);

/// A solution that is written in another form.
struct Conversion {
  const SolutionHeader& read;
  SolutionHeader written;
  HeaderValues values;  ///< stated for it

  /// The flow parameters of a block of the file written.
  /// @param read_parameters  those of the file read
  [[nodiscard]] std::vector<double> parameters(const std::vector<double>& read_parameters) const;

  /// What the user should know of the file written, as the rest of a sentence.
  [[nodiscard]] std::vector<std::string> notes() const;
};

/// Prepares a conversion: sets the stated header values and sections that the layout can hold.
[[nodiscard]] Conversion conversion_of(const SolutionHeader& read, const StatedRestartForm& change,
                                       const HeaderValues& values);

}  // namespace p3dgrid::tool
