#include "text_values.hpp"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "detect/text_tokens.hpp"

namespace p3dgrid {
namespace {

/// A number beyond either range counts as different; so does NaN, and what is no number.
bool rounds_the_same_by_way_of_double(std::string_view value) {
  std::string text(value.starts_with('+') ? value.substr(1) : value);
  std::ranges::replace_if(
      text, [](char c) { return std::string_view("dDqQ").find(c) < 4; }, 'e');
  float direct = 0;
  double by_way = 0;
  const auto all_of = [&](auto& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
  };
  return all_of(direct) && all_of(by_way) && direct == static_cast<float>(by_way);
}

}  // namespace

bool survives_double_precision(const std::string& path) {
  ByteSource source(path);
  TextTokens tokens(source);
  for (;;) {
    const TextToken token = tokens.next();
    if (token.kind == TextToken::Kind::end) return true;
    if (token.kind != TextToken::Kind::value || token.repeats == 0) return false;
    if (!rounds_the_same_by_way_of_double(token.value)) return false;
  }
}

}  // namespace p3dgrid
