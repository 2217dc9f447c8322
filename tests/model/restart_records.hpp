#pragma once

#include <string>
#include <variant>
#include <vector>

#include "model/operation.hpp"

namespace model {

/// A real in the precision of the file, or one that is a double in every file of records.
struct Real {
  double value;
};
struct WideReal {
  double value;
};
using Item = std::variant<mod_p3dgrid::integer, Real, WideReal>;
using Record = std::vector<Item>;

/// The values that files made for an operation hold; all can be told in single precision.
[[nodiscard]] double parameter(const Operation& operation, int block, int m);
[[nodiscard]] double talven_value(const Operation& operation, int n);
[[nodiscard]] double step_size(const Operation& operation);
[[nodiscard]] mod_p3dgrid::integer step_count(const Operation& operation);

[[nodiscard]] std::vector<Record> grid_records(const Operation& operation, int blocks);
/// @param leading  blocks of layouts 100 and 101 begin with the record that holds the triplets
[[nodiscard]] std::vector<Record> restart_records(const Operation& operation, bool leading);

/// The records as bytes, put together by hand, without those that the operation lacks.
[[nodiscard]] std::string encoded(const Operation& operation, const std::vector<Record>& records);

}  // namespace model
