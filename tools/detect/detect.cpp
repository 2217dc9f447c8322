#include "detect/detect.hpp"

#include <algorithm>
#include <filesystem>

#include "detect/outline.hpp"
#include "detect/planar.hpp"
#include "detect/settle.hpp"
#include "grid_plan.hpp"

namespace p3dgrid {
namespace {

bool is_regular(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

bool says_all_of_coding(const auto& stated) {
  if (!stated.encoding) return false;
  return *stated.encoding == Encoding::formatted || (stated.precision && stated.byte_order);
}

bool says_all(const StatedGridForm& stated) {
  return says_all_of_coding(stated) && stated.multiblock && stated.iblank;
}

bool says_all(const StatedRestartForm& stated) {
  return says_all_of_coding(stated) && stated.layout && stated.sections &&
         (stated.multiblock || !may_hold_count(*stated.layout));
}

Coding coding_of(const auto& form) {
  return {form.encoding, form.byte_order, form.precision};
}

/// What the user has said, with the extents if the file shows them.
Found as_stated(const std::string& path, const GridForm& form) {
  Found found{.reading = {.form = form, .checked = false}, .reason = "as stated", .stated = true};
  if (!is_regular(path)) return found;
  Evidence file(path);
  if (auto outline = grid_outline(*file.header(coding_of(form)), form.multiblock)) {
    found.reading.extents = std::move(outline->extents);
  }
  found.bytes_read = file.bytes_read();
  return found;
}

Found as_stated(const std::string& path, const RestartForm& form) {
  Found found{.reading = {.form = form, .checked = false}, .reason = "as stated", .stated = true};
  if (!is_regular(path)) return found;
  Evidence file(path);
  if (auto outline = restart_outline(*file.header(coding_of(form)), form)) {
    found.reading.extents = std::move(outline->extents);
  }
  found.bytes_read = file.bytes_read();
  return found;
}

/// Blanking values stand at the end of their records, where a reader of unformatted files may leave
/// them out.
Verdict leaving_out_blanking(Evidence& file, StatedGridForm stated) {
  if (stated.encoding.value_or(Encoding::unformatted) != Encoding::unformatted) return {};
  stated.encoding = Encoding::unformatted;
  stated.iblank = true;
  Verdict verdict = judge(grid_readings(file, stated), std::nullopt);
  for (Reading& reading : verdict.fitting) {
    std::get<GridForm>(reading.form).iblank = false;
    reading.fit.agreement = Fit::Agreement::other;
    reading.fit.what = "its records end with blanking values, which --grid-iblank no leaves out";
  }
  return verdict;
}

}  // namespace

Found find_grid(const std::string& path, const StatedGridForm& stated) {
  return says_all(stated) ? as_stated(path, stated.applied_to({})) : prove_grid(path, stated);
}

Found find_restart(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  return says_all(stated) ? as_stated(path, stated.applied_to({}))
                          : prove_restart(path, stated, grid);
}

Found prove_grid(const std::string& path, const StatedGridForm& stated) {
  Evidence file(path);
  Verdict verdict = judge(grid_readings(file, stated), std::nullopt);
  if (verdict.fitting.empty() && stated.iblank == false) {
    Verdict other = leaving_out_blanking(file, stated);
    if (!other.fitting.empty()) verdict = std::move(other);
  }
  return settle(path, file, verdict, options_of(stated),
                [&] { return judge(grid_readings(file, {}), std::nullopt); });
}

Found prove_restart(const std::string& path, const StatedRestartForm& stated,
                    const std::optional<Extents>& grid) {
  Evidence file(path);
  const Verdict verdict = judge(restart_readings(file, stated, grid), grid);
  return settle(path, file, verdict, options_of(stated),
                [&] { return judge(restart_readings(file, {}, grid), grid); });
}

Found find_any(const std::string& path) {
  Evidence file(path);
  auto readings = grid_readings(file, {});
  auto restarts = restart_readings(file, {}, std::nullopt);
  std::ranges::move(restarts, std::back_inserter(readings));
  const Verdict verdict = judge(std::move(readings), std::nullopt);
  return settle(path, file, verdict, {}, [] { return Verdict(); });
}

Fit fit_of(const std::string& path, const GridForm& form, const Extents& extents) {
  if (!is_regular(path)) return {};
  Evidence file(path);
  Fit fit = file.fit(coding_of(form), plan_of(form, extents));
  if (fit.whole() && is_planar_twin(file, form, extents)) {
    fit.agreement = Fit::Agreement::other;
    fit.what = "the file holds integers in the place of its third coordinates";
  }
  return fit;
}

Fit fit_of(const std::string& path, const RestartForm& form, const RestartShape& shape) {
  if (!is_regular(path)) return {};
  Evidence file(path);
  return file.fit(coding_of(form), plan_of(form, shape));
}

std::string advice(const std::string& path, const StatedGridForm& stated) {
  if (!is_regular(path)) return "";
  Evidence file(path);
  return help_with(file, options_of(stated), judge(grid_readings(file, stated), std::nullopt),
                   [&] { return judge(grid_readings(file, {}), std::nullopt); });
}

std::string advice(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  if (!is_regular(path)) return "";
  Evidence file(path);
  return help_with(file, options_of(stated), judge(restart_readings(file, stated, grid), grid),
                   [&] { return judge(restart_readings(file, {}, grid), grid); });
}

}  // namespace p3dgrid
