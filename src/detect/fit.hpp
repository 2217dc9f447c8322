#pragma once

#include <span>
#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Compares all record markers of an unformatted file.
[[nodiscard]] Fit fit_of_records(Evidence& file, const Coding& coding, FilePlan& plan);

/// Compares the length of a binary file, and reads the flags of layout 101.
[[nodiscard]] Fit fit_of_length(Evidence& file, const Coding& coding, FilePlan& plan);

/// Counts of a text, whatever the plans expect.
struct TextCount {
  bool whole = true;        ///< the text has been read to its end
  std::int64_t work = 0;    ///< `ListScanner::work` of that
  std::int64_t values = 0;  ///< of all lines, up to what is no number in each
  std::int64_t commas = 0;  ///< lines with a value more where a record begins with them
};

/// Compares text: each record begins on a new line, and no value follows its last one on that line.
/// One pass over the text serves all plans, so memory does not depend on its length. Plans that
/// agree when the work reaches `most_work` fit `so_far`.
[[nodiscard]] std::vector<Fit> fit_of_text(recordio::InputFile& file, std::span<FilePlan> plans,
                                           std::int64_t most_work, TextCount& count);

/// Reason for a chain of three flags without the last.
inline constexpr const char* chain_text =
    "its third flag is not 999, and a chain of at most three flags ends with 999";

/// "3 bytes".
[[nodiscard]] std::string counted(std::int64_t count, const char* noun);

/// "record 3 of 4".
[[nodiscard]] std::string record_text(std::int64_t agreeing, const FilePlan& plan);

/// Expected size divided by actual size, which counts as 1 at least.
[[nodiscard]] double share_of(std::int64_t expected, std::int64_t found);

}  // namespace p3dgrid
