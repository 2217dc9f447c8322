#pragma once

#include <string>
#include <utility>
#include <vector>

#include "mod_p3dgrid/arrays.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace test_support {

/// One way of holding a flow solution in a file.
struct RestartForm {
  int layout = 2;
  int iformat = 0;
  bool dblprec = false;
  int blocks = 2;
  std::vector<std::pair<int, int>> sections{{1, 5}};
  bool multiblock = true;

  /// Whether the file holds reals of 64 bits.
  [[nodiscard]] bool wide() const { return dblprec && iformat != 1; }
};

/// A name for a test.
[[nodiscard]] std::string name_of(const RestartForm& form);

/// Every layout, encoding, precision, number of blocks and section table that can be.
[[nodiscard]] std::vector<RestartForm> all_restart_forms();

/// A flow solution put into bytes by hand, record by record. Blocks are of 2 x 1 x 2, 3 x 1 x 1 and
/// 1 x 0 x 4 points. In a double-precision file the values are none of single precision.
class HandMadeRestart {
 public:
  explicit HandMadeRestart(RestartForm of) : form(std::move(of)) {}

  RestartForm form;
  bool leading = true;          ///< layouts 100 and 101: blocks begin with the leading record
  int equation_set = 2;         ///< layout 0
  int time_integration = 0;     ///< layout 0
  int older_levels = 0;         ///< records behind the sections of a block
  std::vector<int> flags{999};  ///< layout 101

  [[nodiscard]] static int extent(int block, int direction);
  [[nodiscard]] static int points(int block);
  [[nodiscard]] int all_points() const;
  [[nodiscard]] int highest_variable() const;

  /// Value of a variable (from 1) at a point of all points (from 0).
  [[nodiscard]] static double flow(int variable, int point) {
    return variable * 1000 + point + 1.0 / 3.0;
  }
  [[nodiscard]] static double triplet(int component, int point) {
    return -(component * 100 + point) - 0.1;
  }
  [[nodiscard]] static double parameter(int block, int m) { return block * 10 + m + 0.7; }
  static constexpr int steps = 1234;
  static constexpr double step_size = 0.1;

  [[nodiscard]] std::string bytes() const { return header() + body(); }
  [[nodiscard]] std::string header() const;
  [[nodiscard]] std::string body() const;
  /// The same with the values that single precision holds, as a file that the module has written.
  [[nodiscard]] HandMadeRestart rounded() const;

  /// Expected result arrays, (variable, point) and (3, point).
  [[nodiscard]] std::vector<float> varvalues(int variables) const;
  [[nodiscard]] std::vector<float> auxvalues() const;

 private:
  class Record;
  void put_variables(Record& record, int block, int first, int last) const;
  [[nodiscard]] int first_point(int block) const;
  bool rounded_ = false;
};

/// The arguments of the restart operations.
struct Restart {
  std::vector<mod_p3dgrid::integer> idim, jdim, kdim, blockpoints;
  mod_p3dgrid::allocatable<float, 2> varvalues;
  mod_p3dgrid::allocatable<float, 2> auxvalues;

  /// Extents as those of the hand-made files.
  explicit Restart(int blocks);
  void read(const char* name, const RestartForm& form);
  void write(const char* name, const RestartForm& form, int nparamrows = 99) const;
  /// Fills the arrays with the values of the hand-made files.
  void fill(int variables);
};

/// A module array that a host releases while a solution of that form is read or written.
struct ReleasedArray {
  RestartForm form;
  void (*release)();
  const char* error;  ///< if it does so when it is told of block 2
};

[[nodiscard]] std::vector<ReleasedArray> released_arrays();

/// Sets the section table of the host.
void set_sections(const std::vector<std::pair<int, int>>& sections);

}  // namespace test_support
