#pragma once

#include <MOD_P3DReader.hpp>
#include <optional>
#include <vector>

#include "detect/header_reader.hpp"
#include "extents.hpp"
#include "restart_form.hpp"

namespace p3dgrid {

/// What a header says of the records that follow.
struct Outline {
  mod_p3dgrid::integer blocks = 1;
  Extents extents;                              ///< empty where the header has none
  std::vector<mod_p3dgrid::integer> functions;  ///< of each block, layout 3 only
  bool flow_parameters = false;                 ///< layout 0: the header goes on with them
  int older_levels = 0;                         ///< layout 0: records behind each block
};

/// The header of a grid; none where it cannot be one: a block count below 1, negative extents,
/// more points than any machine holds.
[[nodiscard]] std::optional<Outline> grid_outline(HeaderReader& header, bool multiblock);

/// The header of a restart file likewise.
[[nodiscard]] std::optional<Outline> restart_outline(HeaderReader& header, const RestartForm& form);

}  // namespace p3dgrid
