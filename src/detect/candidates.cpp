#include <algorithm>
#include <utility>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// The last words of a binary grid, one for each point of its last block: blanking values, or third
/// coordinates in single precision. Without markers nothing but the length and these can be
/// checked.
IntegerSample last_words(Evidence& file, const Coding& coding, const Extents& extents,
                         std::int64_t end) {
  const std::int64_t points = extents.points_of(extents.i.size() - 1);
  return file.sample_integers(end - 4 * points, points, coding.byte_order);
}

/// The possible codings of a file that agree with what is stated, apart from its dimensions. Text
/// has neither precision nor byte order, and only unformatted files have markers; any will do.
std::vector<Coding> codings_of_three(Evidence& file, const StatedCoding& stated) {
  constexpr auto other =
      ByteOrder::native == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
  const MarkerBytes any_markers = stated.marker_bytes.value_or(MarkerBytes::four);
  const bool text =
      stated.encoding ? *stated.encoding == Encoding::formatted : file.begins_with_text();
  if (text) {
    return {{Encoding::formatted, stated.precision.value_or(Precision::single_precision),
             stated.byte_order.value_or(ByteOrder::native), any_markers}};
  }
  const auto are_sound = [&](MarkerBytes bytes) {
    // A stated byte order may be the wrong one.
    return file.all_records_sound({.byte_order = ByteOrder::native, .marker_bytes = bytes}) ||
           file.all_records_sound({.byte_order = other, .marker_bytes = bytes});
  };
  std::vector<MarkerBytes> sizes =
      choices(stated.marker_bytes, {MarkerBytes::four, MarkerBytes::eight});
  const auto sound = std::ranges::find_if(sizes, are_sound);
  const bool markers = sound != sizes.end();
  if (markers) sizes = {*sound};
  std::vector<Coding> codings;
  for (const Encoding e : choices(stated.encoding, {Encoding::unformatted, Encoding::binary})) {
    // If all markers match, the file is unformatted: values do not match in this way by chance.
    if (markers && !stated.encoding && e == Encoding::binary) continue;
    for (const MarkerBytes m : e == Encoding::binary ? std::vector{any_markers} : sizes) {
      for (const ByteOrder o : choices(stated.byte_order, {ByteOrder::native, other})) {
        for (const Precision p : choices(
                 stated.precision, {Precision::single_precision, Precision::double_precision})) {
          codings.push_back({e, p, o, m});
        }
      }
    }
  }
  return codings;
}

}  // namespace

bool has_integers_for_coordinates(Evidence& file, const GridForm& form, const Extents& extents,
                                  std::int64_t end) {
  const Coding& coding = form.coding;
  const bool ends_with_coordinates = coding.encoding == Encoding::binary && !is_planar(coding) &&
                                     coding.precision == Precision::single_precision &&
                                     !form.iblank && extents.points() > 0;
  if (!ends_with_coordinates) return false;
  const IntegerSample words = last_words(file, coding, extents, end);
  return words.small && !words.zero;
}

std::vector<Coding> codings_of(Evidence& file, const StatedCoding& stated) {
  std::vector<Coding> codings;
  for (const Dimensions dimensions :
       choices(stated.dimensions, {Dimensions::three, Dimensions::two})) {
    for (Coding coding : codings_of_three(file, stated)) {
      coding.dimensions = dimensions;
      codings.push_back(coding);
    }
  }
  return codings;
}

std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                       EmptyBlocks empty) {
  std::vector<Candidate> candidates;
  for (const Coding& coding : codings_of(file, stated.coding)) {
    for (const bool multiblock : choices(stated.multiblock, {true, false})) {
      const auto outline = file.outline(GridForm{coding, multiblock}, empty);
      if (!outline) continue;
      for (const bool iblank : choices(stated.iblank, {false, true})) {
        const GridForm form{coding, multiblock, iblank};
        candidates.push_back({{.form = form, .extents = outline->extents},
                              FilePlan(outline->sizes, outline->extents, form)});
      }
    }
  }
  return candidates;
}

std::optional<FilePlan> plan_of(Evidence& file, const Reading& reading, Outline outline) {
  const auto extents = outline.extents ? outline.extents : reading.extents;
  if (reading.is_grid()) return FilePlan(outline.sizes, extents, reading.grid());
  const RestartForm& form = reading.restart();
  const bool leading =
      reading.triplets.value_or(reads_triplets(traits_of(form.layout), form.coding));
  const SectionSearch search{file, form, std::move(outline), extents, leading};
  if (!extents || (form.sections && !can_have_stated_sections(search))) return std::nullopt;
  return search.plan(form.sections.value_or(usual_sections(search)));
}

std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates) {
  std::vector<Reading> readings;
  std::vector<FilePlan> plans;
  for (auto& [reading, plan] : candidates) {
    readings.push_back(std::move(reading));
    plans.push_back(std::move(plan));
  }
  const bool text = !readings.empty() && is_text(readings.front().coding());
  std::vector<Fit> fits;
  if (text) fits = file.fit_text(plans);
  for (std::size_t n = 0; n < plans.size(); ++n) {
    Reading& reading = readings[n];
    reading.fit = text ? std::move(fits[n]) : file.fit(reading.coding(), plans[n]);
    reading.records = plans[n].records();
    reading.unknown_flag = plans[n].unknown_flag();
  }
  return readings;
}

std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated,
                                   std::vector<Reading> readings) {
  std::erase_if(readings, [&](const Reading& reading) {
    const bool binary_grid =
        reading.is_grid() && reading.coding().encoding == Encoding::binary && reading.fit.whole();
    if (!binary_grid) return false;
    const GridForm& form = reading.grid();
    const Extents& extents = *reading.extents;
    if (!form.iblank) return has_integers_for_coordinates(file, form, extents, reading.fit.end);
    return !stated.iblank && !last_words(file, form.coding, extents, reading.fit.end).small;
  });
  return readings;
}

}  // namespace p3dgrid
