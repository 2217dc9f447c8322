#pragma once

#include <functional>
#include <string>
#include <vector>

#include "restart/restart_case.hpp"

/// The restart files that the operations are tried on, and the module's state for them.
namespace faults {

/// One of each layout, encoding and precision: two blocks where the layout has more than one, two
/// sections, or one with an extension for layout 101, and older levels where there can be some.
[[nodiscard]] std::vector<test_support::HandMadeRestart> restart_files();

/// Highest variable that the file holds.
[[nodiscard]] int variables_in(const test_support::HandMadeRestart& made);

/// For `Operation::may_read_as`, of results that begin with the flow array.
[[nodiscard]] std::function<bool(const std::string&, const std::string&)> may_read_flow_as(
    const test_support::HandMadeRestart& made);

void prepare_read(const test_support::HandMadeRestart& made);
void prepare_write(const test_support::HandMadeRestart& made);

}  // namespace faults
