#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "recordio/input_file.hpp"

namespace mod_p3dgrid::recordio {

/// Buffered bytes that the fast path requires. All numbers fit but unusually long ones.
inline constexpr std::ptrdiff_t lookahead_bytes = 64;

[[nodiscard]] inline bool is_blank(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}
[[nodiscard]] inline bool ends_token(char c) {
  return is_blank(c) || c == ',' || c == '/';
}

/// Tokeniser of list-directed text.
///
/// Values are separated by blanks, tabs, line ends and at most one comma. Two commas without a
/// value between them are a null value; `r*c` stands for r values c and `r*` for r null values; a
/// slash ends the read.
class ListTokens {
 protected:
  enum class Item : std::uint8_t { token, null, end_of_list };

  /// @param line  number of lines before the first token; updated
  ListTokens(InputFile& file, std::int64_t& line) : file_(file), line_(line) {}

  /// Whether `lookahead_bytes` are buffered. False near the end of the file, and for a pipe that
  /// delivers less at a time.
  [[nodiscard]] bool number_is_buffered();

  /// Skips buffered blanks, and line ends if `line_ends`. True if the buffer held nothing else.
  [[nodiscard]] bool skip_buffered_blanks(bool line_ends);

  /// Consumes the comma that ends the previous value, if it is next.
  bool take_comma();

  /// Reads the next item: its text to `token_`, empty for a null value, and its repeat count to
  /// `repeats_`, 0 if it is invalid. Slashes and the comma after a null value are not consumed.
  [[nodiscard]] Item take_item();

  /// Skips to the beginning of the next line; false if there is none.
  bool skip_to_next_line();

  InputFile& file_;
  std::int64_t& line_;
  bool comma_may_end_ = false;  ///< a comma would end the previous value
  std::string token_;           ///< the current value, empty for a null value
  std::int64_t repeats_ = 0;    ///< remaining repetitions of `token_`

 private:
  void take_word();
};

/// At most 40 characters of a word for messages, unprintable ones replaced.
[[nodiscard]] std::string printable(std::string_view word);

}  // namespace mod_p3dgrid::recordio
