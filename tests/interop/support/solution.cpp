#include "support/solution.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <fstream>
#include <random>
#include <stdexcept>

#include "support/awkward_values.hpp"
#include "support/bits_file.hpp"

namespace interop {
namespace {

/// Shows every number of a solution to `visit`, integers as `std::int32_t` and reals as `double`,
/// in the order of the files of bit patterns. `What` is a solution, const or not.
template <class What, class Visit>
void for_each_number(What& solution, Visit visit) {
  const auto visit_all = [&](auto& numbers) { std::ranges::for_each(numbers, visit); };
  visit_all(solution.version);
  visit_all(solution.run);
  visit(solution.nstep);
  visit(solution.model);
  visit_all(solution.flags);
  std::ranges::for_each(solution.extents, visit_all);
  visit_all(solution.counts);
  visit(solution.dtau);
  visit_all(solution.talven);
  std::ranges::for_each(solution.parameters, visit_all);
  std::ranges::for_each(solution.flow, visit_all);
  std::ranges::for_each(solution.triplets, visit_all);
  for (auto& level : solution.older) std::ranges::for_each(level, visit_all);
}

/// Deals out awkward values of the file's kind in random order, each once.
class AwkwardDealer {
 public:
  AwkwardDealer(const RestartForm& form, std::size_t count) {
    if (form.is_double) {
      values_ = awkward_doubles(count);
    } else {
      const auto singles = awkward_floats(count);
      values_.assign(singles.begin(), singles.end());
    }
    std::mt19937_64 random(20240315);
    std::ranges::shuffle(values_, random);
  }
  double operator()() {
    const double value = values_.back();
    values_.pop_back();
    return value;
  }

 private:
  std::vector<double> values_;
};

void fill_header(const RestartForm& form, Solution& solution) {
  const auto integers = awkward_integers(16);
  solution.version = {integers[2], form.equation_set};
  solution.run = {integers[5], form.time_integration, integers[4]};
  solution.nstep = integers[9];
  solution.model = integers[10];
  std::ranges::copy(form.flags, solution.flags.begin());
  for (std::size_t b = 0; b < solution.counts.size(); ++b) {
    // A header may announce more variables than the sections hold.
    solution.counts[b] = form.highest_variable() + (b == 0 ? 0 : b == 1 ? 1 : 2);
  }
  solution.dtau = 0.1;
}

void clear(Columns& columns) {
  for (auto& column : columns) std::ranges::fill(column, 0.0);
}

void clear_unheld_columns(const RestartForm& form, Solution& solution) {
  for (std::size_t v = 0; v < solution.flow.size(); ++v) {
    if (!form.holds_variable(static_cast<int>(v + 1))) {
      std::ranges::fill(solution.flow[v], 0.0);
    }
  }
  if (!form.leading) clear(solution.triplets);
  const auto [first, last] = form.sections.front();
  for (std::size_t level = 0; level < solution.older.size(); ++level) {
    for (std::size_t v = 0; v < solution.older[level].size(); ++v) {
      const int variable = static_cast<int>(v + 1);
      if (variable >= first && variable <= last && static_cast<int>(level) < form.older_levels()) {
        continue;
      }
      std::ranges::fill(solution.older[level][v], 0.0);
    }
  }
}

void narrow(Columns& columns) {
  for (auto& column : columns) {
    for (double& value : column) value = static_cast<float>(value);
  }
}

void expect_same(const char* what, const Columns& actual, const Columns& expected) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (std::size_t v = 0; v < expected.size(); ++v) {
    ASSERT_EQ(actual[v].size(), expected[v].size()) << what;
    for (std::size_t p = 0; p < expected[v].size(); ++p) {
      ASSERT_EQ(std::bit_cast<std::int64_t>(actual[v][p]),
                std::bit_cast<std::int64_t>(expected[v][p]))
          << what << " " << v + 1 << " at point " << p + 1 << ": " << actual[v][p] << " instead of "
          << expected[v][p];
    }
  }
}

template <class Reals>
std::vector<std::int64_t> bits_of(const Reals& reals) {
  std::vector<std::int64_t> bits;
  for (const double real : reals) bits.push_back(std::bit_cast<std::int64_t>(real));
  return bits;
}

}  // namespace

std::size_t Solution::points() const {
  std::size_t total = 0;
  for (const Extents& block : extents) total += points_of(block);
  return total;
}

Solution empty_solution(const std::vector<Extents>& extents, std::size_t variables) {
  Solution solution;
  solution.extents = extents;
  solution.counts.resize(extents.size());
  solution.parameters.resize(extents.size());
  const std::vector<double> column(solution.points());
  solution.flow.assign(variables, column);
  solution.triplets.assign(3, column);
  solution.older.fill(Columns(variables, column));
  return solution;
}

Solution awkward_solution(const RestartForm& form, const std::vector<Extents>& extents) {
  Solution solution = empty_solution(extents, static_cast<std::size_t>(form.highest_variable()));
  fill_header(form, solution);
  AwkwardDealer deal(
      form, (3 * solution.flow.size() + 3) * solution.points() + 4 * solution.parameters.size());
  const auto fill = [&](auto& reals) { std::ranges::generate(reals, std::ref(deal)); };
  std::ranges::for_each(solution.parameters, fill);
  std::ranges::for_each(solution.flow, fill);
  std::ranges::for_each(solution.triplets, fill);
  for (Columns& level : solution.older) std::ranges::for_each(level, fill);
  const auto talven = awkward_doubles(100 + solution.talven.size());  // always doubles
  std::ranges::copy(talven.begin() + 100, talven.end(), solution.talven.begin());
  return solution;
}

Solution as_held(const RestartForm& form, const Solution& solution) {
  Solution held = solution;
  const bool talven = form.layout == 0;
  const bool has_step = talven || form.layout == 1 || form.has_triplets();
  if (!talven) held.version = {}, held.run = {};
  if (!talven || form.equation_set != 1) held.model = 0, held.talven = {};
  held.dtau = !has_step ? 0 : form.has_double_header() ? held.dtau : static_cast<float>(held.dtau);
  if (!has_step) held.nstep = 0;
  if (form.layout != 101) held.flags = {};
  if (form.layout != 3) std::ranges::fill(held.counts, 0);
  if (form.layout != 2) std::ranges::fill(held.parameters, std::array<double, 4>{});
  clear_unheld_columns(form, held);
  return held;
}

Solution narrowed(const Solution& solution) {
  Solution result = solution;
  narrow(result.flow);
  narrow(result.triplets);
  return result;
}

void save_solution_bits(const std::string& path, const Solution& solution) {
  std::ofstream file(path);
  for_each_number(solution, [&](const auto& number) {
    if constexpr (std::is_same_v<decltype(number), const double&>) {
      file << std::bit_cast<std::int64_t>(number) << '\n';
    } else {
      file << number << '\n';
    }
  });
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

void load_solution_bits(const std::string& path, Solution& solution) {
  std::ifstream file(path);
  for_each_number(solution, [&](auto& number) {
    const std::int64_t bits = next_integer(file);
    if constexpr (std::is_same_v<decltype(number), double&>) {
      number = std::bit_cast<double>(bits);
    } else {
      number = static_cast<std::int32_t>(bits);
    }
  });
  expect_no_more(file);
}

void expect_same_bits(const Solution& actual, const Solution& expected) {
  EXPECT_EQ(actual.version, expected.version);
  EXPECT_EQ(actual.run, expected.run);
  EXPECT_EQ(actual.nstep, expected.nstep);
  EXPECT_EQ(actual.model, expected.model);
  EXPECT_EQ(actual.flags, expected.flags);
  EXPECT_EQ(actual.extents, expected.extents);
  EXPECT_EQ(actual.counts, expected.counts);
  EXPECT_EQ(bits_of(std::array{actual.dtau}), bits_of(std::array{expected.dtau}));
  EXPECT_EQ(bits_of(actual.talven), bits_of(expected.talven));
  ASSERT_EQ(actual.parameters.size(), expected.parameters.size());
  for (std::size_t b = 0; b < expected.parameters.size(); ++b) {
    EXPECT_EQ(bits_of(actual.parameters[b]), bits_of(expected.parameters[b])) << "block " << b + 1;
  }
  expect_same("variable", actual.flow, expected.flow);
  expect_same("triplet", actual.triplets, expected.triplets);
  for (std::size_t level = 0; level < expected.older.size(); ++level) {
    expect_same("older variable", actual.older[level], expected.older[level]);
  }
}

}  // namespace interop
