#include "streaming/variable_file_name.hpp"

#include <string>

#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit.hpp"

namespace mod_p3dgrid {

FileName variable_file_name(std::string_view prefix, integer variable) {
  constexpr std::size_t digits = 6;
  return FileName::cut(std::string(prefix) + zero_padded(variable, digits) + ".tmp");
}

FileName first_free_name(FileName name) {
  while (file_exists(name)) {
    const FileName longer = FileName::cut(std::string(name.view()) + "t");
    if (longer == name) {
      fail_run("no free name for a temporary file: " + path_of(name) +
               " exists and cannot be longer");
    }
    name = longer;
  }
  return name;
}

}  // namespace mod_p3dgrid
