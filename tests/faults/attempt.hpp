#pragma once

#include <string>

#include "faults/operations.hpp"

namespace faults {

/// How a run of an operation has ended.
enum class End {
  done,
  reported,     ///< one failed read, told to the host
  failed,       ///< a fatal error, with a message
  halted,       ///< halted by the module, which has said why on standard output
  out_of_hand,  ///< anything else
};

struct Outcome {
  End end = End::out_of_hand;
  std::string message;  ///< of the end, or why a read has failed
  std::string result;   ///< when done
  int refused_allocations = 0;
};

/// Makes the call of a started operation.
[[nodiscard]] Outcome finish(const Started& started);

/// Begins a run of the host's and carries the operation out in it.
[[nodiscard]] Outcome attempt(const Operation& operation);

}  // namespace faults
