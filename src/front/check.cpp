#include "p3dgrid/check.hpp"

#include <optional>

#include "front/extents.hpp"
#include "front/settle.hpp"
#include "p3dgrid/detect.hpp"

namespace p3dgrid {
namespace {

using Findings = std::vector<Error>;

bool is_finding(ErrorKind kind) {
  return kind != ErrorKind::system && kind != ErrorKind::ambiguous && kind != ErrorKind::argument;
}

/// The reading that `settle` returns, with its extents. The whole file is compared with it.
template <class Settle>
std::optional<Reading> checked(Findings& findings, const std::string& path, Settle settle) {
  try {
    Reading reading = settle();
    if (reading.extents == nullptr) {
      reading.extents =
          std::visit([&](const auto& form) { return extents_in(path, form); }, reading.form);
    }
    const Fit fit = fit_of(path, reading);
    if (!fit.whole()) findings.push_back(departure(path, reading, fit));
    return reading;
  } catch (const Error& error) {
    if (!is_finding(error.kind())) throw;
    findings.push_back(error);
    return std::nullopt;
  }
}

}  // namespace

std::vector<Error> check(const std::string& path) {
  Findings findings;
  static_cast<void>(checked(findings, path, [&] { return settle_any(path); }));
  return findings;
}

std::vector<Error> check_grid(const std::string& path, const StatedGridForm& stated) {
  Findings findings;
  static_cast<void>(checked(findings, path, [&] { return settle_grid(path, stated); }));
  return findings;
}

std::vector<Error> check_solution(const std::string& path, const StatedRestartForm& stated,
                                  const std::shared_ptr<const Extents>& grid) {
  Findings findings;
  const auto found = checked(findings, path, [&] { return settle_restart(path, stated, grid); });
  if (grid == nullptr || !found || found->extents == nullptr) return findings;
  const Findings differences = differing_blocks(path, *found->extents, *grid);
  findings.insert(findings.end(), differences.begin(), differences.end());
  return findings;
}

std::vector<Error> differing_blocks(const std::string& path, const Extents& own,
                                    const Extents& grid, const std::string& grid_name) {
  std::vector<Error> differences;
  const auto add = [&](const std::string& reason, std::string found, std::string expected) {
    differences.push_back(Error({.kind = ErrorKind::mismatch,
                                 .file = path,
                                 .reason = "does not belong to " + grid_name + ": " + reason,
                                 .found = std::move(found),
                                 .expected = std::move(expected)}));
  };
  if (own.blocks() != grid.blocks()) {
    const std::string held =
        std::to_string(own.blocks()) + (own.blocks() == 1 ? " block" : " blocks");
    const std::string wanted = std::to_string(grid.blocks());
    add("it holds " + held + ", the grid " + wanted, held, wanted + " blocks");
    return differences;
  }
  for (std::size_t b = 0; b < own.i.size(); ++b) {
    if (own.of(b) == grid.of(b)) continue;
    add("its block " + std::to_string(b + 1) + " is " + own.text_of(b) + ", the grid's " +
            grid.text_of(b),
        own.text_of(b), grid.text_of(b));
  }
  return differences;
}

std::vector<Error> check_pair(const std::string& grid, const std::string& solution,
                              const StatedGridForm& stated_grid,
                              const StatedRestartForm& stated_solution) {
  Findings findings;
  const auto of_grid = checked(findings, grid, [&] { return settle_grid(grid, stated_grid); });
  const auto extents = of_grid ? of_grid->extents : nullptr;
  const Findings of_solution = check_solution(solution, stated_solution, extents);
  findings.insert(findings.end(), of_solution.begin(), of_solution.end());
  return findings;
}

}  // namespace p3dgrid
