#include "detect/verdict.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "p3dgrid/layout.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;

bool is_unformatted(const Reading& reading) {
  return reading.coding().encoding == Encoding::unformatted;
}

bool is_of(const Extents& extents, const Reading& reading) {
  return reading.extents != nullptr && *reading.extents == extents;
}

bool explains(const Reading& reading) {
  if (!reading.checked || reading.fit.whole()) return true;
  if (reading.fit.agreement == Agreement::so_far) return true;
  return only_followed(reading.fit, reading.coding().encoding);
}

/// How much speaks for a reading that explains its file: what would have to come out right by
/// chance if it were wrong.
int weight(const Reading& reading, const std::shared_ptr<const Extents>& grid) {
  if (!reading.checked) return 0;
  if (is_unformatted(reading)) return reading.own_extents ? 7 : 6;
  // The last of the flags, whose value is known, stands where the lengths put it.
  const bool flags = !reading.is_grid() && traits_of(reading.restart().layout).extensions &&
                     reading.fit.agreement != Agreement::so_far;
  if (flags) return reading.unknown_flag ? 4 : 5;
  if (!reading.own_extents) return 1;  // any length that the grid's points divide
  return grid && is_of(*grid, reading) ? 3 : 2;
}

/// Records whose markers are those of an unformatted reading with a header to go by, however the
/// file goes on; 0 for other readings.
std::int64_t proven_records(const Reading& reading) {
  return is_unformatted(reading) && reading.own_extents ? reading.fit.records : 0;
}

/// Drops readings that matching markers contradict: if the markers of a header match, readings of
/// which only the header was compared; if that of the first body record matches too, all other
/// encodings.
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

/// With a free number of variables, a wrong header can agree with the length of a file. If readings
/// without that freedom agree, only those with the same extents are kept.
void drop_chance(std::vector<Reading>& readings) {
  std::vector<Reading> bound;
  for (const Reading& reading : readings) {
    if (!reading.free_count) bound.push_back(reading);
  }
  if (bound.empty()) return;
  std::erase_if(readings, [&](const Reading& reading) {
    return reading.free_count && std::ranges::none_of(bound, [&](const Reading& other) {
             return reading.extents != nullptr && is_of(*reading.extents, other);
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

}  // namespace

Detection judge(std::vector<Reading> readings, const std::shared_ptr<const Extents>& grid) {
  drop_what_markers_disprove(readings);
  Detection verdict;
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
    return reading.own_extents && reading.extents != nullptr && reading.extents->points() == 0 &&
           reading.fit.records == 0;
  });
  keep_best(readings, nearness);
  keep_best(readings, usual_sections);
  verdict.nearest = std::move(readings);
  return verdict;
}

}  // namespace p3dgrid
