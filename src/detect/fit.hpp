#pragma once

#include <span>
#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Of an unformatted file: every marker.
[[nodiscard]] Fit fit_of_records(Evidence& file, const Coding& coding, FilePlan& plan);

/// Of a binary file, in which nothing but its length tells, and the flags of layout 101.
[[nodiscard]] Fit fit_of_length(Evidence& file, const Coding& coding, FilePlan& plan);

/// What a text holds besides the values that a plan asks for.
struct TextCount {
  std::int64_t values = 0;  ///< of all lines, up to what is no number in each
  std::int64_t commas = 0;  ///< lines with a value more where a record begins with them
};

/// Of text: each record begins on a line of its own and fills the lines up to its last value. The
/// text is gone through once, for all plans side by side, so that memory does not depend on it.
[[nodiscard]] std::vector<Fit> fit_of_text(recordio::InputFile& file, std::span<FilePlan> plans,
                                           TextCount& count);

/// Why a file does not fit whose flags have used up their room.
inline constexpr const char* chain_text =
    "its third flag is not 999, and a chain of at most three flags ends with 999";

/// "3 bytes".
[[nodiscard]] std::string counted(std::int64_t count, const char* noun);

/// "record 3 of 4".
[[nodiscard]] std::string record_text(std::int64_t agreeing, const FilePlan& plan);

/// What is asked for in what there is; 1 where both are nothing.
[[nodiscard]] double share_of(std::int64_t expected, std::int64_t found);

}  // namespace p3dgrid
