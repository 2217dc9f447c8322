#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid {

/// Sends one finished line to where the module's messages go.
void write_line(std::string_view line);

namespace detail {
void append_item(std::string& line, std::string_view text);
void append_item(std::string& line, integer number);
}  // namespace detail

/// Writes one list-directed line: a leading blank, then the items. Texts follow each other without
/// a separator; a number stands apart from its neighbours by at least one blank.
template <class... Items>
void message(const Items&... items) {
  std::string line(1, ' ');
  (detail::append_item(line, items), ...);
  write_line(line);
}

/// `number` right-justified in `width` columns; asterisks if it does not fit.
[[nodiscard]] std::string column(integer number, std::size_t width);

}  // namespace mod_p3dgrid
