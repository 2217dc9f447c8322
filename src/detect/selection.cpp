#include <algorithm>
#include <cmath>
#include <tuple>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;

bool is_unformatted(const Reading& reading) {
  return reading.coding().encoding == Encoding::unformatted;
}

bool is_of(const Extents& extents, const Reading& reading) {
  return reading.extents != nullptr && *reading.extents == extents;
}

bool agrees(const Reading& reading) {
  if (!reading.checked || reading.fit.whole()) return true;
  if (reading.fit.agreement == Agreement::so_far) return true;
  // The header of a grid in three dimensions is also one of functions in two.
  const bool may_be_grid = is_planar(reading.coding()) && !reading.is_grid() &&
                           traits_of(reading.restart().layout).counted_variables;
  if (may_be_grid && reading.fit.agreement == Agreement::longer) return false;
  return only_followed(reading.fit, reading.coding().encoding);
}

/// Rank of a reading that agrees: the less likely its agreement is by chance, the higher.
int certainty(const Reading& reading, const std::shared_ptr<const Extents>& grid) {
  if (!reading.checked) return 0;
  if (is_unformatted(reading)) return reading.own_extents ? 7 : 6;
  // The last flag has a known value at a place that depends on the lengths.
  const bool flags = !reading.is_grid() && traits_of(reading.restart().layout).extensions &&
                     reading.fit.agreement != Agreement::so_far;
  if (flags) return reading.unknown_flag ? 4 : 5;
  if (!reading.own_extents) return 1;  // agrees with any multiple of the points
  return grid && is_of(*grid, reading) ? 3 : 2;
}

/// Agreeing records of an unformatted reading with extents of its own; 0 for other readings.
std::int64_t proven_records(const Reading& reading) {
  return is_unformatted(reading) && reading.own_extents ? reading.fit.records : 0;
}

/// Drops readings that matching markers contradict: if those of a header match, readings of which
/// only the header was compared; if that of the first body record matches too, other encodings.
void drop_contradicted_by_markers(std::vector<Reading>& readings) {
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
void drop_coincidences(std::vector<Reading>& readings) {
  if (std::ranges::all_of(readings, &Reading::free_count)) return;
  const std::vector<Reading> all = readings;
  std::erase_if(readings, [&](const Reading& reading) {
    return reading.free_count && std::ranges::none_of(all, [&](const Reading& other) {
             return !other.free_count && reading.extents != nullptr &&
                    is_of(*reading.extents, other);
           });
  });
}

/// A block that begins with its triplets can also be read as one of three more variables. Drops the
/// latter.
void drop_triplets_as_variables(std::vector<Reading>& readings) {
  const auto is_same_file = [](const Reading& one, const Reading& other) {
    return !one.is_grid() && !other.is_grid() && one.coding() == other.coding() &&
           one.restart().layout == other.restart().layout;
  };
  const std::vector<Reading> all = readings;
  std::erase_if(readings, [&](const Reading& reading) {
    return reading.triplets == false && std::ranges::any_of(all, [&](const Reading& other) {
             return other.triplets == true && is_same_file(reading, other);
           });
  });
}

/// Keeps the readings with the largest key.
template <class Key>
void keep_maximal(std::vector<Reading>& readings, const Key& key) {
  if (readings.empty()) return;
  auto largest = key(readings.front());
  for (const Reading& reading : readings) largest = std::max(largest, key(reading));
  std::erase_if(readings, [&](const Reading& reading) { return key(reading) < largest; });
}

bool has_usual_sections(const Reading& reading) {
  if (reading.is_grid()) return true;
  const auto& sections = reading.restart().sections;
  return !sections || (sections->size() == 1 && sections->front().last == solution_variables);
}

/// Sort key, greater for a reading that agrees further: lines of text, because a reading with
/// smaller records agrees with more of them; records of other files; three dimensions; then the
/// relative difference of the lengths.
auto agreement_key(const Reading& reading) {
  constexpr std::int64_t header = 2;  // records of block count and extents
  const Fit& fit = reading.fit;
  const std::int64_t records = fit.line > 0 ? std::min(fit.records, header) : fit.records;
  const bool cut = fit.agreement == Agreement::cut;
  const double off = fit.share > 0 ? -std::abs(std::log(fit.share)) : cut ? 0 : -INFINITY;
  return std::tuple(fit.line, records, axes_of(reading.coding()), off, cut);
}

}  // namespace

Detection select_readings(std::vector<Reading> readings,
                          const std::shared_ptr<const Extents>& grid) {
  drop_contradicted_by_markers(readings);
  Detection found;
  std::ranges::copy_if(readings, std::back_inserter(found.fitting), agrees);
  auto& fitting = found.fitting;
  keep_maximal(fitting, [&](const Reading& reading) { return certainty(reading, grid); });
  drop_coincidences(fitting);
  drop_triplets_as_variables(fitting);
  keep_maximal(fitting, [](const Reading& r) { return r.fit.agreement == Agreement::whole; });
  // A binary file in two dimensions can be as long as one plane in three.
  keep_maximal(fitting, [](const Reading& r) { return axes_of(r.coding()); });
  if (grid) keep_maximal(fitting, [&](const Reading& r) { return is_of(*grid, r); });
  if (!fitting.empty()) {
    // A reading with too few sections also has more records after it.
    const bool longer = fitting.front().fit.agreement == Agreement::longer;
    if (longer) keep_maximal(fitting, [](const Reading& r) { return r.fit.records; });
    return found;
  }
  // Any bytes can look like a header without points.
  std::erase_if(readings, [](const Reading& reading) {
    return reading.own_extents && reading.extents != nullptr && reading.extents->points() == 0 &&
           reading.fit.records == 0;
  });
  keep_maximal(readings, agreement_key);
  keep_maximal(readings, has_usual_sections);
  found.nearest = std::move(readings);
  return found;
}

}  // namespace p3dgrid
