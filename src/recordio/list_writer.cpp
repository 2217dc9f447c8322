#include "recordio/list_writer.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "recordio/number_text.hpp"

namespace mod_p3dgrid::recordio {
namespace {

constexpr std::int64_t line_width = 80;

/// Values written between two calls of `OutputFile::reserve`.
constexpr std::int64_t values_at_a_time = 64;

/// A value, the blank before it and a line end.
constexpr std::int64_t room_for_value = number_room + 2;
static_assert(values_at_a_time * room_for_value <= OutputFile::reserve_limit);

/// A double that is written as a single if that has the same value.
struct ShortenedNumber {
  double value;
  Decimal digits;
  bool is_single;
};

ShortenedNumber shortened(double value) {
  const auto single = static_cast<float>(value);
  const bool same = std::bit_cast<std::uint64_t>(static_cast<double>(single)) ==
                    std::bit_cast<std::uint64_t>(value);
  return {value, same ? with_digits(single).digits : with_digits(value).digits, same};
}

using recordio::write_number;

char* write_number(char* to, const ShortenedNumber& number) {
  const auto& [value, digits, is_single] = number;
  if (!is_single) return write_number(to, NumberWithDigits<double>{value, digits});
  return write_number(to, NumberWithDigits<float>{static_cast<float>(value), digits});
}

/// Calls `visit` with the typed memory of the entry and the function that prepares one of its
/// values for `write_number`.
template <class Visit>
void with_kind(const Values<const void>& entry, Visit visit) {
  switch (entry.memory_kind) {
    case FileKind::integer4:
      return visit(static_cast<const integer*>(entry.memory), [](integer value) { return value; });
    case FileKind::real4:
      return visit(static_cast<const float*>(entry.memory),
                   [](float value) { return with_digits(value); });
    case FileKind::real8:
      if (entry.file_kind == FileKind::real4) {
        return visit(static_cast<const double*>(entry.memory), shortened);
      }
      return visit(static_cast<const double*>(entry.memory),
                   [](double value) { return with_digits(value); });
  }
}

/// Prepares at most `values_at_a_time` values, and then calls `put` with each of them.
template <class Number, class Prepare, class Put>
void put_values(const Number* from, std::int64_t stride, std::int64_t count, Prepare prepare,
                Put put) {
  std::array<decltype(prepare(*from)), values_at_a_time> numbers;
  for (std::int64_t i = 0; i < count; ++i) {
    numbers[static_cast<std::size_t>(i)] = prepare(from[i * stride]);
  }
  for (std::int64_t i = 0; i < count; ++i) put(numbers[static_cast<std::size_t>(i)]);
}

/// Replaces any NaN with the usual one: readers of such lines do not accept its bits.
template <class Number>
Number without_nan_bits(Number value) {
  return std::isnan(value) ? std::numeric_limits<Number>::quiet_NaN() : value;
}

/// Appends the values of `rows` rows from `row` on at one point.
char* put_point(char* to, const Values<const void>& entry, std::int64_t point, std::int64_t row,
                std::int64_t rows) {
  with_kind(entry, [&](const auto* memory, auto prepare) {
    const auto* const values = memory + point * entry.stride + row;
    const auto prepare_plain = [&](auto value) { return prepare(without_nan_bits(value)); };
    put_values(values, 1, rows, prepare_plain, [&](const auto& number) {
      *to++ = ' ';
      to = write_number(to, number);
    });
  });
  return to;
}

}  // namespace

void ListWriter::write_values(const Values<const void>& entry) {
  if (entry.count == 0) return;
  with_kind(entry, [&](const auto* memory, auto prepare) {
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      put_line(memory + row, entry.stride, entry.count, prepare);
    }
  });
}

template <class Number, class Prepare>
void ListWriter::put_line(const Number* from, std::int64_t stride, std::int64_t count,
                          Prepare prepare) {
  for (std::int64_t done = 0; done < count; done += values_at_a_time) {
    const std::int64_t n = std::min(values_at_a_time, count - done);
    char* const start = file_.reserve(n * room_for_value);
    char* to = start;
    put_values(from + done * stride, stride, n, prepare, [&](const auto& number) {
      char* const separator = to;
      char* const end = write_number(separator + 1, number);
      *separator = ' ';
      to = end;
      used_columns_ += end - separator;
      if (used_columns_ <= line_width) return;
      // The value does not fit. It begins the next line, after that line's own blank.
      used_columns_ = end - separator;
      std::copy_backward(separator, end, end + 1);
      *separator = '\n';
      ++to;
    });
    file_.commit(to - start);
  }
}

void ListWriter::finish() {
  if (used_columns_ == 0) file_.write(" ", 1);
  file_.write("\n", 1);
}

void write_line(OutputFile& file, std::string_view line) {
  file.write(line.data(), std::ssize(line));
  file.write("\n", 1);
}

void write_points(OutputFile& file, const WriteList& list, std::int64_t points) {
  for (std::int64_t point = 0; point < points; ++point) {
    for (const auto& entry : list) {
      for (std::int64_t row = 0; row < entry.rows; row += values_at_a_time) {
        const std::int64_t rows = std::min(values_at_a_time, entry.rows - row);
        char* const start = file.reserve(rows * room_for_value);
        file.commit(put_point(start, entry, point, row, rows) - start);
      }
    }
    *file.reserve(1) = '\n';
    file.commit(1);
  }
}

}  // namespace mod_p3dgrid::recordio
