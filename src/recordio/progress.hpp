#pragma once

#include <cstddef>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid::recordio {

/// Most bytes that one system call is asked to move, so that long transfers are reported too.
inline constexpr std::size_t most_bytes_per_call = std::size_t{64} * 1024 * 1024;

/// Whether the host has installed an observer.
extern bool progress_is_observed;

/// Calls the observer.
void call_progress_observer(const FileProgress& progress);

inline void report_progress(const FileProgress& progress) {
  if (progress_is_observed) call_progress_observer(progress);
}

}  // namespace mod_p3dgrid::recordio
