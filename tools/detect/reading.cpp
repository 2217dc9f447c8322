#include "detect/reading.hpp"

#include <algorithm>
#include <iterator>

#include "detect/outline.hpp"
#include "detect/planar.hpp"
#include "detect/words.hpp"
#include "grid_plan.hpp"

namespace p3dgrid {
namespace {

/// Whether what a binary file has in the place of blanking values, at the end of its last block,
/// can be such. Of binary files nothing but the length shows the rest.
bool blanking_is_one(Evidence& file, ByteOrder order, const std::vector<RecordPlan>& plan,
                     std::uint64_t real_bytes) {
  std::uint64_t end = 0;
  for (const RecordPlan& record : plan) end += record.bytes(real_bytes);
  const auto count = static_cast<std::uint64_t>(plan.back().integers);
  return look_at_words(file.source(), end - sizeof(std::int32_t) * count, count, order).small;
}

template <class Choice>
std::vector<Choice> choices(const std::optional<Choice>& stated, std::vector<Choice> all) {
  return stated ? std::vector<Choice>{*stated} : all;
}

}  // namespace

std::string describe(const Reading& reading) {
  if (reading.is_grid()) {
    return (reading.planar ? "grid in two dimensions, " : "grid, ") + describe(reading.grid());
  }
  std::string text = describe(reading.restart());
  if (reading.restart().sections) text += ", sections " + describe(*reading.restart().sections);
  return text;
}

std::vector<FormOption> options_of(const Reading& reading) {
  return reading.is_grid() ? options_of(reading.grid()) : options_of(reading.restart());
}

// Digits do not tell of a precision, nor of an order of bytes; text is taken in one of each.
std::vector<Coding> codings_of(Evidence& file, std::optional<Encoding> encoding,
                               std::optional<ByteOrder> order, std::optional<Precision> precision) {
  constexpr auto other =
      ByteOrder::native == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
  const bool text = encoding ? *encoding == Encoding::formatted : file.begins_with_text();
  if (text) {
    return {{Encoding::formatted, order.value_or(ByteOrder::native),
             precision.value_or(Precision::single_precision)}};
  }
  const bool markers = !encoding && (file.all_records_sound(ByteOrder::little) ||
                                     file.all_records_sound(ByteOrder::big));
  std::vector<Coding> codings;
  for (const Encoding e : choices(encoding, {Encoding::unformatted, Encoding::binary})) {
    // Values do not by chance look like markers all through a file.
    if (markers && e == Encoding::binary) continue;
    for (const ByteOrder o : choices(order, {ByteOrder::native, other})) {
      for (const Precision p :
           choices(precision, {Precision::single_precision, Precision::double_precision})) {
        codings.push_back({e, o, p});
      }
    }
  }
  return codings;
}

std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated) {
  std::vector<Reading> readings;
  for (const Coding& coding :
       codings_of(file, stated.encoding, stated.byte_order, stated.precision)) {
    for (const bool multiblock : choices(stated.multiblock, {true, false})) {
      const auto outline = grid_outline(*file.header(coding), multiblock);
      if (!outline) continue;
      for (const bool iblank : choices(stated.iblank, {false, true})) {
        const GridForm form{coding.encoding, coding.precision, multiblock, iblank, coding.order};
        const auto plan = plan_of(form, outline->extents);
        Reading reading{.form = form,
                        .extents = outline->extents,
                        .records = plan.size(),
                        .fit = file.fit(coding, plan)};
        const bool by_length = coding.encoding == Encoding::binary && reading.fit.whole();
        if (by_length && !iblank) {
          std::ranges::move(with_planar_twin(file, reading, stated), std::back_inserter(readings));
        } else if (!by_length || stated.iblank ||
                   blanking_is_one(file, coding.order, plan, coding.real_bytes())) {
          readings.push_back(std::move(reading));
        }
      }
    }
  }
  return readings;
}

}  // namespace p3dgrid
