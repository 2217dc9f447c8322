#pragma once

#include <string>
#include <string_view>

/// Files compressed with gzip.
namespace p3dgrid::tool {

/// The path to read a file from: its own or, if the file begins like one of gzip, that of an
/// unpacked copy. The copy has no name in any folder, so that nothing of it is left behind, however
/// the process ends. Throws a Failure that names the file if it is damaged or there is no room.
/// @param output  the copy is made in its folder; empty for the folder of temporary files
[[nodiscard]] std::string path_to_read(const std::string& path, const std::string& output);

/// The path of the file that was unpacked; others stay as they are.
[[nodiscard]] std::string original_path(std::string_view path);

/// The text with those of the files that were unpacked in place of the paths of their copies.
/// Control characters in them are escaped.
[[nodiscard]] std::string with_original_paths(std::string_view text);

/// Writes the contents of a file compressed into another. Throws a Failure without names.
void compress_file(const std::string& from, const std::string& to);

}  // namespace p3dgrid::tool
