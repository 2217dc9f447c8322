#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "detect/byte_source.hpp"

namespace p3dgrid {

/// What comes next in list-directed text.
struct TextToken {
  enum class Kind { value, null, slash, end };

  Kind kind = Kind::end;
  std::int64_t repeats = 1;     ///< for values and nulls; 0 when the repeat count is none
  std::string_view value;       ///< without its repeat count; valid until the next token
  std::int64_t line = 1;        ///< from 1
  std::uint64_t bytes = 0;      ///< offset of the byte behind it
  std::int64_t comma_line = 0;  ///< begins with the comma that ended the value before; 0 for none
};

/// The tokens of list-directed text: values separated by blanks, one comma or line ends.
class TextTokens {
 public:
  explicit TextTokens(ByteSource& source, std::uint64_t begin = 0)
      : source_(&source), buffer_end_(begin) {}

  TextToken next();

  /// Leaves out what is left of the line of the last token, as the end of a record does.
  void skip_line();

  /// Line that has been come to, from 1.
  [[nodiscard]] std::int64_t line() const { return line_; }

 private:
  bool fill();  ///< more bytes behind those at hand; false at the end of the file
  bool at_end() { return at_ == buffer_.size() && !fill(); }
  bool skip_separators();
  std::string_view take_word();

  ByteSource* source_;
  std::vector<char> buffer_;
  std::size_t at_ = 0;
  std::uint64_t buffer_end_ = 0;  ///< offset in the file
  std::int64_t line_ = 1;
  bool comma_may_end_ = false;
  std::int64_t last_line_ = 0;   ///< of the last token
  std::int64_t comma_line_ = 0;  ///< begins with the comma that was left out last
};

/// True when a token is a number as list-directed reading takes it: decimal, with an exponent
/// marked E, D or Q or by its sign alone, or a NaN or an infinity.
[[nodiscard]] bool is_number(std::string_view token);

/// The token as an integer of 32 bits; none when it is something else.
[[nodiscard]] std::optional<std::int32_t> integer_in(std::string_view token);

/// True when all of `start` is readable; false for nothing at all.
[[nodiscard]] bool is_text(std::string_view start);

}  // namespace p3dgrid
