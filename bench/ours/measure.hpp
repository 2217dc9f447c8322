#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace bench {

/// One measured operation, as the command line asks for it.
struct Request {
  std::string form;         ///< unformatted, formatted or binary
  std::string precision;    ///< single or double
  std::string input;        ///< the file read, or the arrays to write
  std::string output;       ///< the file written
  bool new_output = false;  ///< delete `output` before each write
};

/// Where the library finds the file that a case calls `name`: input, output, and whatever else
/// beside the output.
[[nodiscard]] std::string path_of(const Request& request, std::string_view name);

struct Outcome {
  double seconds = 0.0;
  std::int64_t check = 0;  ///< what `bit_sum` makes of the values read
};

/// Seconds that the operation takes. Everything else that a case does lies outside.
[[nodiscard]] double timed(const std::function<void()>& operation);

/// Returns when the file is on the disk. Throws std::system_error if that fails.
void force_to_disk(const std::string& path);

/// Sum of the values' bits as signed integers; the other side of a pair must come to the same.
[[nodiscard]] std::int64_t bit_sum(std::span<const float> values);

/// Most memory that this process has had resident since `timed` began, in KiB. Not what getrusage
/// says: its figure begins with that of the process that started this one.
[[nodiscard]] std::int64_t peak_kib();

}  // namespace bench
