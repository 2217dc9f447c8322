#include "recordio/list_reader.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>

#include "recordio/number_text.hpp"
#include "recordio/plain_number.hpp"
#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// No number is longer than this; a file without separators is not text.
constexpr std::ptrdiff_t longest_token = 4096;

/// The fast path wants a whole number in the buffer, which this many bytes hold but for oddities.
constexpr std::ptrdiff_t bytes_at_hand = 64;

bool is_blank(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}
bool ends_token(char c) {
  return is_blank(c) || c == ',' || c == '/';
}

const char* expected_kind(integer) {
  return "an integer of 32 bits";
}
const char* expected_kind(float) {
  return "a real number";
}
const char* expected_kind(double) {
  return "a real number";
}

std::string printable(std::string_view token) {
  std::string text;
  for (const char c : token.substr(0, 40)) text += c >= ' ' && c <= '~' ? c : '?';
  return token.size() > 40 ? text + "..." : text;
}

}  // namespace

void ListReader::read_values(const Values<void>& entry) {
  const auto take_lines = [&](auto number) {
    auto* memory = static_cast<decltype(number)*>(entry.memory);
    for (std::int64_t row = 0; row < entry.rows && !ended_; ++row) {
      take_line(entry.drop ? nullptr : memory + row, entry.stride, entry.count);
    }
  };
  if (entry.count == 0) return;
  switch (entry.memory_kind) {
    case FileKind::integer4:
      return take_lines(integer{});
    case FileKind::real4:
      return take_lines(float{});
    case FileKind::real8:
      return take_lines(double{});
  }
}

/// Fills `count` values, or drops them if there is nothing to fill.
template <class Number>
void ListReader::take_line(Number* to, std::int64_t stride, std::int64_t count) {
  std::int64_t taken = 0;
  while (taken < count && !ended_) {
    if (repeats_ == 0) {
      taken += to == nullptr ? take_plain<false>(to, stride, count - taken)
                             : take_plain<true>(to + taken * stride, stride, count - taken);
    }
    if (taken == count) return;
    if (repeats_ == 0) next_item();
    if (ended_) return;
    const std::int64_t run = std::min(repeats_, count - taken);
    if (!token_.empty()) {
      const Number value = parsed<Number>(token_);
      for (std::int64_t i = 0; to != nullptr && i < run; ++i) to[(taken + i) * stride] = value;
    }
    repeats_ -= run;
    taken += run;
  }
}

/// Goes over blanks and line ends and, where `comma` allows it, one comma. Counts the line ends.
const char* skip_separators_at_hand(const char* from, bool comma, std::int64_t& lines) {
  for (; is_blank(*from) || (comma && *from == ','); ++from) {
    lines += *from == '\n';
    if (*from == ',') comma = false;
  }
  return from;
}

/// Has a whole number in the buffer, oddities aside. False near the end of the file, and where a
/// pipe hands over less at a time.
bool ListReader::number_at_hand() {
  const auto enough = [&] { return file_.end() - file_.begin() >= bytes_at_hand; };
  return enough() || (file_.more() && enough());
}

/// Takes plain numbers one after another, without a copy of their text, up to the first that is
/// anything else; returns how many.
template <bool keep, class Number>
std::int64_t ListReader::take_plain(Number* to, std::int64_t stride, std::int64_t count) {
  std::int64_t left = count;
  std::int64_t lines = 0;
  bool comma = comma_may_end_;
  bool plain = true;
  while (plain && left > 0 && number_at_hand()) {
    const char* at = file_.begin();
    const char* const end = file_.end();
    do {
      std::int64_t line_ends = 0;
      const char* from = at;
      while (*from == ' ') ++from;
      if (*from <= ',') from = skip_separators_at_hand(from, comma, line_ends);
      Number value;
      const char* const stop = keep ? parse_plain(from, end, value) : skip_plain<Number>(from, end);
      // The byte at `end` ends no number.
      plain = stop != nullptr && ends_token(*stop);
      if (!plain) break;
      if constexpr (keep) to[(count - left) * stride] = value;
      lines += line_ends;
      comma = true;
      at = stop;
      --left;
    } while (left > 0 && end - at >= bytes_at_hand);
    file_.use_up_to(at);
  }
  line_ += lines;
  comma_may_end_ = comma;
  any_taken_ = any_taken_ || left < count;
  return count - left;
}

template <class Number>
Number ListReader::parsed(std::string_view token) {
  Number value{};
  if (!parse_number(token, value)) not_a_number(token, expected_kind(value));
  return value;
}

/// Sets `token_` and `repeats_` to what comes next, or `ended_` at a slash.
void ListReader::next_item() {
  token_.clear();
  repeats_ = 1;
  const Item item = skip_separators();
  any_taken_ = true;
  ended_ = item == Item::end_of_list;
  comma_may_end_ = true;
  if (item != Item::token) return;
  take_token();
  const std::size_t star = token_.find('*');
  if (star == token_.npos) return;
  const char* const first = token_.data();
  const auto [end, error] = std::from_chars(first, first + star, repeats_);
  if (error != std::errc{} || end != first + star || repeats_ < 1) {
    not_a_number(token_, "a repeat count before the asterisk");
  }
  token_.erase(0, star + 1);
}

ListReader::Item ListReader::skip_separators() {
  skip_blanks();
  if (comma_may_end_ && *file_.begin() == ',') {
    file_.use_up_to(file_.begin() + 1);
    comma_may_end_ = false;
    skip_blanks();
  }
  const char next = *file_.begin();
  return next == ',' ? Item::null : next == '/' ? Item::end_of_list : Item::token;
}

/// Skips blanks and line ends; throws at the end of the file.
void ListReader::skip_blanks() {
  do {
    if (file_.at_end()) {
      throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "more values"};
    }
  } while (blank_at_hand());
}

/// Uses the blanks in the buffer; true if there was nothing else in it.
bool ListReader::blank_at_hand() {
  const char* const end = file_.end();
  const char* at = file_.begin();
  for (; at != end && is_blank(*at); ++at) line_ += *at == '\n';
  file_.use_up_to(at);
  return at == end;
}

void ListReader::take_token() {
  do {
    const char* const begin = file_.begin();
    const char* const end = std::find_if(begin, file_.end(), ends_token);
    token_.append(begin, end);
    file_.use_up_to(end);
    if (std::ssize(token_) > longest_token) not_a_number(token_, "a number");
  } while (!file_.at_end() && !ends_token(*file_.begin()));
}

void ListReader::finish() {
  if (!any_taken_ && file_.at_end()) {
    throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "a line"};
  }
  while (!file_.at_end()) {
    const char* const begin = file_.begin();
    const void* found = std::memchr(begin, '\n', static_cast<std::size_t>(file_.end() - begin));
    if (found != nullptr) {
      file_.use_up_to(static_cast<const char*>(found) + 1);
      ++line_;
      return;
    }
    file_.use_up_to(file_.end());
  }
}

void ListReader::not_a_number(std::string_view token, const char* expected) {
  throw ReadError{status_error, file_.offset(), "\"" + printable(token) + "\"", expected};
}

}  // namespace mod_p3dgrid::recordio
