#include "detect/detect.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>

#include "detect/foreign.hpp"
#include "detect/header_damage.hpp"
#include "detect/outline.hpp"
#include "detect/verdict.hpp"
#include "failure.hpp"
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

std::string texts_of(const std::vector<FormOption>& options) {
  std::string text;
  for (const FormOption& option : options) text += (text.empty() ? "" : " ") + option.text();
  return text;
}

/// What would have to be stated otherwise for a reading to be taken.
std::vector<FormOption> corrections(const std::vector<FormOption>& stated, const Reading& reading) {
  std::vector<FormOption> options = options_of(reading);
  std::erase_if(options, [&](const FormOption& option) {
    return std::ranges::none_of(stated, [&](const FormOption& said) {
      return said.name == option.name && said.value != option.value;
    });
  });
  return options;
}

std::int64_t records_agreeing(const Verdict& verdict) {
  return verdict.nearest.empty() ? 0 : verdict.nearest.front().fit.records;
}

/// @param verdict  on what has been stated
/// @param open     on the same file with nothing stated
std::string advice_from(const std::vector<FormOption>& stated, const Verdict& verdict,
                        const Verdict& open) {
  if (stated.empty() || !verdict.fitting.empty()) return "";
  const auto corrected = [&](const char* words, const Reading& reading) {
    const std::string options = texts_of(corrections(stated, reading));
    return options.empty() ? "" : words + options;
  };
  if (open.fitting.empty()) {
    if (records_agreeing(open) <= records_agreeing(verdict)) return "";
    return corrected("it begins like that of a file read with ", open.nearest.front());
  }
  const Reading& first = open.fitting.front();
  if (!first.checked) return "";
  if (open.fitting.size() > 1) return "it can be " + named(open.fitting);
  return corrected("it is that of a file read with ", first);
}

[[noreturn]] void refuse_to_guess(const std::string& path, const Verdict& verdict) {
  const bool checked = verdict.fitting.front().checked;
  throw Failure(ExitStatus::unusable,
                path +
                    (checked ? ": can be more than one thing, say which: "
                             : ": holds no extents, and --grid GRID would tell by those of its "
                               "grid which it is: ") +
                    named(verdict.fitting));
}

/// A reading has found something in the file to agree with: all of its header at least.
bool is_supported(const Verdict& verdict) {
  const auto checked = [](const Reading& reading) { return reading.checked; };
  const auto agrees = [](const Reading& reading) { return reading.fit.records > 0; };
  return std::ranges::any_of(verdict.fitting, checked) ||
         std::ranges::any_of(verdict.nearest, agrees);
}

/// Files whose header no reading takes are often of a known form all the same, or damaged there.
void refuse_unusual(const std::string& path, Evidence& file, const Verdict& verdict) {
  const bool proven = std::ranges::any_of(verdict.fitting, &Reading::checked);
  if (proven || file.size() == 0) return;
  const std::string foreign = foreign_form(file);
  if (!foreign.empty()) throw Unreadable(path + ": " + foreign);
  const std::string damage = is_supported(verdict) ? "" : header_damage(file);
  if (!damage.empty()) throw Unreadable(path + ": " + damage);
}

/// Takes what has been found to be the only reading, or says why there is none.
/// @param open  the verdict with nothing stated, for advice
Found settle(const std::string& path, Evidence& file, const Verdict& verdict,
             const std::vector<FormOption>& stated, const std::function<Verdict()>& open) {
  if (stated.empty()) refuse_unusual(path, file, verdict);
  if (verdict.fitting.size() == 1) {
    const Reading& reading = verdict.fitting.front();
    if (!reading.unreadable.empty()) throw Unreadable(path + ": " + reading.unreadable);
    return {.reading = reading,
            .reason = reason(reading, file.size()),
            .bytes_read = file.bytes_read()};
  }
  if (verdict.fitting.size() > 1) refuse_to_guess(path, verdict);
  if (file.size() == 0) throw Unreadable(path + ": is empty");
  const std::string advice = stated.empty() ? "" : advice_from(stated, verdict, open());
  if (!advice.empty()) {
    throw Unreadable(path + ": is not what " + texts_of(stated) + " says; " + advice);
  }
  const std::string length = stated.empty() ? foreign_length(file) : "";
  const std::string other =
      length.empty() ? "" : "; its length is that of " + length + ", which cannot be read";
  const std::string what = departure(verdict.nearest);
  if (!what.empty()) throw Unreadable(path + ": " + what + other);
  throw Unreadable(path + ": its beginning is no header" +
                   (stated.empty() ? " of a grid or restart file in any form"
                                   : " of what " + texts_of(stated) + " says") +
                   ": " + beginning_of(file) + other);
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
  return file.fit(coding_of(form), plan_of(form, extents));
}

Fit fit_of(const std::string& path, const RestartForm& form, const RestartShape& shape) {
  if (!is_regular(path)) return {};
  Evidence file(path);
  return file.fit(coding_of(form), plan_of(form, shape));
}

std::string advice(const std::string& path, const StatedGridForm& stated) {
  if (!is_regular(path)) return "";
  Evidence file(path);
  return advice_from(options_of(stated), judge(grid_readings(file, stated), std::nullopt),
                     judge(grid_readings(file, {}), std::nullopt));
}

std::string advice(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  if (!is_regular(path)) return "";
  Evidence file(path);
  return advice_from(options_of(stated), judge(restart_readings(file, stated, grid), grid),
                     judge(restart_readings(file, {}, grid), grid));
}

}  // namespace p3dgrid
