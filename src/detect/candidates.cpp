#include "detect/candidates.hpp"

#include <algorithm>
#include <iterator>

#include "detect/planar.hpp"

namespace p3dgrid {
namespace {

/// Whether the last block of a binary file ends with plausible blanking values. Without markers
/// nothing but the length and these values can be checked.
bool has_plausible_blanking(Evidence& file, const Reading& reading) {
  const std::int64_t points = reading.extents->points_of(reading.extents->i.size() - 1);
  return file.sample_integers(reading.fit.end - 4 * points, points, reading.coding().byte_order)
      .small;
}

}  // namespace

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

std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                       EmptyBlocks empty) {
  std::vector<Candidate> candidates;
  for (const Coding& coding : codings_of(file, stated.coding)) {
    for (const bool multiblock : choices(stated.multiblock, {true, false})) {
      const auto outline = file.grid_outline(coding, multiblock, empty);
      if (!outline) continue;
      for (const bool iblank : choices(stated.iblank, {false, true})) {
        Reading reading;
        reading.form = GridForm{coding, multiblock, iblank};
        reading.extents = outline->extents;
        candidates.push_back(
            {std::move(reading), FilePlan(outline->sizes, outline->extents, iblank)});
      }
    }
  }
  return candidates;
}

std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates) {
  std::vector<Reading> readings;
  for (auto begin = candidates.begin(); begin != candidates.end();) {
    const Coding coding = begin->reading.coding();
    const auto end = std::find_if(begin, candidates.end(), [&](const Candidate& candidate) {
      return candidate.reading.coding() != coding;
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
  std::vector<Reading> possible;
  for (Reading& reading : readings) {
    const bool by_length =
        reading.coding().encoding == Encoding::binary && reading.fit.whole() && reading.is_grid();
    if (by_length && !reading.grid().iblank) {
      std::ranges::move(with_planar_reading(file, reading, stated), std::back_inserter(possible));
    } else if (!by_length || stated.iblank || has_plausible_blanking(file, reading)) {
      possible.push_back(std::move(reading));
    }
  }
  return possible;
}

}  // namespace p3dgrid
