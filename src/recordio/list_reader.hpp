#pragma once

#include "recordio/list_tokens.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// One list-directed read of a text file. It begins at the start of a line, reads as many lines as
/// its list needs and skips the rest of the last one. A null value leaves its destination
/// unchanged; a slash leaves the rest of the list unchanged.
class ListReader : private ListTokens {
 public:
  /// @param line  number of lines before the read; updated
  ListReader(InputFile& file, std::int64_t& line) : ListTokens(file, line) {}

  void read_values(const Values<void>& entry);

  /// Skips the rest of the line, whatever `rest` is. Throws `ReadError` if a read without values
  /// finds no line.
  void finish(RestOfRecord rest = RestOfRecord::skipped);

 private:
  template <class Number>
  void take_line(Number* to, const Values<void>& entry);
  template <class Number>
  [[nodiscard]] Number parsed(std::string_view token);

  void next_item();
  void skip_blanks();
  [[noreturn]] void not_a_number(std::string_view token, const char* expected);

  bool any_taken_ = false;  ///< an item has been read
  bool ended_ = false;      ///< a slash has been read
};

}  // namespace mod_p3dgrid::recordio
