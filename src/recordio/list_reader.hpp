#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "recordio/input_file.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// One list-directed read of a text file. It begins at the start of a line, takes values across as
/// many lines as its list needs and ends with the line that it stopped on.
///
/// Values are separated by blanks, tabs, line ends and at most one comma. Two commas without a
/// value between them are a null value, which leaves its destination as it is; `r*c` stands for r
/// values c and `r*` for r null values; a slash ends the read and leaves the rest of the list as
/// it is.
class ListReader {
 public:
  /// @param line  number of lines that lie before the read; counted on.
  ListReader(InputFile& file, std::int64_t& line) : file_(file), line_(line) {}

  void read_values(const Values<void>& entry);

  /// Goes on to the next line. A read that takes no value must still find a line.
  void finish();

 private:
  enum class Item : std::uint8_t { token, null, end_of_list };

  template <class Number>
  void take_line(Number* to, std::int64_t stride, std::int64_t count);
  [[nodiscard]] bool number_at_hand();
  template <bool keep, class Number>
  std::int64_t take_plain(Number* to, std::int64_t stride, std::int64_t count);
  template <class Number>
  [[nodiscard]] Number parsed(std::string_view token);

  void next_item();
  Item skip_separators();
  void skip_blanks();
  [[nodiscard]] bool blank_at_hand();
  void take_token();
  [[noreturn]] void not_a_number(std::string_view token, const char* expected);

  InputFile& file_;
  std::int64_t& line_;
  bool any_taken_ = false;      ///< something of a line has been used
  bool comma_may_end_ = false;  ///< a value lies behind us and its comma was not seen yet
  bool ended_ = false;          ///< a slash was met
  std::string token_;           ///< the current value, empty for a null value
  std::int64_t repeats_ = 0;    ///< how often it still stands
};

}  // namespace mod_p3dgrid::recordio
