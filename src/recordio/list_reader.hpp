#pragma once

#include "recordio/list_tokens.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// One list-directed read of a text file. It begins at the start of a line, takes values across as
/// many lines as its list needs and ends with the line that it stopped on. A null value leaves its
/// destination as it is; a slash leaves the rest of the list as it is.
class ListReader : private ListTokens {
 public:
  /// @param line  number of lines that lie before the read; counted on.
  ListReader(InputFile& file, std::int64_t& line) : ListTokens(file, line) {}

  void read_values(const Values<void>& entry);

  /// Goes on to the next line. A read that takes no value must still find a line.
  void finish();

 private:
  template <class Number>
  void take_line(Number* to, const Values<void>& entry);
  template <bool keep, class Number>
  std::int64_t take_plain(Number* to, std::int64_t stride, std::int64_t count);
  template <class Number>
  [[nodiscard]] Number parsed(std::string_view token);

  void next_item();
  void skip_blanks();
  [[noreturn]] void not_a_number(std::string_view token, const char* expected);

  bool any_taken_ = false;  ///< something of a line has been used
  bool ended_ = false;      ///< a slash was met
};

}  // namespace mod_p3dgrid::recordio
