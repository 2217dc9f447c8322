#include "plot/words.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr const char* between_remarks = "   \u00b7   ";
constexpr const char* left_out = "\u2026";
constexpr char replacement = '?';

/// Bytes of the UTF-8 character that begins there; 0 where none does.
std::size_t character_at(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t n) {
    return at + n < text.size() ? static_cast<unsigned char>(text[at + n]) : 0U;
  };
  const unsigned lead = byte(0);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7f ? 1 : 0;
  const std::size_t bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4) return 0;
  for (std::size_t n = 1; n < bytes; ++n) {
    if ((byte(n) & 0xc0U) != 0x80) return 0;
  }
  // Longer than need be, half of a pair, or beyond the last character.
  const bool odd = (lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xed && byte(1) > 0x9f) ||
                   (lead == 0xf0 && byte(1) < 0x90) || (lead == 0xf4 && byte(1) > 0x8f);
  return odd ? 0 : bytes;
}

std::vector<std::string> characters_of(const std::string& text) {
  std::vector<std::string> characters;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = character_at(text, at);
    characters.push_back(bytes == 0 ? std::string(1, replacement) : text.substr(at, bytes));
    at += bytes == 0 ? 1 : bytes;
  }
  return characters;
}

}  // namespace

std::string drawable(const std::string& text) {
  std::string result;
  for (const std::string& character : characters_of(text)) result += character;
  return result;
}

std::string fitted(Canvas& canvas, const std::string& text, const Font& font, double room) {
  if (canvas.text_width(text, font) <= room) return text;
  const std::vector<std::string> characters = characters_of(text);
  for (std::size_t kept = characters.size(); kept-- > 0;) {
    std::string shorter;
    for (std::size_t n = 0; n < kept - kept / 2; ++n) shorter += characters[n];
    shorter += left_out;
    for (std::size_t n = characters.size() - kept / 2; n < characters.size(); ++n) {
      shorter += characters[n];
    }
    if (canvas.text_width(shorter, font) <= room) return shorter;
  }
  return "";
}

std::vector<std::string> wrapped(Canvas& canvas, const std::vector<std::string>& remarks,
                                 const Font& font, double room) {
  std::vector<std::string> lines;
  for (const std::string& remark : remarks) {
    const std::string joined = lines.empty() ? remark : lines.back() + between_remarks + remark;
    if (!lines.empty() && canvas.text_width(joined, font) <= room) {
      lines.back() = joined;
    } else {
      lines.push_back(fitted(canvas, remark, font, room));
    }
  }
  return lines;
}

}  // namespace p3dgrid::tool::plot
