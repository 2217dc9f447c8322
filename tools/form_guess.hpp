#pragma once

#include <optional>
#include <string>
#include <vector>

#include "grid_form.hpp"

namespace p3dgrid {

/// What the bytes of a file say about its form. Only advice for people comes of it: a file is
/// always read in the form that the user states.
struct FormGuess {
  std::vector<GridForm> fitting;  ///< forms whose sizes, worked out from the header, are the file's
  bool swapped = false;           ///< `fitting` holds with the byte order turned round
  bool text = false;              ///< the file begins with readable characters
  std::optional<bool>
      block_count;  ///< of text: whether it begins with a block count, if that shows

  /// True when `form` is among the fitting forms, in the machine's byte order.
  [[nodiscard]] bool allows(const GridForm& form) const;

  /// What to try instead of `stated`, as part of a sentence; empty when nothing better is known.
  [[nodiscard]] std::string advice(const GridForm& stated) const;
};

/// Looks at a file's header and length. A file that is not a regular one, or that cannot be read,
/// says nothing about its form.
[[nodiscard]] FormGuess guess_form(const std::string& path);

}  // namespace p3dgrid
