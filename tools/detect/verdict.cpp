#include "detect/verdict.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "table.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;

constexpr std::size_t most_named = 4;

Encoding encoding_of(const Reading& reading) {
  return std::visit([](const auto& form) { return form.encoding; }, reading.form);
}

bool is_unformatted(const Reading& reading) {
  return encoding_of(reading) == Encoding::unformatted;
}

bool is_of(const Extents& extents, const Reading& reading) {
  return reading.extents.i == extents.i && reading.extents.j == extents.j &&
         reading.extents.k == extents.k;
}

bool explains(const Reading& reading) {
  if (!reading.checked || reading.fit.whole()) return true;
  return only_followed(reading.fit, encoding_of(reading));
}

/// How much speaks for a reading that explains its file: what would have to come out right by
/// chance if it were wrong.
int weight(const Reading& reading, const std::optional<Extents>& grid) {
  if (!reading.checked) return 0;
  if (is_unformatted(reading)) return reading.own_extents ? 7 : 6;
  // The last of the flags, whose value is known, stands where the lengths put it.
  const bool flags = !reading.is_grid() && reading.restart().layout == Layout::single_block;
  if (flags) return reading.unknown_flag ? 4 : 5;
  if (!reading.own_extents) return 1;  // any length that the grid's points divide
  return grid && is_of(*grid, reading) ? 3 : 2;
}

/// Records whose markers are those of an unformatted reading with a header to go by, however the
/// file goes on; 0 for other readings.
std::int64_t proven_records(const Reading& reading) {
  return is_unformatted(reading) && reading.own_extents ? reading.fit.records : 0;
}

/// Markers that agree with a header outweigh what without them comes out even, or has nothing to
/// agree with: those of the header and the one behind it against other encodings.
void drop_what_markers_disprove(std::vector<Reading>& readings) {
  const bool header = std::ranges::any_of(
      readings, [](const Reading& reading) { return proven_records(reading) >= 2; });
  const bool body = std::ranges::any_of(readings, [](const Reading& reading) {
    const bool count = std::visit([](const auto& form) { return form.multiblock; }, reading.form);
    return proven_records(reading) >= (count ? 3 : 2);
  });
  std::erase_if(readings, [&](const Reading& reading) {
    return (header && !reading.checked) || (body && !is_unformatted(reading));
  });
}

/// A length that is divided into variables can come out even by chance, by what is no header at
/// all. Of such readings only those stay that take the header as a reading does which had no number
/// to choose.
void drop_chance(std::vector<Reading>& readings) {
  std::vector<Reading> bound;
  for (const Reading& reading : readings) {
    if (!reading.free_count) bound.push_back(reading);
  }
  if (bound.empty()) return;
  std::erase_if(readings, [&](const Reading& reading) {
    return reading.free_count && std::ranges::none_of(bound, [&](const Reading& other) {
             return is_of(other.extents, reading);
           });
  });
}

/// Keeps what is best of the readings, by a measure that is larger for better ones.
template <class Measure>
void keep_best(std::vector<Reading>& readings, const Measure& measure) {
  if (readings.empty()) return;
  auto best = measure(readings.front());
  for (const Reading& reading : readings) best = std::max(best, measure(reading));
  std::erase_if(readings, [&](const Reading& reading) { return measure(reading) < best; });
}

bool usual_sections(const Reading& reading) {
  if (reading.is_grid()) return true;
  const auto& sections = reading.restart().sections;
  return !sections || (sections->size() == 1 && sections->front().last == solution_variables);
}

/// How far a reading agrees with a file that it does not explain: in text up to a line, since
/// readings with more records would seem to go further, else by its records. Of those that come to
/// the same place the one goes first whose lengths are off by the least, and of binary files
/// nothing else is known.
auto nearness(const Reading& reading) {
  constexpr std::int64_t header = 2;  // records of block count and extents
  const Fit& fit = reading.fit;
  const std::int64_t records = fit.line > 0 ? std::min(fit.records, header) : fit.records;
  const bool cut = fit.agreement == Agreement::cut;
  const double off = fit.share > 0 ? -std::abs(std::log(fit.share)) : cut ? 0 : -INFINITY;
  return std::tuple(fit.line, records, off, cut);
}

std::string joined(const std::vector<std::string>& parts, const char* between) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : between).append(part);
  return text;
}

/// Options of a reading that not all of its kind share; where it is alone of its kind, the first of
/// its options tells that.
std::vector<FormOption> telling_options(const Reading& reading,
                                        const std::vector<Reading>& readings) {
  const std::vector<FormOption> all = options_of(reading);
  const auto is_told = [&](const Reading& other, const FormOption& option) {
    const auto options = options_of(other);
    return other.is_grid() == reading.is_grid() &&
           std::ranges::none_of(options, [&](const FormOption& of_other) {
             return of_other.text() == option.text();
           });
  };
  std::vector<FormOption> telling;
  for (const FormOption& option : all) {
    const bool tells =
        std::ranges::any_of(readings, [&](const Reading& other) { return is_told(other, option); });
    if (tells) telling.push_back(option);
  }
  if (telling.empty()) telling.push_back(all.front());
  return telling;
}

}  // namespace

Verdict judge(std::vector<Reading> readings, const std::optional<Extents>& grid) {
  drop_what_markers_disprove(readings);
  Verdict verdict;
  std::ranges::copy_if(readings, std::back_inserter(verdict.fitting), explains);
  auto& fitting = verdict.fitting;
  keep_best(fitting, [&](const Reading& reading) { return weight(reading, grid); });
  drop_chance(fitting);
  keep_best(fitting, [](const Reading& r) { return r.fit.agreement == Agreement::whole; });
  if (grid) keep_best(fitting, [&](const Reading& r) { return is_of(*grid, r); });
  if (!fitting.empty()) {
    // More may follow behind fewer sections than the file has.
    const bool longer = fitting.front().fit.agreement == Agreement::longer;
    if (longer) keep_best(fitting, [](const Reading& r) { return r.fit.records; });
    return verdict;
  }
  // What is no header can be taken for one of no points, and then says nothing.
  std::erase_if(readings, [](const Reading& reading) {
    return reading.own_extents && reading.extents.points() == 0 && reading.fit.records == 0;
  });
  keep_best(readings, nearness);
  keep_best(readings, usual_sections);
  verdict.nearest = std::move(readings);
  return verdict;
}

std::string named(const std::vector<Reading>& readings) {
  std::string lines;
  for (const Reading& reading : readings) {
    std::vector<std::string> options;
    for (const FormOption& option : telling_options(reading, readings)) {
      options.push_back(option.text());
    }
    std::string text = "\n  " + describe(reading) + " (" + joined(options, " ") + ")";
    if (!reading.unreadable.empty()) text += ", which " + reading.unreadable;
    lines += text;
  }
  return lines;
}

std::string unreadable_form(const Reading& reading) {
  return (reading.is_grid() ? "a " : "") + describe(reading) + ", which " + reading.unreadable;
}

std::string departure(const std::vector<Reading>& nearest) {
  if (nearest.empty()) return "";
  std::vector<std::string> forms;
  for (const Reading& reading : nearest) {
    std::string form = describe(reading);  // that does not tell flags apart
    if (std::ranges::find(forms, form) == forms.end()) forms.push_back(std::move(form));
  }
  if (forms.size() > most_named) {
    forms.resize(most_named);
    forms.emplace_back("others");
  }
  const Fit& fit = nearest.front().fit;
  return (fit.agreement == Agreement::cut ? "is cut short: " : "") + fit.what + "; taken as " +
         joined(forms, "; or as ");
}

std::string reason(const Reading& reading, std::uint64_t file_size) {
  if (!reading.checked) return "its header; without extents nothing else can be compared";
  const std::string records = counted(static_cast<std::int64_t>(reading.records), "record");
  const std::string extents = reading.own_extents ? "its extents" : "the extents of the grid";
  const std::string more = reading.fit.what.empty() ? "" : "; " + reading.fit.what;
  switch (encoding_of(reading)) {
    case Encoding::unformatted:
      return "the markers of its " + records + " are the lengths that " + extents + " ask for" +
             more;
    case Encoding::binary:
      return "its " + counted(static_cast<std::int64_t>(file_size), "byte") + " are what " +
             extents + " ask for" + more;
    case Encoding::formatted:
      break;
  }
  return "its values are as many as " + extents + " ask for, in " + records +
         " that each begin on a new line";
}

}  // namespace p3dgrid
