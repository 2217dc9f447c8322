#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid {

/// Sends one finished line to where the module's messages go.
void write_line(std::string_view line);

namespace detail {
/// A list-directed line as its items are put into it.
struct ListLine {
  std::string text = " ";
  bool ends_with_number = false;

  void append(std::string_view item);
  void append(integer item);
};
}  // namespace detail

/// Writes one list-directed line: a leading blank, then the items. Texts follow each other without
/// a separator; a number stands apart from its neighbours by at least one blank.
template <class... Items>
void message(const Items&... items) {
  detail::ListLine line;
  (line.append(items), ...);
  write_line(line.text);
}

/// `number` right-justified in `width` columns; asterisks if it does not fit.
[[nodiscard]] std::string column(integer number, std::size_t width);

/// `number` as just so many digits, with leading zeros; asterisks if it does not fit.
[[nodiscard]] std::string zero_padded(integer number, std::size_t digits);

/// A file name without blanks around it; valid as long as `name`.
[[nodiscard]] std::string_view left_adjusted(const FileName& name);

}  // namespace mod_p3dgrid
