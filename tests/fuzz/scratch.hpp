#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Files for the operations to read: in a folder of this process, which the environment variable
/// TMPDIR may put into memory.
namespace fuzz {

[[nodiscard]] const std::string& scratch_folder();
[[nodiscard]] std::string scratch_path(std::string_view name);

/// Makes or replaces a file.
void put_file(std::string_view name, std::span<const std::uint8_t> content);
void remove_file(std::string_view name);
[[nodiscard]] bool file_there(std::string_view name);

}  // namespace fuzz
