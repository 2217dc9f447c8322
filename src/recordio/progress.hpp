#pragma once

#include <cstddef>

#include "mod_p3dgrid/run.hpp"
#include "recordio/handler.hpp"

namespace mod_p3dgrid::recordio {

/// Most bytes that one system call is asked to move, so that long transfers are reported too.
inline constexpr std::size_t most_bytes_per_call = std::size_t{64} * 1024 * 1024;

inline constinit Handler<void(const FileProgress&)> progress_observer;

inline void report_progress(const FileProgress& progress) {
  if (progress_observer) progress_observer(progress);
}

}  // namespace mod_p3dgrid::recordio
