#include "recordio/list_reader.hpp"

#include <algorithm>
#include <type_traits>

#include "recordio/number_text.hpp"
#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {

void ListReader::read_values(const Values<void>& entry) {
  const auto take_lines = [&](auto number) {
    auto* memory = static_cast<decltype(number)*>(entry.memory);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      take_line(entry.drop ? nullptr : memory + row, entry);
    }
  };
  if (entry.count == 0) return;
  switch (entry.memory_kind) {
    case FileKind::integer4:
      return take_lines(integer{});
    case FileKind::real4:
      return take_lines(float{});
    case FileKind::real8:
      return take_lines(double{});
  }
}

/// Fills a row, or discards its values if `to` is null.
template <class Number>
void ListReader::take_line(Number* to, const Values<void>& entry) {
  const std::int64_t count = entry.count;
  const std::int64_t stride = entry.stride;
  std::int64_t taken = 0;
  const auto set = [&](std::int64_t values, Number value) {
    if (to == nullptr) return;
    for (std::int64_t i = 0; i < values; ++i) to[(taken + i) * stride] = value;
  };
  while (taken < count && !ended_) {
    if (repeats_ == 0) {
      const std::int64_t left = count - taken;
      const auto always = [](std::int64_t) { return true; };
      const std::int64_t plain =
          to == nullptr ? take_plain<false, true>(to, stride, left, always)
                        : take_plain<true, true>(to + taken * stride, stride, left, always);
      any_taken_ = any_taken_ || plain > 0;
      taken += plain;
    }
    if (taken == count) return;
    if (repeats_ == 0) next_item();
    if (ended_) break;
    const std::int64_t run = std::min(repeats_, count - taken);
    if (!token_.empty()) {
      set(run, parsed<Number>(token_));
    } else if (entry.zero_where_left_out) {
      set(run, Number{0});
    }
    repeats_ -= run;
    taken += run;
  }
  if (entry.zero_where_left_out) set(count - taken, Number{0});
}

template <class Number>
Number ListReader::parsed(std::string_view token) {
  Number value{};
  constexpr bool whole = std::is_same_v<Number, integer>;
  if (!parse_number(token, value)) {
    not_a_number(token, whole ? "an integer of 32 bits" : "a real number");
  }
  return value;
}

/// Reads the next item to `token_` and `repeats_`, or sets `ended_` at a slash.
void ListReader::next_item() {
  skip_blanks();
  if (take_comma()) skip_blanks();
  any_taken_ = true;
  const Item item = take_item();
  ended_ = item == Item::end_of_list;
  if (repeats_ == 0) not_a_number(token_, "a repeat count before the asterisk");
}

/// Skips blanks and line ends; throws at the end of the file.
void ListReader::skip_blanks() {
  do {
    if (file_.at_end()) {
      throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "more values"};
    }
  } while (skip_buffered_blanks(true));
}

void ListReader::finish(RestOfRecord) {
  if (!any_taken_ && file_.at_end()) {
    throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "a line"};
  }
  if (skip_to_next_line()) ++line_;
}

void ListReader::not_a_number(std::string_view token, const char* expected) {
  throw ReadError{status_error, file_.offset(), "\"" + printable(token) + "\"", expected};
}

}  // namespace mod_p3dgrid::recordio
