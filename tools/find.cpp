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
template <class Form>
Found as_stated(const std::string& path, const Form& form) {
  Found found{.reading = {.form = form, .checked = false}, .reason = "as stated", .stated = true};
  if (is_regular(path)) found.reading.extents = extents_in(path, form);
  return found;
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
class Search {
 public:
  /// @param detect_open  detects it with nothing stated
  Search(const std::string& path, std::vector<FormOption> stated, Detection detection,
         std::function<Detection()> detect_open)
      : detection_(std::move(detection)),
        path_(path),
        stated_(std::move(stated)),
        detect_open_(std::move(detect_open)) {}

  /// Takes the only reading, or throws a Failure that says why there is none and what would help.
  [[nodiscard]] Found settle() const {
    if (stated_.empty()) refuse_unusual(detection_);
    if (detection_.fitting.size() == 1) {
      return {.reading = detection_.fitting.front(),
              .reason = reason_for(detection_.fitting.front(), detection_.size),
              .bytes_read = detection_.bytes_read};
    }
    if (detection_.fitting.size() > 1) refuse_to_guess();
    if (detection_.size == 0) throw Mismatch(path_ + ": is empty");
    if (!stated_.empty()) {
      const Detection open = detect_open_();
      refuse_unusual(open);
      if (const std::string advice = advice_from(open); !advice.empty()) {
        throw Mismatch(path_ + ": is not what " + text_of(stated_) + " says; ", advice);
      }
    }
    refuse();
  }

  /// What would help to read a file that is not what was stated, as part of a sentence.
  [[nodiscard]] std::string help() const {
    const Detection open = detect_open_();
    return open.foreign.empty() ? advice_from(open) : "it " + open.foreign;
  }

 private:
  /// What would have to be stated otherwise for a reading to be taken.
  std::string corrections(const Reading& reading) const {
    std::vector<FormOption> options = options_of(reading);
    std::erase_if(options, [&](const FormOption& option) {
      return std::ranges::none_of(stated_, [&](const FormOption& said) {
        return said.name == option.name && said.value != option.value;
      });
    });
    return text_of(options);
  }

  /// @param open  the same file with nothing stated
  std::string advice_from(const Detection& open) const {
    if (!detection_.fitting.empty()) return "";
    const auto corrected = [&](const char* words, const Reading& reading) {
      const std::string options = corrections(reading);
      return options.empty() ? "" : words + options;
    };
    if (open.fitting.empty()) {
      if (records_agreeing(open) <= records_agreeing(detection_)) return "";
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
      if (!what.empty()) throw Mismatch(path_ + ": " + what);
    }
  }

  [[noreturn]] void refuse() const {
    const std::string what = departure(detection_.nearest);
    if (!what.empty()) throw Mismatch(path_ + ": " + what);
    throw Mismatch(path_ + ": its beginning is no header" +
                   (stated_.empty() ? " of a grid or restart file in any form"
                                    : " of what " + text_of(stated_) + " says") +
                   ": " + detection_.beginning);
  }

  [[noreturn]] void refuse_to_guess() const {
    const bool checked = detection_.fitting.front().checked;
    throw Unusable(
        path_ + (checked ? ": matches several forms; select one with the options after it:"
                         : ": holds no extents, and --grid GRID would tell by those of its "
                           "grid which it is:"),
        named(detection_.fitting));
  }

  Detection detection_;
  const std::string& path_;
  std::vector<FormOption> stated_;
  std::function<Detection()> detect_open_;
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
              const std::optional<Extents>& grid) {
  const auto extents = grid ? std::make_shared<const Extents>(*grid) : nullptr;
  const auto detect = [&path, extents](const StatedRestartForm& form) {
    return detect_restart(path, form, extents);
  };
  return {path, options_of(stated), detect(stated), [detect] { return detect({}); }};
}

}  // namespace

Found find_grid(const std::string& path, const StatedGridForm& stated, Look look) {
  const bool known = look == Look::where_needed && is_complete(stated);
  return known ? as_stated(path, applied_to(GridForm(), stated)) : search(path, stated).settle();
}

Found find_restart(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid, Look look) {
  const Coding coding = applied_to(Coding(), stated.coding);
  if (stated.layout && !has_files_of(traits_of(*stated.layout), coding)) {
    throw Unusable(
        path + ": cannot be what " + text_of(options_of(stated)) + " says; " +
        (is_planar(coding) ? no_planar_files : no_files_of(traits_of(*stated.layout), coding)));
  }
  const bool known = look == Look::where_needed && is_complete(stated);
  return known ? as_stated(path, applied_to(RestartForm(), stated))
               : search(path, stated, grid).settle();
}

Found find_any(const std::string& path) {
  return Search(path, {}, detect_any(path), {}).settle();
}

Fit fit_of(const std::string& path, const Reading& reading) {
  if (!is_regular(path)) return {};
  if (reading.is_grid()) return compare(path, reading.grid());
  return compare(path, reading.restart(), reading.extents, reading.triplets.value_or(false));
}

std::string advice(const std::string& path, const Reading& reading,
                   const std::optional<Extents>& grid) {
  if (!is_regular(path)) return "";
  return reading.is_grid() ? search(path, stated_as(reading.grid())).help()
                           : search(path, stated_as(reading.restart()), grid).help();
}

}  // namespace p3dgrid::tool
