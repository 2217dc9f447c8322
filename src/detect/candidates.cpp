#include "detect/candidates.hpp"

#include <algorithm>
#include <iterator>

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

/// Whether the values of a binary grid contradict a reading that agrees with its length.
bool is_contradicted_by_values(Evidence& file, const Reading& reading, bool blanking_stated) {
  if (!reading.is_grid() || reading.coding().encoding != Encoding::binary || !reading.fit.whole()) {
    return false;
  }
  const GridForm& form = reading.grid();
  const Extents& extents = *reading.extents;
  if (!form.iblank) return has_integers_for_coordinates(file, form, extents, reading.fit.end);
  return !blanking_stated && !last_words(file, form.coding, extents, reading.fit.end).small;
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

// Text has neither precision nor byte order, and only unformatted files have markers; any will do.
std::vector<Coding> codings_of(Evidence& file, const StatedCoding& stated) {
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

std::vector<Coding> in_dimensions(const StatedCoding& stated, const std::vector<Coding>& codings) {
  std::vector<Coding> all;
  for (const Dimensions dimensions :
       choices(stated.dimensions, {Dimensions::three, Dimensions::two})) {
    for (Coding coding : codings) {
      coding.dimensions = dimensions;
      all.push_back(coding);
    }
  }
  return all;
}

std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                       EmptyBlocks empty) {
  std::vector<Candidate> candidates;
  for (const Coding& coding : in_dimensions(stated.coding, codings_of(file, stated.coding))) {
    for (const bool multiblock : choices(stated.multiblock, {true, false})) {
      const auto outline = file.grid_outline(coding, multiblock, empty);
      if (!outline) continue;
      for (const bool iblank : choices(stated.iblank, {false, true})) {
        const GridForm form{coding, multiblock, iblank};
        Reading reading;
        reading.form = form;
        reading.extents = outline->extents;
        candidates.push_back(
            {std::move(reading), FilePlan(outline->sizes, outline->extents, form)});
      }
    }
  }
  return candidates;
}

std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates) {
  std::vector<Reading> readings;
  for (auto begin = candidates.begin(); begin != candidates.end();) {
    const Coding coding = begin->reading.coding();
    // Readings of text agree in all that their comparison depends on.
    const auto end = std::find_if(begin, candidates.end(), [&](const Candidate& candidate) {
      return !is_text(coding) && candidate.reading.coding() != coding;
    });
    std::vector<FilePlan> plans;
    std::transform(begin, end, std::back_inserter(plans),
                   [](Candidate& candidate) { return std::move(candidate.plan); });
    std::vector<Fit> fits = file.fit(coding, plans);
    for (std::size_t n = 0; begin != end; ++begin, ++n) {
      Reading& reading = begin->reading;
      reading.fit = std::move(fits[n]);
      reading.records = plans[n].records();
      reading.unknown_flag = plans[n].unknown_flag();
      readings.push_back(std::move(reading));
    }
  }
  return readings;
}

std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated,
                                   std::vector<Reading> readings) {
  std::erase_if(readings, [&](const Reading& reading) {
    return is_contradicted_by_values(file, reading, stated.iblank.has_value());
  });
  return readings;
}

}  // namespace p3dgrid
