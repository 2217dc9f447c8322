#include "recordio/list_writer.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "recordio/number_text.hpp"

namespace mod_p3dgrid::recordio {
namespace {

constexpr std::int64_t line_width = 80;

/// Values formatted between two looks at the room in the file's buffer.
constexpr std::int64_t values_at_a_time = 1024;
static_assert(values_at_a_time * (number_room + 2) <= std::int64_t{OutputFile::reserve_limit});

/// A double as the single that it is, if single precision can hold it to the bit.
char* write_as_single(char* to, double value) {
  const auto single = static_cast<float>(value);
  const bool same = std::bit_cast<std::uint64_t>(static_cast<double>(single)) ==
                    std::bit_cast<std::uint64_t>(value);
  return same ? write_number(to, single) : write_number(to, value);
}

/// Calls `visit` with the entry's memory in its kind and with what writes one of its values.
template <class Visit>
void with_format(const Values<const void>& entry, Visit visit) {
  switch (entry.memory_kind) {
    case FileKind::integer4:
      return visit(static_cast<const integer*>(entry.memory),
                   [](char* to, integer value) { return write_number(to, value); });
    case FileKind::real4:
      return visit(static_cast<const float*>(entry.memory),
                   [](char* to, float value) { return write_number(to, value); });
    case FileKind::real8:
      if (entry.file_kind == FileKind::real4) {
        return visit(static_cast<const double*>(entry.memory), write_as_single);
      }
      return visit(static_cast<const double*>(entry.memory),
                   [](char* to, double value) { return write_number(to, value); });
  }
}

}  // namespace

void ListWriter::write_values(const Values<const void>& entry) {
  if (entry.count == 0) return;
  with_format(entry, [&](const auto* memory, auto format) {
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      put_line(memory + row, entry.stride, entry.count, format);
    }
  });
}

template <class Number, class Format>
void ListWriter::put_line(const Number* from, std::int64_t stride, std::int64_t count,
                          Format format) {
  for (std::int64_t done = 0; done < count; done += values_at_a_time) {
    const std::int64_t n = std::min(values_at_a_time, count - done);
    char* const start = file_.reserve(OutputFile::reserve_limit);
    char* to = start;
    for (std::int64_t i = 0; i < n; ++i) {
      char* const separator = to;
      char* const end = format(separator + 1, from[(done + i) * stride]);
      *separator = ' ';
      to = end;
      used_columns_ += end - separator;
      if (used_columns_ <= line_width) continue;
      // It does not fit any more: it begins the next line, behind that line's own blank.
      used_columns_ = end - separator;
      std::copy_backward(separator, end, end + 1);
      *separator = '\n';
      ++to;
    }
    file_.commit(static_cast<std::size_t>(to - start));
  }
}

void ListWriter::finish() {
  if (used_columns_ == 0) file_.write(" ", 1);
  file_.write("\n", 1);
}

namespace {

/// Appends the values of one entry at one point.
char* put_point(char* to, const Values<const void>& entry, std::int64_t point) {
  with_format(entry, [&](const auto* memory, auto format) {
    const auto* const values = memory + point * entry.stride;
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      *to++ = ' ';
      to = format(to, values[row]);
    }
  });
  return to;
}

/// The list with entries of so many rows that each fits the file's buffer.
WriteList in_parts(const WriteList& list) {
  constexpr auto most_rows =
      static_cast<std::int64_t>(OutputFile::reserve_limit) / (number_room + 1) - 1;
  WriteList parts;
  for (const auto& entry : list) {
    for (std::int64_t row = 0; row < entry.rows; row += most_rows) {
      parts.push_back(entry);
      parts.back().memory =
          static_cast<const char*>(entry.memory) + row * bytes_of(entry.memory_kind);
      parts.back().rows = std::min(most_rows, entry.rows - row);
    }
  }
  return parts;
}

}  // namespace

void write_points(OutputFile& file, const WriteList& list, std::int64_t points) {
  const WriteList parts = in_parts(list);
  for (std::int64_t point = 0; point < points; ++point) {
    for (const auto& part : parts) {
      const std::int64_t room = part.rows * (number_room + 1);
      char* const start = file.reserve(static_cast<std::size_t>(room));
      file.commit(static_cast<std::size_t>(put_point(start, part, point) - start));
    }
    *file.reserve(1) = '\n';
    file.commit(1);
  }
}

}  // namespace mod_p3dgrid::recordio
