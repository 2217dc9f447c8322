#pragma once

#include <MOD_P3DReader.hpp>
#include <optional>
#include <string>

namespace p3dgrid {

/// The values are the library's file-format codes.
enum class Encoding : mod_p3dgrid::integer { unformatted = 0, formatted = 1, binary = 2 };

enum class Precision { single_precision, double_precision };

/// What has to be known of a grid file to read it; the file itself does not say.
struct GridForm {
  Encoding encoding = Encoding::unformatted;
  Precision precision = Precision::single_precision;
  bool multiblock = true;
  bool iblank = false;

  friend bool operator==(const GridForm&, const GridForm&) = default;
};

/// Where a file to be written shall differ from the one that was read.
struct GridFormChange {
  std::optional<Encoding> encoding;
  std::optional<Precision> precision;
  std::optional<bool> multiblock;
  std::optional<bool> iblank;

  [[nodiscard]] GridForm applied_to(const GridForm& read) const;
};

/// True when the file holds 64-bit reals; text holds digits, whatever the precision asked for.
[[nodiscard]] bool holds_doubles(const GridForm& form);

/// For people: "binary, double precision, multi-block, with blanking".
[[nodiscard]] std::string describe(const GridForm& form);

/// The options that turn `stated` into `actual`, as they are typed; empty when they are equal.
[[nodiscard]] std::string options_between(const GridForm& stated, const GridForm& actual);

[[nodiscard]] const char* name_of(Encoding encoding);
[[nodiscard]] const char* name_of(Precision precision);
[[nodiscard]] const char* name_of(bool choice);

}  // namespace p3dgrid
