#include "p3dgrid/check.hpp"

#include "front/extents.hpp"
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
    if (reading.extents == nullptr) {
      reading.extents =
          std::visit([&](const auto& form) { return extents_in(path, form); }, reading.form);
    }
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

std::vector<Error> check_pair(const std::string& grid, const std::string& solution,
                              const StatedGridForm& stated_grid,
                              const StatedRestartForm& stated_solution) {
  const Checked found = checked(grid, [&] { return settle_grid(grid, stated_grid); });
  return joined(found.findings, check_solution(solution, stated_solution, found.extents));
}

}  // namespace p3dgrid
