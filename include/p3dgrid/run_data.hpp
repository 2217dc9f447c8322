#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

namespace p3dgrid {

/// Values of a restart header, under the names of the module variables. Those that the layout does
/// not have are 0.
struct RunData {
  std::int32_t nstep = 0;        ///< step count; layouts 0, 1, 100, 101
  double dtau = 0;               ///< step size; the same layouts
  std::int32_t fileversion = 0;  ///< layout 0, like all up to `talprt`
  std::int32_t eqid = 0;         ///< equation set; the values from `isgsmodel` on exist for 1
  std::int32_t talnvar = 0;      ///< number of variables
  std::int32_t itimeint = 0;     ///< time-integration scheme
  std::int32_t ibeta = 0;        ///< as stored
  std::int32_t isgsmodel = 0;    ///< subgrid-scale model
  double talre = 0;              ///< Reynolds number
  double talxm1 = 0;             ///< Mach number
  double talalfa = 0;            ///< angle of attack
  double talbeta = 0;            ///< as stored
  double talgam = 0;             ///< as stored
  double tals1 = 0;              ///< as stored
  double talpr = 0;              ///< as stored
  double talprt = 0;             ///< as stored
  std::int32_t species = 0;      ///< number of species; OVERFLOW solutions
};

}  // namespace p3dgrid

#pragma GCC visibility pop
