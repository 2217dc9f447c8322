#pragma once

#include <string>

#include "support/encoding.hpp"

namespace interop {

/// How a grid file holds its grid.
struct GridLayout {
  int encoding;  ///< 0 unformatted, 1 formatted, 2 binary
  bool is_double;
  bool multiblock;
  bool has_iblank;
  bool planar = false;  ///< two dimensions

  [[nodiscard]] bool is_text() const { return encoding == 1; }
  [[nodiscard]] std::string encoding_name() const { return name_of_encoding(encoding); }
  [[nodiscard]] std::string precision_name() const { return name_of_precision(is_double); }
  /// A name for tests and files, of letters and underscores.
  [[nodiscard]] std::string name() const {
    return encoding_name() + "_" + precision_name() +
           (multiblock ? "_multiblock" : "_single_block") + (has_iblank ? "_iblank" : "_plain") +
           (planar ? "_planar" : "");
  }
};

}  // namespace interop
