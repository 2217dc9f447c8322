#include "ours/measure.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <system_error>

/// Instruction counts are limited to the function of this name.
extern "C" [[gnu::noinline]] void measured_operation(const std::function<void()>& operation) {
  operation();
  // Prevents a tail call, which would hide the end of the function.
  asm volatile("" ::: "memory");
}

namespace bench {

std::string path_of(const Request& request, std::string_view name) {
  if (name == "input") return request.input;
  return name == "output" ? request.output : request.output + "." + std::string(name);
}

double timed(const std::function<void()>& operation) {
  // Resets the peak, so that preparations are excluded.
  std::ofstream("/proc/self/clear_refs") << "5";
  const auto start = std::chrono::steady_clock::now();
  measured_operation(operation);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void flush_to_disk(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool forced = file >= 0 && ::fsync(file) == 0;
  const int error = errno;
  if (file >= 0) ::close(file);
  if (!forced) throw std::system_error(error, std::generic_category(), path);
}

std::int64_t bit_sum(std::span<const float> values) {
  std::int64_t sum = 0;
  for (const float value : values) sum += std::bit_cast<std::int32_t>(value);
  return sum;
}

std::int64_t peak_kib() {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::int64_t peak = 0;
  while (status >> word) {
    if (word == "VmHWM:") status >> peak;
  }
  return peak;
}

}  // namespace bench
