#include "p3dgrid/detect.hpp"

#include <algorithm>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// Limit on the estimated time of scanning text, in nanoseconds, to stay below two seconds.
constexpr std::int64_t most_text_work = 1'800'000'000;

bool is_supported(const Detection& found) {
  return found.proven() || std::ranges::any_of(found.nearest, [](const Reading& reading) {
           return reading.fit.records > 0;
         });
}

/// Selects the readings that agree, by their values if there are several, and describes the file
/// otherwise if none is proven. Readings with empty blocks are tried last.
/// @param readings  function of the file and `EmptyBlocks`
template <class Readings>
Detection detect(const std::string& path, const std::shared_ptr<const Extents>& grid,
                 Readings readings) {
  return with_evidence(path, [&](Evidence& file) {
    file.limit_text(most_text_work);
    Detection found = select_readings(readings(file, EmptyBlocks::refused), grid);
    if (!found.proven() && file.size() > 0) {
      std::string foreign = foreign_form(file);
      if (foreign.empty()) found = select_readings(readings(file, EmptyBlocks::accepted), grid);
      found.foreign = std::move(foreign);
      if (!is_supported(found)) found.damage = header_damage(file);
      found.beginning = beginning_of(file);
    }
    settle_by_values(file, found);
    found.size = file.size();
    found.bytes_read = file.bytes_read();
    return found;
  });
}

}  // namespace

bool Detection::proven() const {
  return std::ranges::any_of(fitting, &Reading::checked);
}

std::string describe(const Reading& reading) {
  if (reading.is_grid()) return "grid, " + describe(reading.grid());
  std::string text = describe(reading.restart());
  if (reading.restart().sections) text += ", sections " + describe(*reading.restart().sections);
  return text;
}

std::string reason_for(const Reading& reading, std::int64_t file_size) {
  if (!reading.checked) return "its header; without extents nothing else can be compared";
  const std::string records = counted(reading.records, "record");
  const std::string extents = reading.own_extents ? "its extents" : "the extents of the grid";
  std::string more = reading.fit.what.empty() ? "" : "; " + reading.fit.what;
  if (!reading.preferred.empty()) more += "; " + reading.preferred;
  switch (reading.coding().encoding) {
    case Encoding::unformatted:
      return "the markers of its " + records + " are the lengths that " + extents + " require" +
             more;
    case Encoding::binary:
      return "its " + counted(file_size, "byte") + " are what " + extents + " require" + more;
    case Encoding::formatted:
      break;
  }
  return "its values are as many as " + extents + " require, in " + records +
         " that each begin on a new line" + more;
}

Detection detect_grid(const std::string& path, const StatedGridForm& stated) {
  return detect(path, nullptr, [&](Evidence& file, EmptyBlocks empty) {
    return grid_readings(file, stated, fitted(file, grid_candidates(file, stated, empty)));
  });
}

Detection detect_restart(const std::string& path, const StatedRestartForm& stated,
                         const std::shared_ptr<const Extents>& grid) {
  return detect(path, grid, [&](Evidence& file, EmptyBlocks empty) {
    return restart_readings(file, stated, grid, empty);
  });
}

Detection detect_any(const std::string& path) {
  return detect(path, nullptr, [](Evidence& file, EmptyBlocks empty) {
    return grid_readings(
        file, {}, restart_readings(file, {}, nullptr, empty, grid_candidates(file, {}, empty)));
  });
}

Fit compare(const std::string& path, const Reading& reading) {
  return with_evidence(path, [&](Evidence& file) {
    const auto outline = file.outline(reading);
    if (!outline) return Fit{};
    auto plan = plan_of(file, reading, *outline);
    if (!plan) {
      const bool extents = outline->extents || reading.extents;
      return Fit{.agreement = Fit::Agreement::other,
                 .what = extents ? "its blocks cannot have these sections" : "holds no extents"};
    }
    Fit fit = file.fit(reading.coding(), *plan);
    if (reading.is_grid() && fit.whole() &&
        has_integers_for_coordinates(file, reading.grid(), *outline->extents, fit.end)) {
      fit.agreement = Fit::Agreement::other;
      fit.what = "the file holds integers in the place of its third coordinates";
    }
    return fit;
  });
}

std::shared_ptr<const Extents> extents_in(const std::string& path, const Reading& reading) {
  return with_evidence(path, [&](Evidence& file) {
    const auto outline = file.outline(reading);
    return outline ? outline->extents : nullptr;
  });
}

}  // namespace p3dgrid
