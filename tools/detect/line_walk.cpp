#include "detect/line_walk.hpp"

#include <algorithm>
#include <string>

#include "table.hpp"

namespace p3dgrid {

using Agreement = Fit::Agreement;

Fit LineWalk::take(std::int64_t values) {
  std::int64_t left = values;
  // Where a record begins, a comma stands behind a null value; elsewhere it ends the value before.
  if (left > 0 && !at_end() && run().comma) --left;
  do {
    if (at_end()) {
      return {Agreement::cut, 0,
              "the text ends at line " + std::to_string(last_line()) + ", " +
                  counted(left, "value") + " short"};
    }
    if (left == 0 && run().values == 0) return step(1);  // a record of no values is a line
    if (run().ending == LineRun::Ending::slash) return step(1);
    if (is_odd() && left > run().values) return odd();
    const std::int64_t full = run().values == 0 ? lines_left_ : left / run().values;
    const std::int64_t lines = std::min(lines_left_, full);
    if (lines == 0) return too_long(run().values - left);
    left -= lines * run().values;
    step(lines);
  } while (left > 0);
  return {};
}

std::int64_t LineWalk::end() {
  while (!at_end()) step(lines_left_);
  return line_;
}

std::int64_t LineWalk::next_values() {
  while (!at_end() && run().values == 0) step(lines_left_);
  return at_end() ? 0 : line_;
}

std::int64_t LineWalk::next_words() {
  while (!at_end() && run().values == 0 && !is_odd()) step(lines_left_);
  return !at_end() && run().values == 0 ? line_ : 0;
}

/// What is behind the line end of the last line counts as a line of nothing, and is none.
std::int64_t LineWalk::last_line() const {
  const LineRun& last = text_.runs.back();
  const bool ended = last.values == 0 && last.ending == LineRun::Ending::plain;
  return std::max<std::int64_t>(line_ - (ended ? 2 : 1), 1);
}

Fit LineWalk::odd() const {
  const bool first = line_ <= text_.odd_line && text_.odd_line < line_ + lines_left_;
  return {Agreement::other, 0,
          "line " + std::to_string(first ? text_.odd_line : line_) + " holds " +
              (first ? "\"" + text_.odd_token + "\"" : "something else") +
              " where a number is expected"};
}

Fit LineWalk::too_long(std::int64_t values) const {
  return {Agreement::other, 0,
          "line " + std::to_string(line_) + " holds " + counted(values, "more value") +
              " behind the last that is expected there"};
}

Fit LineWalk::step(std::int64_t lines) {
  line_ += lines;
  lines_left_ -= lines;
  if (lines_left_ == 0) {
    ++run_;
    settle();
  }
  return {};
}

}  // namespace p3dgrid
