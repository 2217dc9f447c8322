#pragma once

#include <optional>

#include "mod_p3dgrid/logical.hpp"
#include "recordio/list_tokens.hpp"

namespace mod_p3dgrid::recordio {

/// Goes through list-directed text line by line without keeping values: counts them, and checks
/// that they are what `ListReader` takes for a number.
class ListScanner : private ListTokens {
 public:
  enum class Stop : std::uint8_t {
    enough,       ///< as many values have been taken as asked for
    line_end,     ///< the line has ended; what is next begins the next one
    slash,        ///< a slash comes next
    not_integer,  ///< a real comes next where an integer was asked for
    not_number,   ///< what comes next is no number
    end,          ///< the text has ended
  };
  struct Taken {
    std::int64_t values;
    Stop stop;
  };

  /// @param file       read from its beginning
  /// @param most_work  `work` at which the text seems to end
  ListScanner(InputFile& file, std::int64_t most_work)
      : ListTokens(file, lines_), most_work_(most_work) {
    file.end_at(most_work);
  }

  /// Number of the current line, from 1.
  [[nodiscard]] std::int64_t line() const { return lines_ + 1; }

  /// Goes on to the next line that is not blank, or to the end of the text.
  void skip_blank_lines();

  /// Begins a line. True if it begins with a comma that can end the last value of the line before:
  /// where a read begins with the line, the comma stands behind a null value.
  [[nodiscard]] bool begin_line();

  /// Takes values of the current line, at most `most`, at least 1.
  [[nodiscard]] Taken take(std::int64_t most, bool integers);

  /// The integer that `take(1, true)` has just taken; 0 for a null value.
  [[nodiscard]] integer last_integer() const;

  /// Goes on to the next line, as a read does that ends here.
  void skip_line();

  /// A measure of the time that the scan has taken, near to nanoseconds.
  [[nodiscard]] std::int64_t work() const {
    constexpr std::int64_t of_plain = 8;
    constexpr std::int64_t of_item = 64;
    return file_.offset() + of_plain * plain_ + of_item * items_;
  }

  /// What comes next, for messages, after `not_number` and `not_integer`.
  [[nodiscard]] std::string next_word() const { return printable(token_); }

 private:
  template <class Number>
  [[nodiscard]] std::int64_t take_plain(std::int64_t most);
  [[nodiscard]] std::optional<Stop> next_item();

  std::int64_t most_work_;
  std::int64_t lines_ = 0;
  std::int64_t plain_ = 0;  ///< numbers taken by the fast path
  std::int64_t items_ = 0;  ///< items and ends of lines taken otherwise
};

}  // namespace mod_p3dgrid::recordio
