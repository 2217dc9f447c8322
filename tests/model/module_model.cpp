#include "model/module_model.hpp"

#include <algorithm>
#include <limits>
#include <sstream>

namespace model {
namespace {

template <class T>
std::string text_of(const T& values) {
  std::ostringstream text;
  for (const auto& value : values) text << value << ' ';
  return text.str();
}

std::string text_of_parameters(const std::optional<std::vector<std::array<double, 4>>>& rows) {
  if (!rows) return "-";
  std::string text = std::to_string(rows->size()) + " rows: ";
  for (const auto& row : *rows) text += text_of(row);
  return text;
}

}  // namespace

void ModuleModel::apply(const Operation& operation) {
  announced_ = bad_allocations_ = failed_reads_ = 0;
  ended_ = -1;
  try {
    act(operation);
  } catch (const RunEnds& end) {
    ended_ = end.status;
  }
}

void ModuleModel::act(const Operation& of) {
  switch (of.act) {
    case Act::read_grid:
      return read_grid(of);
    case Act::read_grid_header:
      return read_grid_header(of);
    case Act::write_grid:
      ++announced_;
      units_.erase(13);
      return;
    case Act::read_restart_header: {
      Cursor file(of, restart_records(of, true));
      static_cast<void>(read_header(of, file));
      return;
    }
    case Act::write_restart_header:
      return write_restart_header(of, "written");
    case Act::check:
      return check(of);
    case Act::read_restart:
      return read_restart(of);
    case Act::write_restart:
      return write_restart(of);
    case Act::read_next_variable:
      return read_next_variable(of);
    case Act::write_next_variable:
      return write_next_variable(of);
    case Act::combine:
      return combine(of);
    case Act::write_tecplot:
      units_[594] = "tecplot";
      return;
    case Act::close_unit:
      units_.erase(of.unit);
      return;
    case Act::set_debug:
      debug_ = of.multiblock;
      return;
    case Act::release_nfvar:
      nfvar_.reset();
      return;
    case Act::release_sqvar:
      sqvar_.reset();
      return;
    case Act::release_dqvar:
      dqvar_.reset();
      return;
    case Act::set_flags:
      iflag_ = flags_of(of);
      return;
  }
}

/// The host sets the section table before each operation that looks at it.
void ModuleModel::set_table(const Operation& of, bool with_extensions) {
  num_ = {5, of.sections == 2 ? 2 : 0};
  if (with_extensions && of.layout == 101) num_[1] = 8;
}

mod_p3dgrid::integer ModuleModel::most_variables() const {
  if (!nfvar_ || nfvar_->empty()) return std::numeric_limits<integer>::min();
  return *std::ranges::max_element(*nfvar_);
}

std::int64_t ModuleModel::points(const Operation& of) const {
  std::int64_t total = 0;
  for (int b = 0; b < of.blocks; ++b) {
    const auto extents = extents_of(b);
    total += extents[0] * extents[1] * extents[2];
  }
  return total;
}

std::int64_t ModuleModel::arrays() const {
  return std::ssize(staging_) + (nfvar_ ? 1 : 0) + (sqvar_ ? 1 : 0) + (dqvar_ ? 1 : 0);
}

State ModuleModel::state() const {
  State state;
  for (const auto& [name, value] : integers_) state[name] = std::to_string(value);
  std::vector<std::string> open;
  for (const auto& [number, name] : units_) open.push_back(name);
  std::ranges::sort(open);
  state["open files"] = text_of(open);
  std::string files;
  for (const auto& [name, file] : variable_files_) files += name + " ";
  state["variable files"] = files;
  state["tal values"] = text_of(talven_);
  state["p3d values"] = text_of(p3d_);
  state["dtau"] = std::to_string(dtau_);
  state["debugprint"] = debug_ ? "1" : "0";
  state["iflag"] = text_of(iflag_);
  state["numrstrtvar"] = text_of(num_);
  state["nfvar"] = nfvar_ ? text_of(*nfvar_) : "-";
  state["sqvar"] = text_of_parameters(sqvar_);
  state["dqvar"] = text_of_parameters(dqvar_);
  state["tmpfile"] = text_of(tmpfile_);
  std::string staged;
  for (const auto& [name, extent] : staging_) {
    staged +=
        name + "(" + std::to_string(extent.rows) + "," + std::to_string(extent.columns) + ") ";
  }
  state["staging"] = staged;
  state["announcements"] = std::to_string(announced_);
  state["failed allocations"] = std::to_string(bad_allocations_);
  state["failed reads"] = std::to_string(failed_reads_);
  state["run ended with"] = std::to_string(ended_);
  return state;
}

int blocks_of_checked_grid(const Operation& operation) {
  const bool one_more = operation.multiblock && operation.variable >= 6 && operation.blocks < 3;
  return operation.blocks + (one_more ? 1 : 0);
}

bool whole_read_takes_triplets(const Operation& operation) {
  return operation.layout == 101 ||
         (operation.layout == 100 && (operation.text() || operation.dblprec));
}

std::string difference(const State& expected, const State& found) {
  std::string lines;
  for (const auto& [name, value] : expected) {
    const auto other = found.find(name);
    const std::string there = other == found.end() ? "nothing" : other->second;
    if (there != value) lines += name + ": expected " + value + ", found " + there + "\n";
  }
  return lines;
}

}  // namespace model
