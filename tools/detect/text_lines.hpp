#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "detect/byte_source.hpp"

namespace p3dgrid {

/// Lines of a text file that follow one another and hold as many values.
struct LineRun {
  enum class Ending {
    plain,
    slash,  ///< behind the values a slash ends the record
    odd,    ///< behind the values there is something that is no number
  };

  std::int64_t values = 0;  ///< of each line
  std::int64_t lines = 0;
  Ending ending = Ending::plain;
  /// Each begins with a comma that can end the last value of the line before: where a record begins
  /// with the line, it stands behind one value more, a null value.
  bool comma = false;

  [[nodiscard]] bool is_like(const LineRun& other) const {
    return values == other.values && ending == other.ending && comma == other.comma;
  }
};

/// How many values stand in each line of a text file. Text that programs write is regular, so that
/// few runs tell of millions of lines.
struct TextLines {
  std::vector<LineRun> runs;
  std::int64_t values = 0;    ///< of all lines, up to what is no number in each
  std::int64_t commas = 0;    ///< lines with a value more where a record begins with them
  std::int64_t odd_line = 0;  ///< first line that holds something else than numbers; 0 for none
  std::string odd_token;      ///< what it holds
};

/// Reads a text file through.
[[nodiscard]] TextLines count_lines(ByteSource& source);

/// The first value of a line, counted from 1, if it is an integer of 32 bits.
[[nodiscard]] std::optional<std::int32_t> integer_on_line(ByteSource& source, std::int64_t line);

}  // namespace p3dgrid
