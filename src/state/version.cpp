#include "mod_p3dgrid/version.hpp"

namespace mod_p3dgrid {

const char* p3dversion() noexcept {
  return MOD_P3DGRID_VERSION;
}

}  // namespace mod_p3dgrid
