#include "recordio/list_scanner.hpp"

#include <algorithm>
#include <utility>

#include "recordio/number_text.hpp"
#include "recordio/plain_block.hpp"
#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {

void ListScanner::skip_blank_lines() {
  while (!file_.at_end() && skip_buffered_blanks(true)) {
  }
}

bool ListScanner::begin_line() {
  while (skip_buffered_blanks(false)) {
    if (file_.at_end()) return false;
  }
  return take_comma();
}

ListScanner::Taken ListScanner::take(std::int64_t most, bool integers) {
  std::int64_t values = 0;
  while (values < most) {
    if (repeats_ == 0) {
      // A single integer goes to `token_`, for `last_integer`.
      if (!integers) values += skip_plain_numbers<double>(most - values);
      if (integers && most > 1) values += skip_plain_numbers<integer>(most - values);
      if (values == most) break;
      if (const auto stop = next_item()) return {values, *stop};
    }
    integer value;
    if (integers && !token_.empty() && !parse_number(token_, value)) {
      return {values, Stop::not_integer};
    }
    const std::int64_t run = std::min(repeats_, most - values);
    repeats_ -= run;
    values += run;
  }
  return {values, Stop::enough};
}

std::int64_t ListScanner::take_lines(std::int64_t most) {
  constexpr std::int64_t most_work_of_character = 1 + std::max(of_plain, of_item);
  std::int64_t values = 0;
  // If words were parsed since the last call, the next line is likely to hold such words too.
  bool plain = std::exchange(words_before_, words_) == words_ && repeats_ == 0;
  while (plain && number_is_buffered()) {
    const char* at = file_.begin();
    const auto within_limit = (most_work_ - work()) / most_work_of_character;
    const char* const end = at + std::clamp<std::int64_t>(within_limit, 0, file_.end() - at);
    plain = end - at >= block_characters;
    while (plain && end - at >= block_characters) {
      const BlockCount block = count_plain(at, comma_may_end_);
      plain = block.numbers > 0 && block.numbers < most - values;
      if (!plain) break;
      values += block.numbers;
      plain_ += block.numbers;
      items_ += block.line_ends;
      lines_ += block.line_ends;
      comma_may_end_ = true;
      at += block.characters;
    }
    file_.consume_to(at);
  }
  return values;
}

/// Reads the next item of the line, or returns why there is none.
std::optional<ListScanner::Stop> ListScanner::next_item() {
  if (work() >= most_work_) return Stop::end;
  ++items_;
  do {
    while (skip_buffered_blanks(false)) {
      if (file_.at_end()) return Stop::end;
    }
    if (*file_.begin() == '\n') {
      file_.consume_to(file_.begin() + 1);
      ++lines_;
      return Stop::line_end;
    }
  } while (take_comma());
  Item item;
  try {
    item = take_item();
  } catch (const ReadError& error) {
    // A word that is too long is not a number; the scan continues after it.
    if (error.status != status_error) throw;
    repeats_ = 0;
    return Stop::not_number;
  }
  if (item == Item::end_of_list) {
    repeats_ = 0;
    return Stop::slash;
  }
  words_ += item == Item::token;
  double value;
  if (item == Item::token && (repeats_ == 0 || !(token_.empty() || parse_number(token_, value)))) {
    repeats_ = 0;
    return Stop::not_number;
  }
  return std::nullopt;
}

integer ListScanner::last_integer() const {
  integer value = 0;
  return parse_number(token_, value) ? value : 0;
}

void ListScanner::skip_line() {
  repeats_ = 0;
  comma_may_end_ = false;
  if (skip_to_next_line()) ++lines_;
}

}  // namespace mod_p3dgrid::recordio
