#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/encoding.hpp"

namespace interop {

/// How a restart file holds a flow solution.
struct RestartForm {
  int layout;    ///< restart layout code
  int encoding;  ///< 0 unformatted, 1 formatted, 2 binary
  bool is_double;
  bool multiblock = true;  ///< layouts 2 and 3: the file begins with a block count
  std::vector<std::pair<int, int>> sections{{1, 5}};
  int equation_set = 0;           ///< layout 0
  int time_integration = 0;       ///< layout 0
  std::vector<int> flags{999};    ///< layout 101
  bool planar = false;            ///< layouts 2 and 3: two dimensions
  bool leading = has_triplets();  ///< the blocks begin with the triplets

  [[nodiscard]] bool is_text() const { return encoding == 1; }
  [[nodiscard]] bool has_triplets() const { return layout == 100 || layout == 101; }
  /// The reals that may be of either kind are doubles; in text those of the header always are.
  [[nodiscard]] bool has_double_header() const { return is_double || is_text(); }
  /// Records of older time levels behind the sections of a block.
  [[nodiscard]] int older_levels() const;
  /// Whether it is the third momentum of a file of two dimensions.
  [[nodiscard]] bool leaves_out(int variable) const {
    return planar && layout == 2 && variable == 4;
  }
  /// Whether there is a place for the values of a variable, counted from 1.
  [[nodiscard]] bool holds_variable(int variable) const;
  /// Highest variable that has a place.
  [[nodiscard]] int highest_variable() const;
  /// The form in which another reader takes a text file: the precision of its flow is the reader's.
  [[nodiscard]] RestartForm as_single() const;
  /// A name for tests and files, of letters, digits and underscores.
  [[nodiscard]] std::string name() const;
};

}  // namespace interop
