#pragma once

#include <cstdint>

#include "detect/fit.hpp"
#include "detect/text_lines.hpp"

namespace p3dgrid {

/// Goes through the lines of a text as a reader of records does.
class LineWalk {
 public:
  explicit LineWalk(const TextLines& text) : text_(text) { settle(); }

  [[nodiscard]] std::int64_t line() const { return line_; }

  /// Takes a record; whole when it is there and ends with its line.
  Fit take(std::int64_t values);

  /// The line behind the last one.
  std::int64_t end();

  /// The next line that holds values; 0 for none.
  std::int64_t next_values();

  /// The next line, if it begins with what is no number; 0 else. Lines of nothing are left out.
  std::int64_t next_words();

 private:
  [[nodiscard]] const LineRun& run() const { return text_.runs[run_]; }
  [[nodiscard]] bool at_end() const { return run_ == text_.runs.size(); }
  [[nodiscard]] bool is_odd() const { return run().ending == LineRun::Ending::odd; }
  [[nodiscard]] std::int64_t last_line() const;
  [[nodiscard]] Fit odd() const;
  [[nodiscard]] Fit too_long(std::int64_t values) const;
  Fit step(std::int64_t lines);
  void settle() { lines_left_ = at_end() ? 0 : run().lines; }

  const TextLines& text_;
  std::size_t run_ = 0;
  std::int64_t lines_left_ = 0;
  std::int64_t line_ = 1;
};

}  // namespace p3dgrid
