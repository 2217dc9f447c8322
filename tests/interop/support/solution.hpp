#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/grid.hpp"
#include "support/restart_form.hpp"

namespace interop {

/// Values at all points of all blocks: one column per variable.
using Columns = std::vector<std::vector<double>>;

/// A flow solution with the values of a restart file's header. Its reals are doubles, which hold
/// every single without loss: where they are equal bit for bit, so are the singles.
struct Solution {
  std::array<std::int32_t, 2> version{};  ///< file version, equation set
  std::array<std::int32_t, 3> run{};      ///< number of variables, time integration, a switch
  std::int32_t nstep = 0;
  std::int32_t model = 0;  ///< sub-grid-scale model
  std::array<std::int32_t, 3> flags{};
  double dtau = 0;
  std::array<double, 8> talven{};  ///< re, xm1, alfa, beta, gam, s1, pr, prt
  std::vector<Extents> extents;
  std::vector<std::int32_t> counts;  ///< variables of each block
  std::vector<std::array<double, 4>> parameters;
  Columns flow;
  Columns triplets;
  std::array<Columns, 2> older;  ///< one set of columns per older time level

  [[nodiscard]] std::size_t points() const;
};

/// A solution of zeros at the points of these blocks.
[[nodiscard]] Solution empty_solution(const std::vector<Extents>& extents, std::size_t variables);

/// A solution of awkward values, all of them at hand in the kinds of the form's file.
[[nodiscard]] Solution awkward_solution(const RestartForm& form,
                                        const std::vector<Extents>& extents);

/// The solution with zeros where the form has no place for a value, its header in the precision of
/// the file.
[[nodiscard]] Solution as_held(const RestartForm& form, const Solution& solution);

/// The solution after its columns have been rounded to single precision.
[[nodiscard]] Solution narrowed(const Solution& solution);

/// Saves a solution as bit patterns, in the order of its members.
void save_solution_bits(const std::string& path, const Solution& solution);

/// Loads what the Fortran side has saved into a solution of the same shape.
void load_solution_bits(const std::string& path, Solution& solution);

/// Fails the current test unless both solutions are the same, bit for bit.
void expect_same_bits(const Solution& actual, const Solution& expected);

}  // namespace interop
