#include <cstddef>
#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {
namespace {

/// Whether the byte is a control character, or part of U+0080 to U+009F, which have two bytes in
/// UTF-8, the first of which is C2.
bool is_control(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t place) { return static_cast<unsigned char>(text[place]); };
  const auto begins_one = [&](std::size_t place) {
    return place + 1 < text.size() && byte(place) == 0xc2 && byte(place + 1) >= 0x80 &&
           byte(place + 1) < 0xa0;
  };
  return byte(at) < 0x20 || byte(at) == 0x7f || begins_one(at) || (at > 0 && begins_one(at - 1));
}

std::string escaped(char character) {
  switch (character) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    default: {
      constexpr const char* digits = "0123456789abcdef";
      const auto byte = static_cast<unsigned char>(character);
      return {'\\', 'x', digits[byte / 16], digits[byte % 16]};
    }
  }
}

}  // namespace

std::string p3dprintable(std::string text) {
  // Most texts have no control characters and need no memory.
  std::size_t at = 0;
  while (at < text.size() && !is_control(text, at)) ++at;
  if (at == text.size()) return text;
  std::string shown = text.substr(0, at);
  for (; at < text.size(); ++at) {
    shown += is_control(text, at) ? escaped(text[at]) : std::string(1, text[at]);
  }
  return shown;
}

}  // namespace mod_p3dgrid
