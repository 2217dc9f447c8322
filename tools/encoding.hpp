#pragma once

#include <MOD_P3DReader.hpp>
#include <string>
#include <string_view>

namespace p3dgrid {

/// The values are the library's file-format codes.
enum class Encoding : mod_p3dgrid::integer { unformatted = 0, formatted = 1, binary = 2 };

enum class Precision { single_precision, double_precision };

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

/// For people: "unformatted, single precision", "formatted".
[[nodiscard]] std::string describe(Encoding encoding, Precision precision);

[[nodiscard]] const char* name_of(Encoding encoding);
[[nodiscard]] const char* name_of(Precision precision);
[[nodiscard]] const char* name_of(bool choice);

/// Adds "option actual" to a list of options as they are typed, where `stated` is not `actual`.
template <class Choice>
void append_option(std::string& options, std::string_view option, Choice stated, Choice actual) {
  if (stated == actual) return;
  if (!options.empty()) options += ' ';
  options.append(option).append(" ").append(name_of(actual));
}

}  // namespace p3dgrid
