#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace p3dgrid::tool {

/// A command of the program: its place on the command line, and the work to do once the line has
/// been read. The work throws a Failure when it cannot be done.
struct Command {
  CLI::App* line = nullptr;
  std::function<void()> run;
};

/// Each adds its command, options and examples included.
[[nodiscard]] Command add_sample(CLI::App& program);
[[nodiscard]] Command add_info(CLI::App& program);
[[nodiscard]] Command add_convert(CLI::App& program);
[[nodiscard]] Command add_check(CLI::App& program);
[[nodiscard]] Command add_restart(CLI::App& program);
[[nodiscard]] Command add_tecplot(CLI::App& program);
[[nodiscard]] Command add_plot(CLI::App& program);

}  // namespace p3dgrid::tool
