#include "streaming/staging.hpp"

namespace mod_p3dgrid {

OneVariableStaging& one_variable_staging() {
  static OneVariableStaging staging;
  return staging;
}

VariableWriteStaging& variable_write_staging() {
  static VariableWriteStaging staging;
  return staging;
}

}  // namespace mod_p3dgrid
