#include <algorithm>
#include <cmath>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// Reals at the beginning, the middle and the end of a record.
constexpr std::int64_t run_length = 16;
constexpr int most_sampled_records = 256;
constexpr std::size_t most_readings = 64;

std::optional<double> real_at(Evidence& file, std::int64_t offset, const Coding& coding) {
  const ByteOrder order = coding.byte_order;
  const auto first = file.integer(offset, order);
  if (!first) return std::nullopt;
  if (real_bytes(coding) == 4) return std::bit_cast<float>(*first);
  const auto second = file.integer(offset + 4, order);
  if (!second) return std::nullopt;
  const auto high = static_cast<std::uint32_t>(order == ByteOrder::big ? *first : *second);
  const auto low = static_cast<std::uint32_t>(order == ByteOrder::big ? *second : *first);
  return std::bit_cast<double>(std::uint64_t{high} << 32 | low);
}

/// Whether a real is a likely value of a grid or a solution. In the wrong byte order or precision
/// exponents have any value.
bool is_plausible(double value) {
  const double size = std::abs(value);
  return size == 0 || (size >= 1e-30 && size <= 1e30);
}

bool are_plausible(Evidence& file, const Coding& coding, std::int64_t begin, std::int64_t count) {
  for (const std::int64_t first : {std::int64_t{0}, (count - run_length) / 2, count - run_length}) {
    const std::int64_t from = std::max<std::int64_t>(0, first);
    for (std::int64_t n = from; n < std::min(count, from + run_length); ++n) {
      const auto real = real_at(file, begin + n * real_bytes(coding), coding);
      if (!real || !is_plausible(*real)) return false;
    }
  }
  return true;
}

bool has_plausible_reals(Evidence& file, const Reading& reading) {
  const Coding& coding = reading.coding();
  const auto outline = file.outline(reading);
  auto plan = outline ? plan_of(file, reading, *outline) : std::nullopt;
  if (!plan) return false;
  recordio::RecordScanner records = file.records(coding);
  const bool marked = coding.encoding == Encoding::unformatted;
  std::int64_t begin = 0;
  for (int n = 0; n < most_sampled_records; ++n) {
    const auto size = plan->next();
    if (!size) break;
    if (marked) {
      const auto record = records.next();
      if (!record) return false;
      begin = record->payload;
    }
    if (size->kind == BodyRecordKind::flag) {
      plan->set_flag(file.integer(begin, coding.byte_order).value_or(end_of_extensions));
    }
    // In other records integers precede reals, or interrupt them.
    const bool reals_first = !size->in_header && size->kind != BodyRecordKind::parameters;
    if (reals_first && !are_plausible(file, coding, begin, size->reals)) return false;
    begin += size->bytes(coding);
  }
  return true;
}

std::string explanation(const Reading& taken, const std::vector<Reading>& others) {
  const auto differs = [&](auto member) {
    return std::ranges::any_of(others, [&](const Reading& other) {
      return other.coding().*member != taken.coding().*member;
    });
  };
  const bool order = differs(&Coding::byte_order);
  const bool precision = differs(&Coding::precision);
  return std::string("its reals are plausible in this ") + (order ? "byte order" : "") +
         (order && precision ? " and " : "") + (precision ? "precision" : "") + " only";
}

}  // namespace

void settle_by_values(Evidence& file, Detection& found) {
  std::vector<Reading>& readings = found.fitting;
  if (readings.size() < 2 || readings.size() > most_readings) return;
  const auto can_be_sampled = [](const Reading& reading) {
    return reading.checked && reading.fit.whole() && !is_text(reading.coding());
  };
  if (!std::ranges::all_of(readings, can_be_sampled)) return;
  const Reading* taken = nullptr;
  for (const Reading& reading : readings) {
    if (!has_plausible_reals(file, reading)) continue;
    if (taken != nullptr) return;
    taken = &reading;
  }
  const auto contradicts = [&](const Reading& other) {
    return &other == taken || other.coding().byte_order != taken->coding().byte_order ||
           other.coding().precision != taken->coding().precision;
  };
  if (taken == nullptr || !std::ranges::all_of(readings, contradicts)) return;
  Reading reading = *taken;
  reading.preferred = explanation(reading, readings);
  readings = {std::move(reading)};
}

}  // namespace p3dgrid
