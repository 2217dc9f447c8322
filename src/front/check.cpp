#include "p3dgrid/check.hpp"

#include "format/mismatch_report.hpp"
#include "front/settle.hpp"
#include "p3dgrid/detect.hpp"

namespace p3dgrid {
namespace {

using Findings = std::vector<Error>;

bool is_finding(ErrorKind kind) {
  return kind != ErrorKind::system && kind != ErrorKind::ambiguous && kind != ErrorKind::argument;
}

struct Checked {
  Findings findings;
  std::shared_ptr<const Extents> extents;  ///< of the file; null if unknown
};

/// Compares the whole file with the reading that `settle` returns.
template <class Settle>
Checked checked(const std::string& path, Settle settle) {
  try {
    Reading reading = settle();
    if (reading.extents == nullptr) reading.extents = extents_in(path, reading);
    const Fit fit = fit_of(path, reading);
    Checked found{.findings = {}, .extents = reading.extents};
    if (!fit.whole()) found.findings.push_back(departure(path, reading, fit));
    return found;
  } catch (const Error& error) {
    if (!is_finding(error.kind())) throw;
    return {.findings = {error}, .extents = nullptr};
  }
}

Findings joined(Findings findings, const Findings& more) {
  findings.insert(findings.end(), more.begin(), more.end());
  return findings;
}

}  // namespace

std::vector<Error> check(const std::string& path) {
  return checked(path, [&] { return settle_any(path); }).findings;
}

std::vector<Error> check_grid(const std::string& path, const StatedGridForm& stated) {
  return checked(path, [&] { return settle_grid(path, stated); }).findings;
}

std::vector<Error> check_solution(const std::string& path, const StatedRestartForm& stated,
                                  const std::shared_ptr<const Extents>& grid) {
  const Checked found = checked(path, [&] { return settle_restart(path, stated, grid); });
  if (grid == nullptr || found.extents == nullptr) return found.findings;
  return joined(found.findings, differing_blocks(path, *found.extents, *grid));
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
    const auto counted = [](std::int32_t blocks) {
      return std::to_string(blocks) + (blocks == 1 ? " block" : " blocks");
    };
    add("it holds " + counted(own.blocks()) + ", the grid " + std::to_string(grid.blocks()),
        counted(own.blocks()), counted(grid.blocks()));
    return differences;
  }
  for (std::size_t b = 0; b < own.i.size(); ++b) {
    if (own.of(b) == grid.of(b)) continue;
    add("its block " + std::to_string(b + 1) + " is " + own.of(b).text() + ", the grid's " +
            grid.of(b).text(),
        own.of(b).text(), grid.of(b).text());
  }
  return differences;
}

std::vector<std::string> mismatch_report(const Extents& grid, const Extents& solution) {
  std::vector<std::string> report;
  const auto add = [&](const std::vector<std::string>& lines) {
    report.insert(report.end(), lines.begin(), lines.end());
  };
  const bool comparable = grid.blocks() == solution.blocks();
  if (!comparable) add(report_of_counts(grid.blocks(), solution.blocks()));
  for (std::int32_t b = 0; comparable && b < grid.blocks(); ++b) {
    const auto block = static_cast<std::size_t>(b);
    if (grid.of(block) == solution.of(block)) continue;
    add(report_of_block(b + 1, grid.of(block), solution.of(block)));
  }
  add(end_of_report());
  return report;
}

std::vector<Error> check_pair(const std::string& grid, const std::string& solution,
                              const StatedGridForm& stated_grid,
                              const StatedRestartForm& stated_solution) {
  const Checked found = checked(grid, [&] { return settle_grid(grid, stated_grid); });
  return joined(found.findings, check_solution(solution, stated_solution, found.extents));
}

}  // namespace p3dgrid
