#include "detect/text_tokens.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>

namespace p3dgrid {
namespace {

constexpr std::size_t first_chunk = 1 << 12;  // a header, as a rule
constexpr std::size_t chunk = 1 << 18;

// Longer than any number: what goes on without a separator is no text, and is cut here.
constexpr std::size_t longest_word = 4096;

bool is_blank(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool ends_word(char c) {
  return is_blank(c) || c == ',' || c == '/';
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

const char* skip_digits(const char* at, const char* end) {
  while (at != end && is_digit(*at)) ++at;
  return at;
}

const char* skip_sign(const char* at, const char* end) {
  return at != end && (*at == '+' || *at == '-') ? at + 1 : at;
}

bool is_exponent(const char* at, const char* end) {
  const bool letter = std::strchr("eEdDqQ", *at) != nullptr;
  const char* const digits = skip_sign(letter ? at + 1 : at, end);
  if (!letter && digits == at) return false;
  return digits != end && skip_digits(digits, end) == end;
}

/// NaN, NaN(...), Inf, Infinity in any case.
bool is_named_number(std::string_view text) {
  const auto begins = [&](std::string_view word) {
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                    [](char w, char t) { return w == (t | 0x20); });
  };
  if (begins("nan")) {
    return text.size() == 3 || (text.size() >= 5 && text[3] == '(' && text.back() == ')');
  }
  return begins("inf") && (text.size() == 3 || (text.size() == 8 && begins("infinity")));
}

}  // namespace

bool is_number(std::string_view token) {
  const char* const end = token.data() + token.size();
  const char* const begin = skip_sign(token.data(), end);
  const char* at = skip_digits(begin, end);
  std::ptrdiff_t digits = at - begin;
  if (at != end && *at == '.') {
    const char* const fraction = ++at;
    at = skip_digits(at, end);
    digits += at - fraction;
  }
  if (digits == 0) return is_named_number({begin, static_cast<std::size_t>(end - begin)});
  return at == end || is_exponent(at, end);
}

std::optional<std::int32_t> integer_in(std::string_view token) {
  if (token.starts_with('+')) token.remove_prefix(1);
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(token.begin(), token.end(), value);
  if (error != std::errc() || end != token.end()) return std::nullopt;
  return value;
}

bool is_text(std::string_view start) {
  const auto readable = [](char c) {
    const auto code = static_cast<unsigned char>(c);
    return std::isprint(code) != 0 || std::isspace(code) != 0;
  };
  return !start.empty() && std::ranges::all_of(start, readable);
}

bool TextTokens::fill() {
  const std::size_t kept = buffer_.size() - at_;
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(at_));
  const std::size_t wanted = buffer_end_ == 0 ? first_chunk : chunk;
  buffer_.resize(kept + wanted);
  const std::size_t count = source_->read(buffer_end_, std::span(buffer_).subspan(kept));
  buffer_.resize(kept + count);
  buffer_end_ += count;
  at_ = 0;
  return count > 0;
}

/// Up to the next token, null value or slash; false when a null value comes next.
bool TextTokens::skip_separators() {
  comma_line_ = 0;
  while (!at_end()) {
    const char c = buffer_[at_];
    if (c == ',') {
      if (!comma_may_end_) return false;
      comma_may_end_ = false;
      if (line_ > last_line_) comma_line_ = line_;
    } else if (!is_blank(c)) {
      return true;
    } else if (c == '\n') {
      ++line_;
    }
    ++at_;
  }
  return true;
}

std::string_view TextTokens::take_word() {
  std::size_t end = at_;
  for (;;) {
    while (end < buffer_.size() && !ends_word(buffer_[end])) ++end;
    if (end < buffer_.size() || end - at_ > longest_word) break;
    const std::size_t length = end - at_;
    const bool more = fill();  // which moves what is at hand to the front
    end = at_ + length;
    if (!more) break;
  }
  const std::string_view word(buffer_.data() + at_, end - at_);
  at_ = end;
  return word;
}

TextToken TextTokens::next() {
  TextToken token;
  const bool null = !skip_separators();
  token.line = line_;
  token.comma_line = comma_line_;
  last_line_ = line_;
  if (null) {
    ++at_;
    token.kind = TextToken::Kind::null;
  } else if (at_end()) {
    token.kind = TextToken::Kind::end;
  } else if (buffer_[at_] == '/') {
    ++at_;
    token.kind = TextToken::Kind::slash;
  } else {
    token.kind = TextToken::Kind::value;
    token.value = take_word();
    if (const std::size_t star = token.value.find('*'); star != token.value.npos) {
      const char* const first = token.value.data();
      const auto [end, error] = std::from_chars(first, first + star, token.repeats);
      if (error != std::errc() || end != first + star || token.repeats < 1) token.repeats = 0;
      if (token.repeats > 0) token.value.remove_prefix(star + 1);
      if (token.value.empty()) token.kind = TextToken::Kind::null;
    }
    comma_may_end_ = true;
  }
  token.bytes = buffer_end_ - (buffer_.size() - at_);
  return token;
}

void TextTokens::skip_line() {
  comma_may_end_ = false;
  while (!at_end()) {
    if (buffer_[at_++] != '\n') continue;
    ++line_;
    return;
  }
}

}  // namespace p3dgrid
