#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "recordio/input_file.hpp"

namespace mod_p3dgrid::recordio {

/// The tokens of list-directed text.
///
/// Values are separated by blanks, tabs, line ends and at most one comma. Two commas without a
/// value between them are a null value; `r*c` stands for r values c and `r*` for r null values; a
/// slash ends the read.
class ListTokens {
 protected:
  enum class Item : std::uint8_t { token, null, end_of_list };

  /// @param line  line ends that lie before; counted on
  ListTokens(InputFile& file, std::int64_t& line) : file_(file), line_(line) {}

  /// Whether a whole number is in the buffer, unusual ones aside. False near the end of the file,
  /// and where a pipe hands over less at a time.
  [[nodiscard]] bool number_at_hand();

  /// Takes the blanks in the buffer and, unless `line_ends`, stops at a line end; true if there was
  /// nothing else in it.
  [[nodiscard]] bool skip_blanks_at_hand(bool line_ends);

  /// Takes the comma that ends the value before, if it comes next.
  bool take_comma();

  /// Takes the item that comes next, which is no separator, but for a slash or the comma behind a
  /// null value: its text to `token_`, which is empty for a null value, and its repeat count to
  /// `repeats_`, 0 if it has a wrong one.
  [[nodiscard]] Item take_item();

  /// Goes behind the next line end; false if there is none.
  bool skip_to_next_line();

  InputFile& file_;
  std::int64_t& line_;
  bool comma_may_end_ = false;  ///< a value lies behind us and its comma was not seen yet
  std::string token_;           ///< the current value, empty for a null value
  std::int64_t repeats_ = 0;    ///< how often it still stands

 private:
  void take_word();
};

/// A word for messages: at most 40 printable characters of it.
[[nodiscard]] std::string printable(std::string_view word);

}  // namespace mod_p3dgrid::recordio
