#include "find.hpp"

#include <algorithm>
#include <filesystem>
#include <p3dgrid/layout.hpp>

#include "failure.hpp"
#include "wording.hpp"

namespace p3dgrid::tool {
namespace {

bool is_regular(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

std::shared_ptr<const Extents> shared(const std::optional<Extents>& extents) {
  return extents ? std::make_shared<const Extents>(*extents) : nullptr;
}

/// Runs `look` and turns a `FileError` into a Failure.
template <class Look>
auto looking(const Look& look) {
  try {
    return look();
  } catch (const FileError& error) {
    throw Failure(ExitStatus::unusable, error.what());
  }
}

/// What the user has said, with the extents if the file shows them.
template <class Form>
Found as_stated(const std::string& path, const Form& form) {
  Found found{.reading = {.form = form, .checked = false}, .reason = "as stated", .stated = true};
  if (is_regular(path)) found.reading.extents = looking([&] { return extents_in(path, form); });
  return found;
}

/// Detects one file with what the user has stated and, for advice, with nothing stated.
template <class Stated, class Detect>
class Looks {
 public:
  Looks(const std::string& path, const Stated& stated, Detect detect)
      : detection(looking([&] { return detect(stated); })),
        path_(path),
        stated_(options_of(stated)),
        detect_(std::move(detect)) {}

  /// Takes the only reading, or throws a Failure that says why there is none and what would help.
  [[nodiscard]] Found settle() const;

  /// What would help to read a file that is not what was stated, as part of a sentence.
  [[nodiscard]] std::string help() const {
    const Detection open = looking([&] { return detect_(Stated()); });
    return open.foreign.empty() ? advice_from(open) : "it " + open.foreign;
  }

  Detection detection;

 private:
  [[nodiscard]] std::string advice_from(const Detection& open) const;
  [[nodiscard]] std::string corrections(const Reading& reading) const;
  void refuse_unusual(const Detection& open) const;
  [[noreturn]] void refuse() const;

  const std::string& path_;
  std::vector<FormOption> stated_;
  Detect detect_;
};

std::string texts_of(const std::vector<FormOption>& options) {
  std::string text;
  for (const FormOption& option : options) text += (text.empty() ? "" : " ") + option.text();
  return text;
}

std::int64_t records_agreeing(const Detection& detection) {
  return detection.nearest.empty() ? 0 : detection.nearest.front().fit.records;
}

/// What would have to be stated otherwise for a reading to be taken.
template <class Stated, class Detect>
std::string Looks<Stated, Detect>::corrections(const Reading& reading) const {
  std::vector<FormOption> options = options_of(reading);
  std::erase_if(options, [&](const FormOption& option) {
    return std::ranges::none_of(stated_, [&](const FormOption& said) {
      return said.name == option.name && said.value != option.value;
    });
  });
  return texts_of(options);
}

/// @param open  the same file with nothing stated
template <class Stated, class Detect>
std::string Looks<Stated, Detect>::advice_from(const Detection& open) const {
  if (open.fitting.size() == 1 && !open.fitting.front().unreadable.empty()) {
    return "it is " + unreadable_form(open.fitting.front());
  }
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
template <class Stated, class Detect>
void Looks<Stated, Detect>::refuse_unusual(const Detection& open) const {
  for (const std::string& what : {open.foreign, open.damage}) {
    if (!what.empty()) throw Unreadable(path_ + ": " + what);
  }
}

template <class Stated, class Detect>
void Looks<Stated, Detect>::refuse() const {
  const std::string& planar = detection.planar;
  const std::string other =
      planar.empty() ? "" : "; its length is that of " + planar + ", which cannot be read";
  const std::string what = departure(detection.nearest);
  if (!what.empty()) throw Unreadable(path_ + ": " + what + other);
  throw Unreadable(path_ + ": its beginning is no header" +
                   (stated_.empty() ? " of a grid or restart file in any form"
                                    : " of what " + texts_of(stated_) + " says") +
                   ": " + detection.beginning + other);
}

[[noreturn]] void refuse_to_guess(const std::string& path, const std::vector<Reading>& fitting) {
  const bool checked = fitting.front().checked;
  throw Failure(
      ExitStatus::unusable,
      path + (checked ? ": can be more than one thing, say which by the options behind it:"
                      : ": holds no extents, and --grid GRID would tell by those of its "
                        "grid which it is:"),
      named(fitting));
}

template <class Stated, class Detect>
Found Looks<Stated, Detect>::settle() const {
  if (stated_.empty()) refuse_unusual(detection);
  if (detection.fitting.size() == 1) {
    const Reading& reading = detection.fitting.front();
    if (!reading.unreadable.empty()) throw Unreadable(path_ + ": is " + unreadable_form(reading));
    return {.reading = reading,
            .reason = reason(reading, detection.size),
            .bytes_read = detection.bytes_read};
  }
  if (detection.fitting.size() > 1) refuse_to_guess(path_, detection.fitting);
  if (detection.size == 0) throw Unreadable(path_ + ": is empty");
  if (!stated_.empty()) {
    const Detection open = looking([&] { return detect_(Stated()); });
    refuse_unusual(open);
    if (const std::string advice = advice_from(open); !advice.empty()) {
      throw Unreadable(path_ + ": is not what " + texts_of(stated_) + " says; ", advice);
    }
  }
  refuse();
}

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

auto grid_looks(const std::string& path, const StatedGridForm& stated) {
  return Looks(path, stated, [&path](const StatedGridForm& form) {
    Detection detection = detect_grid(path, form);
    if (!detection.fitting.empty() || form.iblank != false) return detection;
    Detection other = leaving_out_blanking(path, form);
    return other.fitting.empty() ? detection : other;
  });
}

auto restart_looks(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  return Looks(path, stated, [&path, extents = shared(grid)](const StatedRestartForm& form) {
    return detect_restart(path, form, extents);
  });
}

}  // namespace

Found find_grid(const std::string& path, const StatedGridForm& stated) {
  return says_all(stated) ? as_stated(path, applied_to(GridForm(), stated))
                          : prove_grid(path, stated);
}

Found find_restart(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  return says_all(stated) ? as_stated(path, applied_to(RestartForm(), stated))
                          : prove_restart(path, stated, grid);
}

Found prove_grid(const std::string& path, const StatedGridForm& stated) {
  return grid_looks(path, stated).settle();
}

Found prove_restart(const std::string& path, const StatedRestartForm& stated,
                    const std::optional<Extents>& grid) {
  return restart_looks(path, stated, grid).settle();
}

Found find_any(const std::string& path) {
  return Looks(path, StatedGridForm(), [&path](const StatedGridForm&) { return detect_any(path); })
      .settle();
}

Fit fit_of(const std::string& path, const GridForm& form) {
  if (!is_regular(path)) return {};
  return looking([&] { return compare(path, form); });
}

Fit fit_of(const std::string& path, const Reading& reading) {
  return looking([&] {
    if (reading.is_grid()) return compare(path, reading.grid());
    const RestartForm& form = reading.restart();
    const bool triplets = reads_triplets(traits_of(form.layout), form.coding);
    return compare(path, form, reading.extents, triplets);
  });
}

Fit fit_of(const std::string& path, const RestartForm& form, const Extents& extents,
           bool triplets) {
  if (!is_regular(path)) return {};
  return looking(
      [&] { return compare(path, form, std::make_shared<const Extents>(extents), triplets); });
}

std::string advice(const std::string& path, const StatedGridForm& stated) {
  return is_regular(path) ? grid_looks(path, stated).help() : "";
}

std::string advice(const std::string& path, const StatedRestartForm& stated,
                   const std::optional<Extents>& grid) {
  return is_regular(path) ? restart_looks(path, stated, grid).help() : "";
}

}  // namespace p3dgrid::tool
