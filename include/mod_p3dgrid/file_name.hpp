#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// File name of 40 characters, padded with blanks; trailing blanks are not part of the name.
///
/// A longer name, or one with a NUL character, is a fatal error (see `p3dsetrunend`). Hosts with
/// longer paths use short names and translate them with `p3dsetpaths`.
class FileName {
 public:
  /// Number of characters.
  static constexpr std::size_t length = 40;

  /// The blank name.
  FileName() noexcept { characters_.fill(' '); }

  /// The padded name.
  FileName(std::string_view name);
  /// @copydoc FileName(std::string_view)
  FileName(const char* name) : FileName(std::string_view(name)) {}
  /// @copydoc FileName(std::string_view)
  FileName(const std::string& name) : FileName(std::string_view(name)) {}

  /// The first 40 characters of `name`.
  [[nodiscard]] static FileName cut(std::string_view name) {
    return FileName(name.substr(0, length));
  }

  /// The name without trailing blanks; valid as long as this object.
  [[nodiscard]] std::string_view view() const noexcept {
    const auto end =
        std::find_if(characters_.rbegin(), characters_.rend(), [](char c) { return c != ' '; });
    return {characters_.data(), static_cast<std::size_t>(characters_.rend() - end)};
  }

  /// All 40 characters, blanks included; valid as long as this object.
  [[nodiscard]] std::string_view padded() const noexcept { return {characters_.data(), length}; }

  /// Whether all 40 characters are equal.
  friend bool operator==(const FileName&, const FileName&) = default;

 private:
  std::array<char, length> characters_;
};

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
