#include <cstddef>
#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {
namespace {

/// Whether the byte at that place is a control character, or part of one of UTF-8's: those from
/// U+0080 to U+009F are C2 and a second byte.
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
  // Most texts hold none, and need no memory then.
  std::size_t at = 0;
  while (at < text.size() && !is_control(text, at)) ++at;
  if (at == text.size()) return text;
  std::string shown = text.substr(0, at);
  for (; at < text.size(); ++at) {
    if (is_control(text, at)) {
      shown += escaped(text[at]);
    } else {
      shown += text[at];
    }
  }
  return shown;
}

}  // namespace mod_p3dgrid
