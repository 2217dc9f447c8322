#pragma once

#include <functional>
#include <optional>

#include "failure.hpp"

/// The process of a program, from its beginning to its exit status.
namespace p3dgrid::tool {

/// Turns a closed pipe and a file-size limit into write errors instead of signals, and occupies the
/// descriptors of closed standard streams, so that no opened file gets one.
void prepare_process();

/// Runs a step and returns its failure; none if it succeeds.
[[nodiscard]] std::optional<Failure> failure_of(const std::function<void()>& step);

/// Runs a step, prints its failure, and returns the exit status.
[[nodiscard]] ExitStatus attempt(const std::function<void()>& step);

}  // namespace p3dgrid::tool
