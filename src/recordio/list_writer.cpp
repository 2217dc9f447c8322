#include "recordio/list_writer.hpp"

#include <algorithm>

#include "recordio/number_text.hpp"

namespace mod_p3dgrid::recordio {
namespace {

constexpr std::int64_t line_width = 80;

/// Values formatted between two looks at the room in the file's buffer.
constexpr std::int64_t values_at_a_time = 1024;
static_assert(values_at_a_time * (longest_number + 2) <= std::int64_t{OutputFile::reserve_limit});

}  // namespace

void ListWriter::write_values(const Values<const void>& entry) {
  if (entry.count == 0) return;
  const auto put_lines = [&](auto number) {
    const auto* memory = static_cast<const decltype(number)*>(entry.memory);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      put_line(memory + row, entry.stride, entry.count);
    }
  };
  switch (entry.memory_kind) {
    case FileKind::integer4:
      return put_lines(integer{});
    case FileKind::real4:
      return put_lines(float{});
    case FileKind::real8:
      return put_lines(double{});
  }
}

template <class Number>
void ListWriter::put_line(const Number* from, std::int64_t stride, std::int64_t count) {
  for (std::int64_t done = 0; done < count; done += values_at_a_time) {
    const std::int64_t n = std::min(values_at_a_time, count - done);
    char* const start = file_.reserve(OutputFile::reserve_limit);
    char* to = start;
    for (std::int64_t i = 0; i < n; ++i) {
      char* const separator = to;
      char* const end = write_number(separator + 1, from[(done + i) * stride]);
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

}  // namespace mod_p3dgrid::recordio
