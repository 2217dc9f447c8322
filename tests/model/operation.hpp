#pragma once

#include <rapidcheck.h>

#include <array>
#include <cstdint>
#include <iosfwd>

#include "support/recording_host.hpp"

namespace model {

/// What a host can do to the module.
enum class Act : std::uint8_t {
  read_grid,
  read_grid_header,
  write_grid,
  read_restart_header,
  write_restart_header,
  check,
  read_restart,
  write_restart,
  read_next_variable,
  write_next_variable,
  combine,
  write_tecplot,
  close_unit,
  set_debug,
  release_nfvar,
  release_sqvar,
  release_dqvar,
  set_flags,
};
inline constexpr int acts = 18;

/// One step of a host, with all that it depends on. Every step can be taken in every state.
struct Operation {
  Act act = Act::close_unit;
  int layout = 1;   ///< 7 is none
  int iformat = 0;  ///< 7 is none
  bool dblprec = false;
  int blocks = 1;  ///< 1 to 3
  bool multiblock = true;
  int missing = 0;       ///< records that the file lacks at its end
  int sections = 1;      ///< 1: variables 1 to 5; 2: a second section of 6 and 7
  int variable = 1;      ///< for streaming, and what header values are made of
  int flags = 0;         ///< which chain of extensions
  int equation_set = 2;  ///< layout 0
  int time_integration = 0;
  bool readallvars = true;
  int unit = 13;
  bool write_first = true;  ///< combine: all variables are written before

  [[nodiscard]] bool known_form() const { return iformat != 7; }
  [[nodiscard]] bool text() const { return iformat == 1; }
  [[nodiscard]] bool triplets() const { return layout == 100 || layout == 101; }
  /// The step that writes variable `m` so that it can be combined.
  [[nodiscard]] Operation of_variable(int m) const {
    Operation written = *this;
    written.variable = m;
    written.dblprec = dblprec || text();
    return written;
  }
  [[nodiscard]] mod_p3dgrid::integer last_variable() const { return sections == 1 ? 5 : 7; }
};

void showValue(const Operation& operation, std::ostream& out);

/// @param with_failures  false: files are whole, codes are known, and nothing ends the run because
///                       of the operation itself
[[nodiscard]] rc::Gen<Operation> any_operation(bool with_failures);

/// The chains of extensions that steps choose from.
[[nodiscard]] std::array<mod_p3dgrid::integer, 3> flags_of(const Operation& operation);

/// Extents of block `block`, from 0.
[[nodiscard]] std::array<mod_p3dgrid::integer, 3> extents_of(int block);

}  // namespace model
