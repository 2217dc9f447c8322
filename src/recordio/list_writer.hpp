#pragma once

#include <string_view>

#include "recordio/output_file.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// One list-directed write of a text file: values separated by blanks, in lines that begin with a
/// blank and have at most 80 columns.
class ListWriter {
 public:
  explicit ListWriter(OutputFile& file) : file_(file) {}

  void write_values(const Values<const void>& entry);

  /// Ends the last line. A write without values is a line with a blank.
  void finish();

 private:
  template <class Number, class Prepare>
  void put_line(const Number* from, std::int64_t stride, std::int64_t count, Prepare prepare);

  OutputFile& file_;
  std::int64_t used_columns_ = 0;
};

/// Writes a line of any width.
void write_line(OutputFile& file, std::string_view line);

/// Writes a line of any width for each of `points` points: a blank and the value for all rows of
/// every entry at that point. Any NaN is written as `NaN`.
void write_points(OutputFile& file, const WriteList& list, std::int64_t points);

}  // namespace mod_p3dgrid::recordio
