#include "recordio/list_tokens.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>

#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Limit on memory for files without separators, which are not text.
constexpr std::ptrdiff_t longest_word = std::ptrdiff_t{1024} * 1024;

}  // namespace

bool ListTokens::number_is_buffered() {
  const auto enough = [&] { return file_.end() - file_.begin() >= lookahead_bytes; };
  return enough() || (file_.more() && enough());
}

bool ListTokens::skip_buffered_blanks(bool line_ends) {
  const char* const end = file_.end();
  const char* at = file_.begin();
  for (; at != end && is_blank(*at) && (line_ends || *at != '\n'); ++at) line_ += *at == '\n';
  file_.consume_to(at);
  return at == end;
}

bool ListTokens::take_comma() {
  if (!comma_may_end_ || *file_.begin() != ',') return false;
  file_.consume_to(file_.begin() + 1);
  comma_may_end_ = false;
  return true;
}

ListTokens::Item ListTokens::take_item() {
  token_.clear();
  repeats_ = 1;
  comma_may_end_ = true;
  const char next = *file_.begin();
  if (next == ',') return Item::null;
  if (next == '/') return Item::end_of_list;
  take_word();
  const std::size_t star = token_.find('*');
  if (star == token_.npos) return Item::token;
  const char* const first = token_.data();
  const auto [end, error] = std::from_chars(first, first + star, repeats_);
  if (error != std::errc{} || end != first + star || repeats_ < 1) {
    repeats_ = 0;
  } else {
    token_.erase(0, star + 1);
  }
  return Item::token;
}

void ListTokens::take_word() {
  do {
    const char* const begin = file_.begin();
    const char* const end = std::find_if(begin, file_.end(), ends_token);
    token_.append(begin, end);
    file_.consume_to(end);
    if (std::ssize(token_) > longest_word) {
      throw ReadError{status_error, file_.offset(),
                      "a word of more than " + std::to_string(longest_word) + " characters",
                      "a number"};
    }
  } while (!file_.at_end() && !ends_token(*file_.begin()));
}

bool ListTokens::skip_to_next_line() {
  while (!file_.at_end()) {
    const char* const begin = file_.begin();
    const void* found = std::memchr(begin, '\n', static_cast<std::size_t>(file_.end() - begin));
    if (found != nullptr) {
      file_.consume_to(static_cast<const char*>(found) + 1);
      return true;
    }
    file_.consume_to(file_.end());
  }
  return false;
}

std::string printable(std::string_view word) {
  std::string text;
  for (const char c : word.substr(0, 40)) text += c >= ' ' && c <= '~' ? c : '?';
  return word.size() > 40 ? text + "..." : text;
}

}  // namespace mod_p3dgrid::recordio
