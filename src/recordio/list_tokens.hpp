#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "recordio/input_file.hpp"
#include "recordio/plain_number.hpp"

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

  /// Reads plain numbers directly from the buffer, up to the first item of another form or, without
  /// `line_ends`, to the end of the line. Returns how many. `may_continue(numbers)` is called with
  /// those read so far, once per buffer.
  /// @tparam keep  stores the numbers; else `to` is null
  template <bool keep, bool line_ends, class Number, class MayContinue>
  std::int64_t take_plain(Number* to, std::int64_t stride, std::int64_t count,
                          MayContinue may_continue);

  /// Skips to the beginning of the next line; false if there is none.
  bool skip_to_next_line();

  InputFile& file_;
  std::int64_t& line_;
  bool comma_may_end_ = false;  ///< a comma would end the previous value
  std::string token_;           ///< the current value, empty for a null value
  std::int64_t repeats_ = 0;    ///< remaining repetitions of `token_`

 private:
  template <bool line_ends>
  [[nodiscard]] static const char* skip_separators(const char* from, bool comma,
                                                   std::int64_t& lines);
  void take_word();
};

/// Skips blanks, counted line ends and, if `comma`, at most one comma.
template <bool line_ends>
const char* ListTokens::skip_separators(const char* from, bool comma, std::int64_t& lines) {
  for (; (is_blank(*from) && (line_ends || *from != '\n')) || (comma && *from == ','); ++from) {
    lines += *from == '\n';
    if (*from == ',') comma = false;
  }
  return from;
}

template <bool keep, bool line_ends, class Number, class MayContinue>
std::int64_t ListTokens::take_plain(Number* to, std::int64_t stride, std::int64_t count,
                                    MayContinue may_continue) {
  std::int64_t left = count;
  std::int64_t lines = 0;
  bool comma = comma_may_end_;
  bool plain = true;
  while (plain && left > 0 && may_continue(count - left) && number_is_buffered()) {
    const char* at = file_.begin();
    const char* const end = file_.end();
    do {
      std::int64_t lines_before = 0;
      const char* from = at;
      while (*from == ' ') ++from;
      if (*from <= ',') from = skip_separators<line_ends>(from, comma, lines_before);
      plain = line_ends || *from != '\n';
      if (!plain) break;
      Number value;
      const char* const stop = keep ? parse_plain(from, end, value) : skip_plain<Number>(from, end);
      // The zero byte at `end` does not end a number.
      plain = stop != nullptr && ends_token(*stop);
      if (!plain) break;
      if constexpr (keep) to[(count - left) * stride] = value;
      lines += lines_before;
      comma = true;
      at = stop;
      --left;
    } while (left > 0 && end - at >= lookahead_bytes);
    file_.consume_to(at);
  }
  line_ += lines;
  comma_may_end_ = comma;
  return count - left;
}

/// At most 40 characters of a word for messages, unprintable ones replaced.
[[nodiscard]] std::string printable(std::string_view word);

}  // namespace mod_p3dgrid::recordio
