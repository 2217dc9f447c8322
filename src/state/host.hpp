#pragma once

#include <new>
#include <optional>
#include <utility>

#include "mod_gridvars.hpp"

/// Calls of the host's procedures. Their exceptions pass through the operations. A `std::bad_alloc`
/// of the host is marked, so that it can be told from one of the library.
namespace mod_p3dgrid::host {

/// Whether the current `std::bad_alloc` was thrown by the host.
inline bool threw_bad_alloc = false;

/// Rethrows the current `std::bad_alloc` if it was thrown by the host.
inline void pass_on_bad_alloc() {
  if (std::exchange(threw_bad_alloc, false)) throw;
}

template <class Procedure, class... Arguments>
decltype(auto) call(const Procedure& procedure, Arguments&&... arguments) {
  try {
    return procedure(std::forward<Arguments>(arguments)...);
  } catch (const std::bad_alloc&) {
    threw_bad_alloc = true;
    throw;
  }
}

inline void checkallocationerror(integer status) {
  call(mod_gridvars::checkallocationerror, status);
}

inline void dispreadwrite(integer mode, integer iparm1, integer iparm2, const FileName& filename,
                          integer iformat, logical dblprec, std::optional<integer> variable,
                          std::optional<logical> useiblank, logical multiblock) {
  call(mod_gridvars::dispreadwrite, mode, iparm1, iparm2, filename, iformat, dblprec, variable,
       useiblank, multiblock, std::nullopt, std::nullopt);
}
inline constexpr integer announce_read = 1;   ///< mode of `dispreadwrite`
inline constexpr integer announce_write = 2;  ///< mode of `dispreadwrite`

inline void dispfilereaderror() {
  call(mod_gridvars::dispfilereaderror);
}

}  // namespace mod_p3dgrid::host
