#pragma once

#include <functional>
#include <string>

namespace p3dgrid::tool {

/// What the command line asks for: a command, or a text to show (help, version) and no command.
struct Request {
  std::function<void()> run = {};
  std::string text;
  bool quiet = false;
  bool verbose = false;
  bool no_progress = false;
};

/// Throws a Failure for a wrong command line.
[[nodiscard]] Request read_command_line(int argc, const char* const* argv);

}  // namespace p3dgrid::tool
