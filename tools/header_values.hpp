#pragma once

#include <MOD_P3DReader.hpp>
#include <string>
#include <variant>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// A value of a restart file's header that goes for all of its blocks.
struct HeaderValue {
  const char* key;    ///< for programs
  const char* label;  ///< for people
  std::variant<mod_p3dgrid::integer, double> value;

  /// With the digits that the file has of it.
  [[nodiscard]] std::string text(const RestartForm& form) const;
};

/// The values of the header that the library has read last, in file order; none of layouts that
/// have no such.
[[nodiscard]] std::vector<HeaderValue> header_values(const RestartForm& form);

/// A real of the header with the digits that the file has of it.
[[nodiscard]] std::string digits_in(const RestartForm& form, double value);

}  // namespace p3dgrid::tool
