#include "p3dgrid/detect.hpp"

#include <algorithm>

#include "detect/candidates.hpp"
#include "detect/foreign.hpp"
#include "detect/header_damage.hpp"
#include "detect/planar.hpp"
#include "detect/section_search.hpp"
#include "detect/verdict.hpp"

namespace p3dgrid {
namespace {

/// Work on text that takes less than two seconds.
constexpr std::int64_t most_text = 1'800'000'000;

/// Whether at least one record of some reading agrees with the file.
bool is_supported(const Detection& found) {
  return found.proven() || std::ranges::any_of(found.nearest, [](const Reading& reading) {
           return reading.fit.records > 0;
         });
}

/// Selects the readings that agree, and describes the file otherwise if none is proven. Readings
/// with empty blocks are tried last.
/// @param readings  takes `EmptyBlocks`
template <class Readings>
Detection detect(Evidence& file, const std::shared_ptr<const Extents>& grid, Readings readings) {
  file.limit_text(most_text);
  Detection found = judge(readings(EmptyBlocks::refused), grid);
  if (!found.proven() && file.size() > 0) {
    std::string foreign = foreign_form(file);
    if (foreign.empty()) found = judge(readings(EmptyBlocks::taken), grid);
    found.foreign = std::move(foreign);
    if (!is_supported(found)) found.damage = header_damage(file);
    found.beginning = beginning_of(file);
    found.planar = foreign_length(file);
  }
  found.size = file.size();
  found.bytes_read = file.bytes_read();
  return found;
}

}  // namespace

bool Detection::proven() const {
  return std::ranges::any_of(fitting, &Reading::checked);
}

std::string describe(const Reading& reading) {
  if (reading.is_grid()) {
    return (reading.planar ? "grid in two dimensions, " : "grid, ") + describe(reading.grid());
  }
  std::string text = describe(reading.restart());
  if (reading.restart().sections) text += ", sections " + describe(*reading.restart().sections);
  return text;
}

Detection detect_grid(const std::string& path, const StatedGridForm& stated) {
  return looking_into(path, [&](Evidence& file) {
    return detect(file, nullptr, [&](EmptyBlocks empty) {
      return grid_readings(file, stated, fitted(file, grid_candidates(file, stated, empty)));
    });
  });
}

Detection detect_restart(const std::string& path, const StatedRestartForm& stated,
                         const std::shared_ptr<const Extents>& grid) {
  return looking_into(path, [&](Evidence& file) {
    return detect(file, grid,
                  [&](EmptyBlocks empty) { return restart_readings(file, stated, grid, empty); });
  });
}

Detection detect_any(const std::string& path) {
  return looking_into(path, [&](Evidence& file) {
    return detect(file, nullptr, [&](EmptyBlocks empty) {
      return grid_readings(
          file, {}, restart_readings(file, {}, nullptr, empty, grid_candidates(file, {}, empty)));
    });
  });
}

Fit compare(const std::string& path, const GridForm& form) {
  return looking_into(path, [&](Evidence& file) {
    const auto outline = file.grid_outline(form.coding, form.multiblock, EmptyBlocks::taken);
    if (!outline) return Fit{};
    Fit fit = file.fit(form.coding, FilePlan(outline->sizes, outline->extents, form.iblank));
    if (fit.whole() && is_planar_twin(file, form, *outline->extents)) {
      fit.agreement = Fit::Agreement::other;
      fit.what = "the file holds integers in the place of its third coordinates";
    }
    return fit;
  });
}

Fit compare(const std::string& path, const RestartForm& form,
            const std::shared_ptr<const Extents>& grid, bool leading_record) {
  return looking_into(path, [&](Evidence& file) {
    const auto outline = file.restart_outline(form, EmptyBlocks::taken);
    if (!outline) return Fit{};
    const auto& extents = outline->extents ? outline->extents : grid;
    const SectionSearch search{file, form, *outline, extents, leading_record};
    if (!extents || (form.sections && !can_have_stated_sections(search))) {
      return Fit{.agreement = Fit::Agreement::other,
                 .what = extents ? "its blocks cannot have these sections" : "holds no extents"};
    }
    return file.fit(form.coding, search.plan(form.sections.value_or(usual_sections(search))));
  });
}

std::shared_ptr<const Extents> extents_in(const std::string& path, const GridForm& form) {
  return looking_into(path, [&](Evidence& file) {
    const auto outline = file.grid_outline(form.coding, form.multiblock, EmptyBlocks::taken);
    return outline ? outline->extents : nullptr;
  });
}

std::shared_ptr<const Extents> extents_in(const std::string& path, const RestartForm& form) {
  return looking_into(path, [&](Evidence& file) {
    const auto outline = file.restart_outline(form, EmptyBlocks::taken);
    return outline ? outline->extents : nullptr;
  });
}

}  // namespace p3dgrid
