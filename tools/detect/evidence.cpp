#include "detect/evidence.hpp"

#include <array>
#include <string_view>

#include "detect/text_tokens.hpp"

namespace p3dgrid {

// The integers that files without text begin with are small, so that a zero byte comes early.
bool Evidence::begins_with_text() {
  if (!text_) {
    std::array<char, 512> start{};
    const std::size_t count = source_.read(0, start);
    text_ = is_text(std::string_view(start.data(), count));
  }
  return *text_;
}

RecordList& Evidence::records(ByteOrder order) {
  return order == ByteOrder::big ? big_ : little_;
}

bool Evidence::all_records_sound(ByteOrder order) {
  RecordList& list = records(order);
  const Record* first = list.at(0);
  // Zeros would be empty records without end.
  if (first == nullptr || first->length == 0) return false;
  constexpr std::size_t proof = 1000;
  for (std::size_t n = 0; n < proof; ++n) {
    const Record* record = list.at(n);
    if (record == nullptr) return true;
    if (record->state != Record::State::sound) return false;
  }
  return true;
}

const TextLines& Evidence::lines() {
  if (!lines_) lines_ = count_lines(source_);
  return *lines_;
}

std::unique_ptr<HeaderReader> Evidence::header(const Coding& coding) {
  switch (coding.encoding) {
    case Encoding::formatted:
      return std::make_unique<TextHeader>(source_);
    case Encoding::binary:
      return std::make_unique<BinaryHeader>(source_, coding.order);
    case Encoding::unformatted:
      break;
  }
  return std::make_unique<UnformattedHeader>(source_, records(coding.order), coding.order);
}

Fit Evidence::fit(const Coding& coding, const std::vector<RecordPlan>& plan) {
  switch (coding.encoding) {
    case Encoding::formatted:
      return fit_of_text(lines(), plan);
    case Encoding::binary:
      return fit_of_length(source_, plan, coding.real_bytes());
    case Encoding::unformatted:
      break;
  }
  return fit_of_records(records(coding.order), size(), plan, coding.real_bytes());
}

std::optional<std::int32_t> Evidence::integer_of_record(const Coding& coding,
                                                        const std::vector<RecordPlan>& plan,
                                                        std::size_t n) {
  if (coding.encoding == Encoding::formatted) {
    return integer_on_line(source_, line_of_record(lines(), plan, n));
  }
  std::uint64_t offset = 0;
  if (coding.encoding == Encoding::unformatted) {
    offset = records(coding.order).at(n)->offset + marker_bytes;
  } else {
    for (std::size_t before = 0; before < n; ++before) {
      offset += plan[before].bytes(coding.real_bytes());
    }
  }
  return source_.integer(offset, coding.order);
}

}  // namespace p3dgrid
