#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <limits>

/// Stands between the library and the system: makes the n-th call of a kind fail, or reads and
/// writes take few bytes at a time.
namespace faults {

enum class Call {
  open,
  read,
  pread,
  write,
  pwrite,
  close,
  fstat,
  stat,
  lstat,
  lseek,
  unlink,
  ftruncate,
  fallocate
};
inline constexpr std::size_t kinds_of_calls = 13;

[[nodiscard]] const char* name_of(Call call);

struct CallPlan {
  Call call = Call::open;
  int nth = 0;    ///< from 1; 0 for none
  int error = 0;  ///< 0: the call is carried out, after `before`
  std::size_t most_bytes = std::numeric_limits<std::size_t>::max();  ///< per read and write
  std::function<void()> before = nullptr;  ///< is done before the n-th call
};

/// Counts and changes system calls while it lives, except those of the host.
class CallWatch {
 public:
  explicit CallWatch(CallPlan plan = {});
  CallWatch(const CallWatch&) = delete;
  CallWatch& operator=(const CallWatch&) = delete;
  ~CallWatch();

  /// Calls of that kind so far.
  [[nodiscard]] static int count(Call call);
};

}  // namespace faults
