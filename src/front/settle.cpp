#include "front/settle.hpp"

#include <optional>

#include "front/file.hpp"
#include "p3dgrid/detect.hpp"

namespace p3dgrid {
namespace {

/// Throws if the file is one of the other kind.
void refuse_other_kind(const std::string& path, bool grid_wanted) {
  const Detection found = detect_any(path);
  if (found.fitting.size() != 1 || !found.proven()) return;
  const Reading& reading = found.fitting.front();
  if (reading.is_grid() == grid_wanted || reading.free_count) return;
  const char* what = grid_wanted ? "is a restart (flow-solution) file, not a grid: "
                                 : "is a grid, not a restart (flow-solution) file: ";
  fail(ErrorKind::wrong_kind, path, what + describe(reading), found.fitting);
}

std::string list_of(const std::vector<Reading>& readings) {
  std::string list;
  for (const Reading& reading : readings) list += (list.empty() ? "" : "; ") + describe(reading);
  return list;
}

/// The only reading that agrees.
/// @param grid_wanted  whether a grid or a restart file is; none if either
Reading only_reading(const std::string& path, const Detection& found,
                     std::optional<bool> grid_wanted) {
  if (found.fitting.size() > 1) {
    fail(ErrorKind::ambiguous, path, "matches several forms: " + list_of(found.fitting),
         found.fitting);
  }
  if (found.fitting.size() == 1) return found.fitting.front();
  if (grid_wanted) refuse_other_kind(path, *grid_wanted);
  if (found.size == 0) fail(ErrorKind::damaged, path, "is empty");
  if (!found.foreign.empty()) fail(ErrorKind::unsupported, path, found.foreign);
  if (!found.damage.empty()) fail(ErrorKind::damaged, path, found.damage);
  if (!found.nearest.empty()) {
    const Fit& fit = found.nearest.front().fit;
    throw Error({.kind = ErrorKind::damaged,
                 .file = path,
                 .reason = fit.what + "; taken as " + list_of(found.nearest),
                 .record = fit.record,
                 .line = fit.line,
                 .offset = fit.offset,
                 .readings = found.nearest});
  }
  fail(ErrorKind::unknown, path,
       "its beginning is no header of a grid or restart file: " + found.beginning);
}

}  // namespace

bool has_triplets(const std::string& path, const Reading& reading) {
  if (reading.triplets) return *reading.triplets;
  const RestartForm& form = reading.restart();
  const LayoutTraits& layout = traits_of(form.layout);
  const bool read = reads_triplets(layout, form.coding);
  if (read == layout.triplets || reading.extents == nullptr || !is_regular(path)) return read;
  const Fit with = compare(path, {.form = form, .extents = reading.extents, .triplets = true});
  const Fit without = compare(path, {.form = form, .extents = reading.extents, .triplets = false});
  return with.whole() || (!without.whole() && with.records > without.records);
}

Reading settle_grid(const std::string& path, const StatedGridForm& stated) {
  if (is_complete(stated)) return {.form = applied_to(GridForm(), stated), .checked = false};
  return only_reading(path, detect_grid(path, stated), true);
}

Reading settle_restart(const std::string& path, const StatedRestartForm& stated,
                       const std::shared_ptr<const Extents>& grid) {
  if (is_complete(stated)) {
    return {.form = applied_to(RestartForm(), stated), .extents = grid, .checked = false};
  }
  return only_reading(path, detect_restart(path, stated, grid), false);
}

Reading settle_any(const std::string& path) {
  return only_reading(path, detect_any(path), std::nullopt);
}

Fit fit_of(const std::string& path, const Reading& reading) {
  const bool whole = reading.checked && reading.fit.agreement != Fit::Agreement::so_far;
  if (whole || !is_regular(path)) return reading.fit;
  Reading settled = reading;
  if (!reading.is_grid()) settled.triplets = has_triplets(path, reading);
  return compare(path, settled);
}

Error departure(const std::string& path, const Reading& reading, const Fit& fit) {
  return Error({.kind = ErrorKind::mismatch,
                .file = path,
                .reason = "is not " + describe(reading) + ": " + fit.what,
                .record = fit.record,
                .line = fit.line,
                .offset = fit.offset});
}

void require_agreement(const std::string& path, const Reading& reading) {
  if (reading.checked && reading.fit.whole()) return;
  const Fit fit = fit_of(path, reading);
  if (!fit.whole() && fit.agreement != Fit::Agreement::remark) throw departure(path, reading, fit);
}

}  // namespace p3dgrid
