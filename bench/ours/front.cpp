#include <bit>

#include "ours/operations.hpp"
#include "p3dgrid/grid.hpp"
#include "p3dgrid/solution.hpp"

/// The functions of `namespace p3dgrid`. Values of double precision are checked as singles, from
/// which they were made.
namespace bench {
namespace {

p3dgrid::Coding coding_of(const Request& request) {
  return {.encoding = static_cast<p3dgrid::Encoding>(form_code(request)),
          .precision = is_double(request) ? p3dgrid::Precision::double_precision
                                          : p3dgrid::Precision::single_precision};
}

std::int64_t bit_sum(const p3dgrid::Reals& reals) {
  return reals.visit([](auto values) {
    std::int64_t sum = 0;
    for (const auto value : values) sum += std::bit_cast<std::int32_t>(static_cast<float>(value));
    return sum;
  });
}

}  // namespace

Outcome read_grid_by_front(const Request& request) {
  const auto form = stated_as(p3dgrid::GridForm{.coding = coding_of(request)});
  p3dgrid::Grid grid;
  const double seconds = timed([&] { grid = p3dgrid::read_grid(request.input, form); });
  std::int64_t sum = 0;
  for (const auto& block : grid.blocks) {
    sum += bit_sum(block.x) + bit_sum(block.y) + bit_sum(block.z);
  }
  return {seconds, sum};
}

Outcome read_restart_by_front(const Request& request) {
  const auto form = stated_as(
      p3dgrid::RestartForm{.coding = coding_of(request),
                           .sections = p3dgrid::Sections{{1, p3dgrid::solution_variables}}});
  p3dgrid::Solution flow;
  const double seconds =
      timed([&] { flow = p3dgrid::read_solution(request.input, {.form = form}); });
  std::int64_t sum = 0;
  for (const auto& block : flow.blocks) {
    for (const auto& variable : block.variables) sum += bit_sum(variable);
  }
  return {seconds, sum};
}

}  // namespace bench
