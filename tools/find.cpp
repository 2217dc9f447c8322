#include "find.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <p3dgrid/layout.hpp>

namespace p3dgrid::tool {
namespace {

bool is_regular(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

/// The form that the user has stated, with the extents if they are in the file.
Found as_stated(const std::string& path, Reading reading) {
  if (is_regular(path)) reading.extents = extents_in(path, reading);
  reading.checked = false;
  return {.reading = std::move(reading), .reason = "as stated", .stated = true};
}

/// The options by which a reading differs from the others of its kind; without any, its first
/// option, which tells its kind.
std::vector<FormOption> distinguishing_options(const Reading& reading,
                                               const std::vector<Reading>& readings) {
  std::vector<FormOption> options = options_of(reading);
  const FormOption first = options.front();
  std::erase_if(options, [&](const FormOption& option) {
    return std::ranges::all_of(readings, [&](const Reading& other) {
      return other.is_grid() != reading.is_grid() ||
             std::ranges::count(options_of(other), option) > 0;
    });
  });
  return options.empty() ? std::vector{first} : options;
}

/// A list of the readings, each on a new line, with the options in which it differs from the
/// others: "  layout 102, ... (--restart-precision single)".
std::string named(const std::vector<Reading>& readings) {
  std::string lines;
  for (const Reading& reading : readings) {
    lines += "\n  " + describe(reading) + " (" +
             text_of(distinguishing_options(reading, readings)) + ")";
  }
  return lines;
}

/// The first difference between the file and the readings that agree furthest, as part of a
/// sentence.
std::string departure(const std::vector<Reading>& nearest) {
  if (nearest.empty()) return "";
  std::vector<std::string> forms;
  for (const Reading& reading : nearest) {
    std::string form = describe(reading);  // the same for readings that differ in flags
    if (std::ranges::find(forms, form) == forms.end()) forms.push_back(std::move(form));
  }
  constexpr std::size_t most_named = 4;
  if (forms.size() > most_named) {
    forms.resize(most_named);
    forms.emplace_back("others");
  }
  std::string text = forms.front();
  for (std::size_t n = 1; n < forms.size(); ++n) text += "; or as " + forms[n];
  const Fit& fit = nearest.front().fit;
  return (fit.agreement == Fit::Agreement::cut ? "is cut short: " : "") + fit.what + "; taken as " +
         text;
}

std::int64_t records_agreeing(const Detection& detection) {
  return detection.nearest.empty() ? 0 : detection.nearest.front().fit.records;
}

/// The detection of one file with what the user has stated and, for advice, with nothing stated.
struct Search {
  const std::string& path;
  std::vector<FormOption> stated;
  Detection detection;
  std::function<Detection()> detect_open = {};  ///< detects it with nothing stated

  /// Takes the only reading, or throws a Failure that says why there is none and what would help.
  [[nodiscard]] Found settle() const {
    if (stated.empty()) refuse_unusual(detection);
    if (detection.fitting.size() == 1) {
      return {.reading = detection.fitting.front(),
              .reason = reason_for(detection.fitting.front(), detection.size),
              .bytes_read = detection.bytes_read};
    }
    if (detection.fitting.size() > 1) refuse_to_guess();
    if (detection.size == 0) throw Mismatch(path + ": is empty");
    if (!stated.empty()) {
      const Detection open = detect_open();
      refuse_unusual(open);
      if (const std::string advice = advice_from(open); !advice.empty()) {
        throw Mismatch(path + ": is not what " + text_of(stated) + " says; ", advice);
      }
    }
    refuse();
  }

  /// What would help to read a file that is not what was stated, as part of a sentence.
  [[nodiscard]] std::string help() const {
    const Detection open = detect_open();
    return open.foreign.empty() ? advice_from(open) : "it " + open.foreign;
  }

  /// What would have to be stated otherwise for a reading to be taken.
  std::string corrections(const Reading& reading) const {
    std::vector<FormOption> options = options_of(reading);
    std::erase_if(options, [&](const FormOption& option) {
      return std::ranges::none_of(stated, [&](const FormOption& said) {
        return said.name == option.name && said.value != option.value;
      });
    });
    return text_of(options);
  }

  /// @param open  the same file with nothing stated
  std::string advice_from(const Detection& open) const {
    if (!detection.fitting.empty()) return "";
    const auto corrected = [&](const char* words, const Reading& reading) {
      const std::string options = corrections(reading);
      return options.empty() ? "" : words + options;
    };
    if (open.fitting.empty()) {
      if (records_agreeing(open) <= records_agreeing(detection)) return "";
      return corrected("it begins like that of a file read with ", open.nearest.front());
    }
    const Reading& first = open.fitting.front();
    if (!first.checked) return "";
    if (open.fitting.size() > 1) return "it can be one of these:" + named(open.fitting);
    return corrected("it is that of a file read with ", first);
  }

  /// Throws if the file has a known form that cannot be read, or a damaged header.
  void refuse_unusual(const Detection& open) const {
    for (const std::string& what : {open.foreign, open.damage}) {
      if (!what.empty()) throw Mismatch(path + ": " + what);
    }
  }

  [[noreturn]] void refuse() const {
    const std::string what = departure(detection.nearest);
    if (!what.empty()) throw Mismatch(path + ": " + what);
    throw Mismatch(path + ": its beginning is no header" +
                   (stated.empty() ? " of a grid or restart file in any form"
                                   : " of what " + text_of(stated) + " says") +
                   ": " + detection.beginning);
  }

  [[noreturn]] void refuse_to_guess() const {
    const bool checked = detection.fitting.front().checked;
    throw Unusable(
        path + (checked ? ": matches several forms; select one with the options after it:"
                        : ": holds no extents, and --grid GRID would tell by those of its "
                          "grid which it is:"),
        named(detection.fitting));
  }
};

/// Blanking values stand at the end of their records, where a reader of unformatted files may leave
/// them out.
Detection leaving_out_blanking(const std::string& path, StatedGridForm stated) {
  if (stated.coding.encoding.value_or(Encoding::unformatted) != Encoding::unformatted) return {};
  stated.coding.encoding = Encoding::unformatted;
  stated.iblank = true;
  Detection detection = detect_grid(path, stated);
  for (Reading& reading : detection.fitting) {
    std::get<GridForm>(reading.form).iblank = false;
    reading.fit.agreement = Fit::Agreement::other;
    reading.fit.what = "its records end with blanking values, which --grid-iblank no leaves out";
  }
  return detection;
}

Detection detect_grid_or_part(const std::string& path, const StatedGridForm& form) {
  Detection detection = detect_grid(path, form);
  if (!detection.fitting.empty() || form.iblank != false) return detection;
  Detection other = leaving_out_blanking(path, form);
  return other.fitting.empty() ? detection : other;
}

Search search(const std::string& path, const StatedGridForm& stated) {
  return {path, options_of(stated), detect_grid_or_part(path, stated),
          [&path] { return detect_grid_or_part(path, {}); }};
}

Search search(const std::string& path, const StatedRestartForm& stated,
              const std::shared_ptr<const Extents>& grid) {
  return {path, options_of(stated), detect_restart(path, stated, grid),
          [&path, grid] { return detect_restart(path, {}, grid); }};
}

}  // namespace

Found find_grid(const std::string& path, const StatedGridForm& stated, Look look) {
  const bool known = look == Look::where_needed && is_complete(stated);
  return known ? as_stated(path, {.form = applied_to(GridForm(), stated)})
               : search(path, stated).settle();
}

Found find_restart(const std::string& path, const StatedRestartForm& stated,
                   const std::shared_ptr<const Extents>& grid, Look look) {
  const Coding coding = applied_to(Coding(), stated.coding);
  if (stated.layout && !has_files_of(traits_of(*stated.layout), coding)) {
    throw Unusable(
        path + ": cannot be what " + text_of(options_of(stated)) + " says; " +
        (is_planar(coding) ? no_planar_files : no_files_of(traits_of(*stated.layout), coding)));
  }
  const bool known = look == Look::where_needed && is_complete(stated);
  Found found = known ? as_stated(path, {.form = applied_to(RestartForm(), stated)})
                      : search(path, stated, grid).settle();
  found.grid_extents = grid;
  return found;
}

Found find_any(const std::string& path) {
  return Search{path, {}, detect_any(path)}.settle();
}

Fit fit_of(const std::string& path, const Reading& reading) {
  return is_regular(path) ? compare(path, reading) : Fit{};
}

std::string advice(const std::string& path, const Found& found) {
  if (!is_regular(path)) return "";
  return found.reading.is_grid()
             ? search(path, stated_as(found.grid())).help()
             : search(path, stated_as(found.restart()), found.grid_extents).help();
}

}  // namespace p3dgrid::tool
