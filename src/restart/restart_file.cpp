#include "restart/restart_file.hpp"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>

#include "restart/body.hpp"
#include "state/host.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Calls `act(name, array, other name, other array)`, where `array` is the one of the coding.
template <class Act>
void with_parameters(const RestartFile& file, Act act) {
  if (file.layout.parameters == 0) return;
  if (holds_singles(file.coding)) return act("sqvar", sqvar, "dqvar", dqvar);
  return act("dqvar", dqvar, "sqvar", sqvar);
}

template <class Parameters>
void check_rows(const RestartFile& file, const char* name, const Parameters& parameters,
                integer rows) {
  const integer columns = file.layout.parameters;
  if (parameters.extent(1) >= rows && parameters.extent(2) >= columns) return;
  refuse_restart(file.filename,
                 std::string(name) + " holds " + std::to_string(parameters.extent(1)) +
                     " rows of " + std::to_string(parameters.extent(2)) + ", " +
                     std::to_string(rows) + " of " + std::to_string(columns) + " are needed");
}

/// Allocates a row per block, and fills row n with row min(n, `rows`) of the other array.
template <class To, class From>
void create(const RestartFile& file, allocatable<To, 2>& to, const allocatable<From, 2>& from,
            integer rows) {
  if (!allocate_checked(to, file.nblocks, file.layout.parameters)) {
    refuse_restart(file.filename, "out of memory for the flow parameters");
  }
  for (integer b = 1; b <= file.nblocks; ++b) {
    for (integer m = 1; m <= file.layout.parameters; ++m) {
      to(b, m) = rows > 0 ? static_cast<To>(from(std::min(b, rows), m)) : To{0};
    }
  }
}

}  // namespace

void announce_restart(integer mode, const RestartArguments& arguments,
                      std::optional<integer> variable) {
  const auto& [filename, iformat, dblprec, rsttype, multiblock] = arguments;
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  host::dispreadwrite(mode, layout.iparm1, layout.iparm2, filename, iformat, dblprec, variable,
                      std::nullopt, multiblock);
  check_layout(arguments);
}

std::string restart_file(const FileName& filename) {
  return restart_kind + path_of(filename);
}

void refuse_restart(const FileName& filename, const std::string& reason) {
  fail_run(restart_file(filename) + ": " + reason);
}

void check_layout(const RestartArguments& arguments) {
  const integer rsttype = arguments.rsttype;
  if (p3dgrid::traits_of(rsttype).known) return;
  refuse_restart(arguments.filename, std::to_string(rsttype) + " is no restart layout");
}

std::int64_t sum(integer_view blockpoints) {
  return std::accumulate(blockpoints.data(), blockpoints.data() + blockpoints.extent(1),
                         std::int64_t{0});
}

void check_variables(const FileName& filename, integer highest, std::int64_t rows) {
  if (highest <= rows) return;
  refuse_restart(filename, "the section table names variable " + std::to_string(highest) +
                               ", the flow array has " + std::to_string(rows));
}

void check_variable_counts(const char* prefix, const RestartFile& file) {
  if (!file.layout.counted_variables) return;
  if (!nfvar.allocated() || nfvar.size() >= file.nblocks) return;
  fail_run(prefix + path_of(file.filename) + ": nfvar holds " + std::to_string(nfvar.size()) +
           " blocks, " + std::to_string(file.nblocks) + " are to be written");
}

integer checked_highest_to_write(const RestartFile& file) {
  check_variable_counts(restart_kind, file);
  if (file.layout.extensions && !extension_chain_ends()) {
    refuse_restart(file.filename, "iflag holds no flag 999 to end its chain");
  }
  const integer highest = checked_highest_variable(block_records_with_leading(file));
  return file.layout.extensions ? std::max(highest, highest_extension_variable()) : highest;
}

void check_triplets(const RestartFile& file, const char* name,
                    const std::array<std::int64_t, 2>& extents) {
  if (!file.layout.triplets) return;
  const auto [rows, points] = extents;
  check_points(restart_kind, file.filename, name, points, file.points);
  if (rows >= triplet || file.points.total == 0) return;
  refuse_restart(file.filename, std::string(name) + " holds no three values per point");
}

void check_parameters_to_write(const RestartFile& file, integer nparamrows) {
  if (file.nblocks < 1) return;
  with_parameters(
      file, [&](const char* name, const auto& own, const char* other_name, const auto& other) {
        if (nparamrows < 1) refuse_restart(file.filename, "nparamrows is below 1");
        const integer rows = std::min(file.nblocks, nparamrows);
        if (own.allocated()) return check_rows(file, name, own, rows);
        if (!other.allocated())
          refuse_restart(file.filename, "neither sqvar nor dqvar is allocated");
        check_rows(file, other_name, other, rows);
      });
}

void create_parameters_to_write(const RestartFile& file, integer nparamrows) {
  with_parameters(file, [&](const char*, auto& own, const char*, const auto& other) {
    if (!own.allocated()) create(file, own, other, nparamrows);
  });
}

void create_parameters_to_read(const RestartFile& file) {
  with_parameters(file, [&](const char* name, auto& own, const char*, const auto& other) {
    const bool convertible = other.allocated() && other.extent(2) >= file.layout.parameters;
    const auto rows = static_cast<integer>(convertible ? other.extent(1) : 0);
    if (!own.allocated()) create(file, own, other, rows);
    if (file.nblocks > 0) check_rows(file, name, own, file.nblocks);
  });
}

}  // namespace mod_p3dgrid
