#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Lists of blocks on the command line, such as "1,3-5", counted from 1.
namespace p3dgrid::tool {

/// The reason why the text is no list of blocks; empty if it is one.
[[nodiscard]] std::string wrong_block_list(const std::string& text);

/// The blocks of a list, counted from 0, in its order; all for an empty text. Throws a Failure if
/// the file has fewer.
/// @param path   of the file
/// @param count  its number of blocks
[[nodiscard]] std::vector<std::int32_t> blocks_in(const std::string& text, const std::string& path,
                                                  std::int32_t count);

}  // namespace p3dgrid::tool
