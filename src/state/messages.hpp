#pragma once

#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"
#include "recordio/number_text.hpp"

namespace mod_p3dgrid {

/// Passes one line to the sink of `p3dsetmessages`, or to standard output.
void write_line(std::string_view line);

namespace detail {
/// A list-directed line to which items are appended.
struct ListLine {
  std::string text = " ";
  bool ends_with_number = false;

  void append(std::string_view item);
  void append(integer item);
};
}  // namespace detail

/// Writes one list-directed line: a blank, then the items. At least one blank separates numbers
/// from their neighbours; texts are not separated.
template <class... Items>
void message(const Items&... items) {
  detail::ListLine line;
  (line.append(items), ...);
  write_line(line.text);
}

using recordio::column;

/// A file name without blanks around it; valid as long as `name`.
[[nodiscard]] std::string_view left_adjusted(const FileName& name);

}  // namespace mod_p3dgrid
