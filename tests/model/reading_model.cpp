/// What reading does to the module.

#include <algorithm>

#include "model/module_model.hpp"

namespace model {

void ModuleModel::read_grid(const Operation& of) {
  ++announced_;
  if (of.known_form()) {
    units_[13] = "grid";
    Cursor file(of, grid_records(of, of.blocks));
    const int records = (of.multiblock ? 1 : 0) + 1 + of.blocks;
    for (int r = 0; r < records; ++r) {
      if (!file.take()) return fail_read();
    }
  }
  units_.erase(13);
}

/// Takes the dimension record too if the number of points is asked for.
void ModuleModel::read_grid_header(const Operation& of) {
  if (of.known_form()) {
    units_[22] = "grid";
    Cursor file(of, grid_records(of, of.blocks));
    if (of.multiblock && !file.take()) return fail_read();
    if (of.dblprec && !file.take()) return fail_read();
  }
  units_.erase(22);
}

/// Of the two files the one that `flags` tells lacks records; some grids have a block more.
void ModuleModel::check(const Operation& of) {
  const int grid_blocks = blocks_of_checked_grid(of);
  Operation whole = of;
  whole.missing = 0;
  const bool grid_is_short = of.flags % 2 == 1;
  Cursor grid(grid_is_short ? of : whole, grid_records(of, grid_blocks));
  if (of.known_form()) units_[22] = "grid";
  if (of.known_form() && of.multiblock && !grid.take()) return fail_read();
  const Operation& restart = grid_is_short ? whole : of;
  Cursor file(restart, restart_records(restart, true));
  const bool header = read_header(restart, file);
  units_.erase(201);
  if (!header) return;
  const bool has_count = of.layout != 7 && of.known_form();
  const int restart_blocks = has_count ? of.blocks : 1;
  if (of.multiblock && (of.known_form() ? grid_blocks : 1) != restart_blocks) throw RunEnds{0};
  if (of.known_form() && !grid.take()) return fail_read();
  units_.erase(22);
  units_.erase(23);
  // Layouts without extents agree with nothing but what is not read either.
  if (of.known_form() && of.layout > 3) throw RunEnds{0};
}

bool ModuleModel::read_header(const Operation& of, Cursor& file) {
  integers_["itimeint"] = 0;
  if (of.known_form()) units_[201] = "restart";
  const bool complete = read_header_records(of, file);
  if (!complete) fail_read();
  return complete;
}

bool ModuleModel::read_header_records(const Operation& of, Cursor& file) {
  if (of.known_form() && !read_lead(of, file)) return false;
  if (of.layout == 3) return read_function_counts(of, file);
  if (!of.known_form() || of.layout > 2) return true;
  const int records = of.layout == 2 ? 1 : of.blocks;
  for (int r = 0; r < records; ++r) {
    if (!file.take()) return false;
  }
  return true;
}

bool ModuleModel::read_lead(const Operation& of, Cursor& file) {
  const bool time_step = of.layout == 1 || of.triplets();
  if (time_step || of.counted()) {
    if (!file.take()) return false;
    if (time_step) integers_["nstep"] = step_count(of);
    if (time_step) dtau_ = step_size(of);
  }
  if (of.layout != 0) return true;
  if (!file.take()) return false;
  integers_["fileversion"] = of.variable;
  integers_["eqid"] = of.equation_set;
  if (!file.take()) return false;
  integers_["talnvar"] = 6;
  integers_["itimeint"] = of.time_integration;
  integers_["ibeta"] = of.variable + 2;
  integers_["nstep"] = step_count(of);
  if (of.equation_set == 1 && !of.text() && !of.dblprec) throw RunEnds{0};
  dtau_ = step_size(of);
  if (of.equation_set != 1) return true;
  if (!file.take()) return false;
  integers_["isgsmodel"] = of.variable + 3;
  for (int n = 0; n < 8; ++n) talven_[static_cast<std::size_t>(n)] = talven_value(of, n);
  return true;
}

bool ModuleModel::read_function_counts(const Operation& of, Cursor& file) {
  const auto blocks = static_cast<std::size_t>(of.known_form() ? of.blocks : 1);
  if (!nfvar_) nfvar_.emplace(blocks, 0);
  if (!of.known_form()) return true;
  if (nfvar_->size() < blocks || !file.take()) return false;
  std::fill_n(nfvar_->begin(), blocks, of.last_variable());
  return true;
}

void ModuleModel::read_restart(const Operation& of) {
  set_table(of, false);
  ++announced_;
  if (of.layout == 7) throw RunEnds{2};
  Cursor file(of, restart_records(of, whole_read_takes_triplets(of)));
  if (!read_header(of, file)) return;
  if (of.layout == 2) {
    num_[0] = 5;
    if (!clear_parameters(of, of.known_form() ? of.blocks : 1)) return fail_read();
  }
  if (!of.readallvars) {
    units_.erase(201);
    return;
  }
  if (of.layout == 3) num_[0] = most_variables();
  if (of.known_form() && !read_whole(of, file)) return fail_read();
  units_.erase(201);
  if (of.layout == 3) num_[0] = most_variables();
}

/// Parameters that are there already are reported, and used if they have the rows.
bool ModuleModel::clear_parameters(const Operation& of, integer ngrid) {
  std::optional<Parameters>& parameters = own(of);
  if (parameters) ++bad_allocations_;
  if (!parameters) parameters.emplace(static_cast<std::size_t>(ngrid));
  for (auto& row : *parameters) row.fill(0);
  return std::ssize(*parameters) >= ngrid;
}

/// Whole reads go through staging arrays in double precision only.
bool ModuleModel::read_whole(const Operation& of, Cursor& file) {
  const bool staged = of.records_in_double();
  std::int64_t rows = variables();
  if (staged) {
    stage("DW", rows, points(of));
    rows = staging_.at("DW").rows;
  }
  if (of.triplets()) {
    num_[0] = 5;
    iflag_.fill(0);
    if (staged) stage("DX", 3, points(of));
  }
  if (!read_blocks(of, file, whole_read_takes_triplets(of), true)) return false;
  if (of.layout == 101 && !read_extensions(of, file, true, rows)) return false;
  if (!staged) return true;
  if (of.layout == 101) {
    ++bad_allocations_;  // the array of the triplets, allocated a second time
    staging_.erase("DX");
  }
  staging_.erase("DW");
  return true;
}

bool ModuleModel::read_blocks(const Operation& of, Cursor& file, bool leading, bool whole) {
  for (int b = 0; b < of.blocks; ++b) {
    if (whole && of.layout == 3) num_[0] = (*nfvar_)[static_cast<std::size_t>(b)];
    if (of.layout == 2) {
      if (!file.take()) return false;
      auto& row = (*own(of))[static_cast<std::size_t>(b)];
      for (int m = 1; m <= 4; ++m) row[static_cast<std::size_t>(m) - 1] = parameter(of, b, m);
      if (whole && !of.text()) p3d_ = row;
    }
    for (int s = 0; s < of.sections; ++s) {
      if (!file.take()) return false;
    }
    const integer scheme = integers_["itimeint"];
    // Text has none; a whole read asks for them all the same.
    const bool none = leading || (of.text() && !whole);
    const int older_levels = none ? 0 : scheme == 3 ? 2 : scheme == 2 ? 1 : 0;
    for (int level = 0; level < older_levels; ++level) {
      if (of.text() || !file.take()) return false;
    }
  }
  return true;
}

/// @param rows  of the flow array so far
bool ModuleModel::read_extensions(const Operation& of, Cursor& file, bool whole,
                                  std::int64_t rows) {
  for (std::size_t m = 0; m < 3; ++m) {
    if (!file.take()) return false;
    const integer flag = iflag_[m] = flags_of(of)[m];
    if (flag == 999) return true;
    const int last = flag == 1 ? 10 : flag == 41 && m == 0 ? 8 : flag == 41 && m == 1 ? 13 : 0;
    if (last == 0) continue;
    if (whole) {
      num_[1] = last - 5;
      rows = std::max<std::int64_t>(rows, last);
      if (of.records_in_double() && staging_.at("DW").rows < last) {
        staging_["DW"] = {last, points(of)};
      }
    }
    if (!file.take()) return false;
  }
  return false;
}

void ModuleModel::read_next_variable(const Operation& of) {
  set_table(of, true);
  ++announced_;
  if (of.layout == 7) throw RunEnds{2};
  if (of.known_form() && (of.variable < 1 || of.variable > variables())) throw RunEnds{2};
  Cursor file(of, restart_records(of, of.triplets()));
  if (!read_header(of, file)) return;
  if (of.known_form() && !read_one(of, file)) return fail_read();
  units_.erase(201);
}

bool ModuleModel::read_one(const Operation& of, Cursor& file) {
  const bool single = !of.text() && !of.dblprec;
  stage(single ? "one.SW" : "one.DW", 1, points(of));
  stage(single ? "one.SPNTR" : "one.DPNTR", variables(), 1);
  stage("one.READII", variables(), 1);
  if (of.layout == 2) {
    create_parameters(of);
    if (std::ssize(*own(of)) < of.blocks) {
      release("one.");
      throw RunEnds{2};
    }
  }
  if (!read_blocks(of, file, of.triplets(), false)) return false;
  if (of.layout == 101 && of.variable > 5 && !read_extensions(of, file, false, 0)) return false;
  staging_.erase(single ? "one.SW" : "one.DW");
  staging_.erase(single ? "one.SPNTR" : "one.DPNTR");
  staging_.erase("one.READII");
  return true;
}

/// An array that an earlier read has left is reported, and made anew if it is too small.
void ModuleModel::stage(const std::string& name, std::int64_t rows, std::int64_t columns) {
  const auto found = staging_.find(name);
  if (found != staging_.end()) {
    ++bad_allocations_;
    if (found->second.rows >= rows && found->second.columns >= columns) return;
  }
  staging_[name] = {rows, columns};
}

void ModuleModel::release(const std::string& prefix) {
  std::erase_if(staging_, [&](const auto& entry) { return entry.first.starts_with(prefix); });
}

}  // namespace model
