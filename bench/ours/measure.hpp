#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace bench {

/// The arguments of one measured operation.
struct Request {
  std::string form;         ///< unformatted, formatted or binary
  std::string precision;    ///< single or double
  std::string input;        ///< the file read, or the arrays to write
  std::string output;       ///< the file written
  bool new_output = false;  ///< delete `output` before each write
};

/// The path of a file by its name in a case: `input`, `output`, or another one beside the output.
[[nodiscard]] std::string path_of(const Request& request, std::string_view name);

struct Outcome {
  double seconds = 0.0;
  std::int64_t check = 0;  ///< `bit_sum` of the values read
};

/// Seconds that the operation takes.
[[nodiscard]] double timed(const std::function<void()>& operation);

/// Flushes the file to the disk. Throws std::system_error if that fails.
void flush_to_disk(const std::string& path);

/// Sum of the values' bits as signed integers, to be compared with that of the other side.
[[nodiscard]] std::int64_t bit_sum(std::span<const float> values);

/// Peak resident memory since `timed` began, in KiB. The figure of getrusage would include the
/// parent process.
[[nodiscard]] std::int64_t peak_kib();

}  // namespace bench
