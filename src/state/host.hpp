#pragma once

#include <new>
#include <optional>
#include <utility>

#include "mod_gridvars.hpp"

/// The host's procedures as the operations call them. What they throw leaves the operation as it
/// is: a host that throws `std::bad_alloc` means just that, and is told apart here from memory that
/// runs out inside an operation.
namespace mod_p3dgrid::host {

/// Whether a `std::bad_alloc` on its way out of an operation is the host's own.
inline bool threw_bad_alloc = false;

/// Called where a `std::bad_alloc` is handled: throws on the host's own.
inline void pass_on_bad_alloc() {
  if (std::exchange(threw_bad_alloc, false)) throw;
}

/// Calls what belongs to the host.
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
