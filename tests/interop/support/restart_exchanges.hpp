#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "support/restart_form.hpp"
#include "support/solution.hpp"

namespace interop {

/// One restart file to exchange.
struct Exchange {
  RestartForm form;
  bool several_blocks;

  /// Blocks of differing extents, with planes, a block without points, and a single point.
  [[nodiscard]] std::vector<Extents> extents() const;
  [[nodiscard]] Solution solution() const { return awkward_solution(form, extents()); }
};

/// What both sides can write.
[[nodiscard]] std::vector<Exchange> writable_exchanges(std::initializer_list<int> encodings);

/// What Fortran writes for the library to read. A whole read takes layout 100 in single-precision
/// records without the triplets.
[[nodiscard]] std::vector<Exchange> readable_exchanges();

void PrintTo(const Exchange& exchange, std::ostream* stream);

/// The name of a test for an exchange.
[[nodiscard]] std::string exchange_name(const testing::TestParamInfo<Exchange>& parameter);

}  // namespace interop
