#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "p3dgrid/reading.hpp"

#pragma GCC visibility push(default)

namespace p3dgrid {

/// Kinds of failures.
enum class ErrorKind : std::uint8_t {
  system,       ///< a file cannot be opened, read or written
  damaged,      ///< a file ends too early, or its contents contradict its form
  unknown,      ///< a file has no form that can be read
  ambiguous,    ///< a file has several possible forms, which are in `readings`
  wrong_kind,   ///< a restart file in place of a grid, or the other way round
  mismatch,     ///< a file is not what was stated, or does not belong to its grid
  unsupported,  ///< a known form that cannot be read, or values that a form cannot hold
  argument,     ///< an argument has no meaning, such as the number of a block that does not exist
};

/// Thrown by all functions of this namespace. `what()` is one line with the file, the place and the
/// reason; control characters in it are escaped.
///
/// Lack of memory is `std::bad_alloc`.
class Error : public std::runtime_error {
 public:
  /// What is known of a failure.
  struct Details {
    ErrorKind kind = ErrorKind::damaged;  ///< the kind of failure
    std::string file = {};                ///< path
    std::string reason = {};              ///< for `what()`; if empty, place, `found` and `expected`
    std::int64_t record = 0;              ///< record that was read, from 1; 0 if none was
    std::int64_t line = 0;                ///< line of a text file, from 1; 0 if unknown
    std::int64_t offset = 0;              ///< byte of the file, from 0
    std::string found = {};               ///< what the file holds there
    std::string expected = {};            ///< what it should hold
    std::vector<Reading> readings = {};   ///< the possible forms
  };

  /// @param details  taken over
  explicit Error(Details details);

  /// The kind of failure.
  [[nodiscard]] ErrorKind kind() const { return details_.kind; }
  /// All that is known of it.
  [[nodiscard]] const Details& details() const { return details_; }

 private:
  Details details_;
};

}  // namespace p3dgrid

#pragma GCC visibility pop
