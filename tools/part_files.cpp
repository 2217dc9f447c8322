#include "part_files.hpp"

#include <utility>

#include "console.hpp"
#include "failure.hpp"
#include "table.hpp"

namespace p3dgrid::tool {

std::deque<CaseInput> open_cases(const PartOptions& options, const std::vector<std::string>& grids,
                                 const Usage& usage) {
  std::deque<CaseInput> inputs;
  if (options.has_solution() && options.solutions.size() != grids.size() + 1) {
    throw Unusable("--restart names " +
                   counted(static_cast<std::int64_t>(options.solutions.size()) - 1, "solution") +
                   " and the file to write, and there are " + counted(std::ssize(grids), "grid"));
  }
  // What takes a solution that is given in place of a grid.
  const std::string restart = grids.size() == 1 ? grids.front() : "RESTART";
  const std::string meant = "'" + usage.pair("GRID", restart) + "' takes it";
  for (std::size_t n = 0; n < grids.size(); ++n) {
    if (options.has_solution()) {
      inputs.emplace_back(grids[n], options.grid, options.solutions[n], options.restart, usage);
    } else {
      inputs.emplace_back(grids[n], options.grid, meant);
    }
  }
  return inputs;
}

PartOutput::PartOutput(const PartOptions& options, const std::vector<std::string>& grids,
                       std::string grid, std::string solution)
    : options_(options) {
  std::vector<std::string> read = grids;
  if (options.has_solution()) {
    read.insert(read.end(), options.solutions.begin(), options.solutions.end() - 1);
    if (solution == grid) throw Unusable(grid + ": cannot be both the grid and its solution");
    solution_.emplace(std::move(solution), read);
  }
  grid_.emplace(std::move(grid), read);
}

void PartOutput::write(const Parts& parts) {
  grid_->summary = write_grid(grid_->output, grid_->path, parts, options_.change);
  if (!solution_) return;
  solution_->summary =
      write_restart(solution_->output, solution_->path, parts, options_.restart_change(), {});
}

void PartOutput::commit() {
  for (std::optional<File>* const file : {&grid_, &solution_}) {
    if (!*file) continue;
    (*file)->output.commit();
    print_summary((*file)->summary);
  }
}

}  // namespace p3dgrid::tool
