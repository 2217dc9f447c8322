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

/// The first `kept` records as bytes, put together by hand.
[[nodiscard]] std::string encoded(const Operation& operation, const std::vector<Record>& records,
                                  std::size_t kept);

/// Goes through the records of a file as a reader does: false where the file has ended.
class Cursor {
 public:
  Cursor(const Operation& operation, std::vector<Record> records);
  [[nodiscard]] bool take();
  [[nodiscard]] std::string bytes() const { return encoded(operation_, records_, kept_); }

 private:
  const Operation& operation_;
  std::vector<Record> records_;
  std::size_t kept_;
  std::size_t next_ = 0;
};

}  // namespace model
