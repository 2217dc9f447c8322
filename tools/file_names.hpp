#pragma once

#include <cstddef>
#include <p3dgrid/form.hpp>
#include <string>

/// What the name of a file says about it.
namespace p3dgrid::tool {

/// Whether a file of this name is written compressed: it ends in `.gz`.
[[nodiscard]] bool is_compressed_name(const std::string& path);

/// What is wrong with the text as the name of a file or folder; empty if nothing is.
[[nodiscard]] std::string wrong_name(const std::string& text);

/// The same for a file that is written: its ending may also be that of another format.
[[nodiscard]] std::string wrong_output_name(const std::string& text);

/// The name of file `number` of `count`: "grid-01.p3d" for "grid.p3d". Numbers have equally many
/// digits.
[[nodiscard]] std::string numbered_path(const std::string& path, std::size_t number,
                                        std::size_t count);

/// Prints a note if the name of a file that is written promises text and the coding is another.
void note_contradiction(const std::string& path, const Coding& written);

}  // namespace p3dgrid::tool
