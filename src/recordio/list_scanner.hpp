#pragma once

#include <optional>

#include "mod_p3dgrid/logical.hpp"
#include "recordio/list_tokens.hpp"

namespace mod_p3dgrid::recordio {

/// Scans list-directed text line by line: counts values, and checks that `ListReader` would accept
/// them as numbers.
class ListScanner : private ListTokens {
 public:
  enum class Stop : std::uint8_t {
    enough,       ///< as many values as asked for
    line_end,     ///< end of the line, which is consumed
    slash,        ///< a slash
    not_integer,  ///< a real where an integer was asked for
    not_number,   ///< an item that is not a number
    end,          ///< end of the text
  };
  struct Taken {
    std::int64_t values;
    Stop stop;
  };

  /// @param file       read from its beginning
  /// @param most_work  limit on `work`, after which the text counts as ended
  ListScanner(InputFile& file, std::int64_t most_work)
      : ListTokens(file, lines_), most_work_(most_work) {
    file.end_at(most_work);
  }

  /// Number of the current line, from 1.
  [[nodiscard]] std::int64_t line() const { return lines_ + 1; }

  void skip_blank_lines();

  /// Begins a line. True if it begins with a comma that can end the last value of the previous
  /// line. For a read that begins with this line, the comma follows a null value.
  [[nodiscard]] bool begin_line();

  /// Counts values of the current line, at most `most`, which is at least 1.
  [[nodiscard]] Taken take(std::int64_t most, bool integers);

  /// Counts plain numbers of this line and the next ones, fewer than `most`. Ends behind one of
  /// them, or where it began, and before the limit on `work`. Commas at the beginning of lines are
  /// left.
  [[nodiscard]] std::int64_t take_lines(std::int64_t most);

  /// The value of the last `take(1, true)`; 0 for a null value.
  [[nodiscard]] integer last_integer() const;

  /// Skips the rest of the line, like a read that ends here.
  void skip_line();

  /// Estimated time of the scan, in nanoseconds.
  [[nodiscard]] std::int64_t work() const {
    return file_.offset() + of_plain * plain_ + of_item * items_ + of_word * words_;
  }

  /// The refused item after `not_number` and `not_integer`, for messages.
  [[nodiscard]] std::string next_word() const { return printable(token_); }

 private:
  static constexpr std::int64_t of_plain = 8;
  static constexpr std::int64_t of_item = 64;
  static constexpr std::int64_t of_word = 192;

  template <class Number>
  [[nodiscard]] std::int64_t skip_plain_numbers(std::int64_t most) {
    const std::int64_t before = plain_;
    const auto within_limit = [&](std::int64_t skipped) {
      plain_ = before + skipped;
      return work() < most_work_;
    };
    const std::int64_t skipped =
        take_plain<false, false>(static_cast<Number*>(nullptr), 1, most, within_limit);
    plain_ = before + skipped;
    return skipped;
  }
  [[nodiscard]] std::optional<Stop> next_item();

  std::int64_t most_work_;
  std::int64_t lines_ = 0;
  std::int64_t plain_ = 0;         ///< numbers on the fast path
  std::int64_t items_ = 0;         ///< other items and line ends
  std::int64_t words_ = 0;         ///< other items that are copied and parsed
  std::int64_t words_before_ = 0;  ///< `words_` at the last `take_lines`
};

}  // namespace mod_p3dgrid::recordio
