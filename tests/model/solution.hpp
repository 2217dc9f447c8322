#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "model/generators.hpp"

namespace model {

/// The form of a restart file.
struct Form {
  int layout = 2;
  int iformat = 0;
  bool dblprec = false;
  bool multiblock = true;

  [[nodiscard]] bool text() const { return iformat == 1; }
  /// Whether the file holds reals of 64 bits.
  [[nodiscard]] bool wide() const { return dblprec && !text(); }
  [[nodiscard]] bool triplets() const { return layout == 100 || layout == 101; }
  /// A whole read of layout 100 in single-precision records takes ordinary sections.
  [[nodiscard]] bool whole_read_takes_triplets() const {
    return layout == 101 || (layout == 100 && (text() || dblprec));
  }
};
void showValue(const Form& form, std::ostream& out);

/// A random flow solution with the section table that describes it.
struct Solution {
  Form form;
  std::vector<Extents> extents;
  std::vector<std::pair<integer, integer>> sections;  ///< first and last variable; may be of none
  std::vector<integer> flags{999, 0, 0};              ///< extensions of layout 101
  integer rows = 0;                                   ///< of the flow array
  std::vector<float> flow;                            ///< (variable, point)
  std::vector<float> triplets;                        ///< (3, point)
  std::vector<float> parameters;                      ///< (block, 4), rows in use
  integer parameter_rows = 1;
  integer steps = 0;
  double step_size = 0;

  [[nodiscard]] float value(integer variable, std::int64_t point) const {
    return flow[static_cast<std::size_t>(point * rows + variable - 1)];
  }
  /// Flow variables that the file holds, in rising order.
  [[nodiscard]] std::vector<integer> variables() const;
  /// A value as the file gives it back.
  [[nodiscard]] float stored(float value) const {
    return form.wide() ? through_double(value) : value;
  }
  [[nodiscard]] double stored_step_size() const {
    return form.wide() || form.text() ? step_size : static_cast<float>(step_size);
  }
};

void showValue(const Solution& solution, std::ostream& out);

[[nodiscard]] rc::Gen<Solution> any_solution();

/// Sets section table, flags, header values and flow parameters as a host that writes does.
void set_host(const Solution& solution);
/// Sets the section table alone, and forgets all that an earlier read has left.
void set_host_for_reading(const Solution& solution);

void write_whole(const Solution& solution, const char* name);

}  // namespace model
