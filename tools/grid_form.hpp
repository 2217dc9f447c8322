#pragma once

#include <optional>
#include <string>

#include "encoding.hpp"

namespace p3dgrid {

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

/// For people: "binary, double precision, multi-block, with blanking".
[[nodiscard]] std::string describe(const GridForm& form);

/// The options that turn `stated` into `actual`, as they are typed; empty when they are equal.
[[nodiscard]] std::string options_between(const GridForm& stated, const GridForm& actual);

}  // namespace p3dgrid
