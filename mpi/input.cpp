#include "input.hpp"

#include "tools/failure.hpp"
#include "tools/gzip.hpp"
#include "tools/options.hpp"

namespace p3dgrid::tool {
namespace {

constexpr Usage usage = {.command_line = "p3dgrid-mpi info RESTART --grid GRID",
                         .grid_alone = "'p3dgrid-mpi info GRID' shows it"};

void take_header(Input& input, GridInput file) {
  input.extents = file.extents();
  input.index = file.index();
  file.require_form();
}

void take_header(Input& input, RestartInput file) {
  input.header = file.header();
  input.extents = input.header.extents;
  input.index = file.index();
  for (std::size_t b = 0; b < input.index.size(); ++b) {
    input.parameters.push_back(file.parameters(b));
  }
  file.require_form();
}

}  // namespace

void add_input_options(Command& command, InputOptions& options) {
  add_input_options(command, options.stated);
  add_grid_of_restart(command, options.grid_path);
}

Input open_input(const InputOptions& options) {
  const std::string& path = options.path;
  if (original_path(path) != path) {
    throw Unusable(original_path(path) + ": is compressed, and its values have no fixed places");
  }
  Input input{.path = path, .found = {}};
  if (!options.grid_path.empty()) {
    const CaseInput both(options.grid_path, path, options.stated, usage);
    input.found = both.found_restart();
  } else {
    input.found = find_file(path, options.stated);
  }
  if (input.found.reading.is_grid()) {
    take_header(input, GridInput(path, input.found));
  } else {
    require_regular_file(path);
    take_header(input, RestartInput(path, input.found));
  }
  return input;
}

}  // namespace p3dgrid::tool
