#include "detect/reading.hpp"

#include "detect/outline.hpp"
#include "grid_plan.hpp"

namespace p3dgrid {
namespace {

template <class Choice>
std::vector<Choice> choices(const std::optional<Choice>& stated, std::vector<Choice> all) {
  return stated ? std::vector<Choice>{*stated} : all;
}

}  // namespace

std::string describe(const Reading& reading) {
  if (reading.is_grid()) return "grid, " + describe(reading.grid());
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
        readings.push_back({.form = form,
                            .extents = outline->extents,
                            .records = plan.size(),
                            .fit = file.fit(coding, plan)});
      }
    }
  }
  return readings;
}

}  // namespace p3dgrid
