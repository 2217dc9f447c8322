#pragma once

#include <span>
#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Compares all record markers of an unformatted file.
[[nodiscard]] Fit fit_of_records(Evidence& file, const Coding& coding, FilePlan& plan);

/// Compares the length of a binary file, and reads the flags of layout 101.
[[nodiscard]] Fit fit_of_length(Evidence& file, const Coding& coding, FilePlan& plan);

/// Compares text with all plans in one pass. Each record begins on a new line, and no value follows
/// its last one on that line. Plans that agree when the work reaches `most_work` fit `so_far`.
[[nodiscard]] std::vector<Fit> fit_of_text(recordio::InputFile& file, std::span<FilePlan> plans,
                                           std::int64_t most_work, TextCount& count);

/// Description of an unterminated chain of flags.
inline constexpr const char* chain_text =
    "its third flag is not 999, and a chain of at most three flags ends with 999";

/// "3 bytes".
[[nodiscard]] std::string counted(std::int64_t count, const char* noun);

/// "record 3 of 4".
[[nodiscard]] std::string record_text(std::int64_t agreeing, const FilePlan& plan);

/// Expected size divided by actual size, which counts as at least 1.
[[nodiscard]] double share_of(std::int64_t expected, std::int64_t found);

}  // namespace p3dgrid
