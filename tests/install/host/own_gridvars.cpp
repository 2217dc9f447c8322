/// A host's own mod_gridvars: it shows each announcement, and gives up on any failure.

#include <cstdio>
#include <cstdlib>

#include "mod_gridvars.hpp"

namespace mod_gridvars {

integer nfilesect = 0;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer& mode, const integer&, const integer&, const FileName& filename,
                   const integer&, const logical&, const std::optional<integer>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&) {
  std::printf("own mod_gridvars: %s %.*s\n", mode == 1 ? "read" : "write",
              static_cast<int>(filename.view().size()), filename.view().data());
}

void checkallocationerror(const integer& status) {
  if (status != 0) std::exit(3);
}

void dispfilereaderror() {
  std::exit(4);
}

}  // namespace mod_gridvars
