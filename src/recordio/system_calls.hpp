#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>

#include "mod_p3dgrid/run.hpp"
#include "recordio/handler.hpp"

namespace mod_p3dgrid::recordio {

/// How a file is opened.
enum class OpenStatus : std::uint8_t {
  old,      ///< must exist; it is read
  unknown,  ///< created, or replaced once something is written
  fresh,    ///< must not exist; it is written
};

/// Returns a descriptor. Throws `SystemError`.
[[nodiscard]] int open_file(const std::string& path, OpenStatus status);

/// Repeats a system call while signals interrupt it.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// Most bytes that one system call is asked to move, so that long transfers are reported too.
inline constexpr std::size_t most_bytes_per_call = std::size_t{64} * 1024 * 1024;

inline constinit Handler<void(const FileProgress&)> progress_observer;

inline void report_progress(const FileProgress& progress) {
  if (progress_observer) progress_observer(progress);
}

}  // namespace mod_p3dgrid::recordio
