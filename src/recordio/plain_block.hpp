#pragma once

#include <bit>
#include <cstdint>

#include "recordio/characters.hpp"

/// Counts the plain numbers of 64 characters at once. Bit i of a mask stands for character i.
namespace mod_p3dgrid::recordio {

inline constexpr int block_characters = 64;

struct BlockCount {
  int numbers = 0;
  int line_ends = 0;   ///< before the last of the numbers
  int characters = 0;  ///< up to the end of the last of the numbers
};

namespace detail {

using BlockMask = std::uint64_t;

template <class Is>
[[nodiscard]] BlockMask mask_of(const char* block, Is is) {
  BlockMask mask = 0;
  for (int i = 0; i < block_characters; i += characters_at_once) {
    mask |= BlockMask{bits_of(is(load_characters(block + i)))} << i;
  }
  return mask;
}

/// The words of a block. The separator behind the last of them is part of the block too.
struct BlockWords {
  BlockMask words, digits, points, signs, letters;

  /// Moves the bits that are at a sign to the next character.
  [[nodiscard]] BlockMask behind_sign(BlockMask at) const {
    return (at & ~signs) | (at & signs) << 1;
  }
  /// A bit where digits begin carries to the character behind them.
  [[nodiscard]] BlockMask behind_digits(BlockMask at) const { return (digits + at) & ~digits; }

  /// Whether some word is not a number, or has more than 18 characters without its signs and its
  /// exponent, or an exponent of more than three digits.
  [[nodiscard]] bool have_others() const;
};

inline bool BlockWords::have_others() const {
  const BlockMask starts = words & ~(words << 1);
  const BlockMask exponents = behind_sign(letters << 1);
  const BlockMask mantissa = digits | points;
  // Bit i is set if this many characters from i on belong to the mantissa.
  const BlockMask run2 = mantissa & mantissa >> 1;
  const BlockMask run4 = run2 & run2 >> 2;
  const BlockMask run8 = run4 & run4 >> 4;
  const BlockMask run19 = run8 & run8 >> 8 & run4 >> 15;

  const BlockMask character = words & ~(mantissa | signs | letters);
  const BlockMask sign = signs & ~(starts | letters << 1);
  const BlockMask beginning = behind_sign(starts) & ~mantissa;
  const BlockMask lone_point = points & ~(digits << 1 | digits >> 1);
  const BlockMask second_point = behind_digits(points << 1) & points;
  const BlockMask exponent = (exponents & (~digits | run4)) | (behind_digits(exponents) & words);
  return (character | sign | beginning | lone_point | second_point | exponent | run19) != 0;
}

}  // namespace detail

/// Counts the numbers of a block. Returns none if one of its words is not a number that
/// `skip_plain<double>` accepts, or a comma does not stand directly behind a number. A last word
/// that may go on behind the block is left.
/// @param block  begins with a word or a separator
/// @param comma  whether a number that a comma can end is directly before the block
[[nodiscard]] inline BlockCount count_plain(const char* block, bool comma) {
  using detail::BlockMask;
  using detail::mask_of;
  const BlockMask line_ends = mask_of(block, [](Characters c) { return c == '\n'; });
  const BlockMask commas = mask_of(block, [](Characters c) { return c == ','; });
  const BlockMask blanks =
      mask_of(block, [](Characters c) { return (c == ' ') | (c == '\t') | (c == '\r'); });
  const BlockMask separators = line_ends | commas | blanks;
  if (separators == 0) return {};
  const BlockMask whole = std::bit_floor(separators) - 1;
  const BlockMask words = ~separators & whole;
  const detail::BlockWords found{
      .words = words,
      .digits = whole & mask_of(block, [](Characters c) { return c - '0' <= 9; }),
      .points = whole & mask_of(block, [](Characters c) { return c == '.'; }),
      .signs = whole & mask_of(block, [](Characters c) { return (c == '+') | (c == '-'); }),
      // E and D, small or capital.
      .letters = whole & mask_of(block, [](Characters c) { return (c & 0xDE) == 0x44; }),
  };
  const BlockMask other_commas = commas & whole & ~(words << 1 | BlockMask{comma});
  if (words == 0 || other_commas != 0 || found.have_others()) return {};
  return {.numbers = std::popcount(words & ~(words << 1)),
          .line_ends = std::popcount(line_ends & (std::bit_floor(words) - 1)),
          .characters = static_cast<int>(std::bit_width(words))};
}

}  // namespace mod_p3dgrid::recordio
