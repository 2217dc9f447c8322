#pragma once

#include <MOD_P3DReader.hpp>
#include <bit>
#include <string>
#include <string_view>

namespace p3dgrid {

/// The values are the library's file-format codes.
enum class Encoding : mod_p3dgrid::integer { unformatted = 0, formatted = 1, binary = 2 };

enum class Precision { single_precision, double_precision };

/// Of integers, reals and record markers; text has none.
using ByteOrder = std::endian;

/// True when files of this kind hold 64-bit reals; text holds digits, whatever the precision asked
/// for.
[[nodiscard]] bool holds_doubles(Encoding encoding, Precision precision);

/// True when values lose digits between a file of `Form` `read` and one `written`, because they
/// pass through single precision. Text may hold any number of digits; that some are lost shows only
/// where more are then written.
template <class Form>
[[nodiscard]] bool loses_digits(const Form& read, const Form& written) {
  return holds_doubles(read.encoding, read.precision) ||
         (read.encoding == Encoding::formatted &&
          holds_doubles(written.encoding, written.precision));
}

/// For people: "unformatted, little-endian, single precision", "formatted".
[[nodiscard]] std::string describe(Encoding encoding, Precision precision, ByteOrder order);

[[nodiscard]] const char* name_of(Encoding encoding);
[[nodiscard]] const char* name_of(Precision precision);
[[nodiscard]] const char* name_of(ByteOrder order);
[[nodiscard]] const char* name_of(bool choice);

}  // namespace p3dgrid
