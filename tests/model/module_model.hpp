#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model/operation.hpp"
#include "model/restart_records.hpp"

namespace model {

/// What can be seen of the module, each part under its name.
using State = std::map<std::string, std::string>;

/// The module as its description has it: which unit is connected to which file, what the module
/// variables hold, what stays allocated, and what an operation tells its host.
class ModuleModel {
 public:
  /// Takes the module one step further.
  void apply(const Operation& operation);

  [[nodiscard]] State state() const;
  /// Arrays that the module holds.
  [[nodiscard]] std::int64_t arrays() const;
  [[nodiscard]] const std::map<mod_p3dgrid::integer, std::string>& open_files() const {
    return units_;
  }
  [[nodiscard]] bool all_well() const {
    return bad_allocations_ + failed_reads_ == 0 && ended_ < 0;
  }

 private:
  using integer = mod_p3dgrid::integer;
  struct RunEnds {
    int status;
  };
  using Parameters = std::vector<std::array<double, 4>>;
  struct VariableFile {
    int blocks;
    bool wide;
  };
  struct Extent {
    std::int64_t rows;
    std::int64_t columns;
  };

  void act(const Operation& of);
  void set_table(const Operation& of, bool with_extensions);
  [[nodiscard]] integer variables() const { return std::max(0, num_[0] + num_[1]); }
  [[nodiscard]] integer most_variables() const;
  [[nodiscard]] std::int64_t points(const Operation& of) const;
  void fail_read() { ++failed_reads_; }

  // Reading.
  void read_grid(const Operation& of);
  void read_grid_header(const Operation& of);
  void check(const Operation& of);
  [[nodiscard]] bool read_header(const Operation& of, Cursor& file);
  [[nodiscard]] bool read_header_records(const Operation& of, Cursor& file);
  [[nodiscard]] bool read_lead(const Operation& of, Cursor& file);
  [[nodiscard]] bool read_function_counts(const Operation& of, Cursor& file);
  void read_restart(const Operation& of);
  [[nodiscard]] bool read_whole(const Operation& of, Cursor& file);
  [[nodiscard]] bool clear_parameters(const Operation& of, integer ngrid);
  [[nodiscard]] bool read_blocks(const Operation& of, Cursor& file, bool leading, bool whole);
  [[nodiscard]] bool read_extensions(const Operation& of, Cursor& file, bool whole,
                                     std::int64_t rows);
  void read_next_variable(const Operation& of);
  [[nodiscard]] bool read_one(const Operation& of, Cursor& file);
  void stage(const std::string& name, std::int64_t rows, std::int64_t columns);
  void release(const std::string& prefix);

  // Writing.
  void write_restart_header(const Operation& of, const char* name);
  void write_restart(const Operation& of);
  void check_to_write(const Operation& of) const;
  void check_parameters(const Operation& of) const;
  void create_parameters(const Operation& of);
  void write_next_variable(const Operation& of);
  void combine(const Operation& of);
  [[nodiscard]] bool variable_files_fit(const Operation& of) const;

  std::optional<Parameters>& own(const Operation& of) {
    return of.parameters_in_double() ? dqvar_ : sqvar_;
  }
  std::optional<Parameters>& other(const Operation& of) {
    return of.parameters_in_double() ? sqvar_ : dqvar_;
  }

  std::map<integer, std::string> units_;
  std::map<std::string, VariableFile> variable_files_;
  std::map<std::string, Extent> staging_;
  std::map<std::string, integer> integers_{{"eqid", 0},   {"fileversion", 0}, {"nstep", 0},
                                           {"ibeta", 0},  {"itimeint", 0},    {"isgsmodel", 0},
                                           {"talnvar", 0}};
  std::array<double, 8> talven_{};
  std::array<double, 4> p3d_{};
  double dtau_ = 0;
  bool debug_ = true;
  std::array<integer, 3> iflag_{};
  std::array<integer, 2> num_{5, 0};
  std::optional<std::vector<integer>> nfvar_;
  std::optional<Parameters> sqvar_;
  std::optional<Parameters> dqvar_;
  std::array<std::string, 15> tmpfile_;

  // What the last operation told its host.
  int announced_ = 0;
  int bad_allocations_ = 0;
  int failed_reads_ = 0;
  int ended_ = -1;
};

/// The module as it is.
[[nodiscard]] State observed(int ended);

/// Has the module do it, on files made for it; returns the status that ended the run, or -1.
[[nodiscard]] int perform(const Operation& operation);

/// Blocks of the grid that a restart file of the operation is checked against.
[[nodiscard]] int blocks_of_checked_grid(const Operation& operation);
/// Whether a whole read of the file takes the triplets of its blocks.
[[nodiscard]] bool whole_read_takes_triplets(const Operation& operation);

/// One line for each part in which the two differ.
[[nodiscard]] std::string difference(const State& expected, const State& found);

}  // namespace model
