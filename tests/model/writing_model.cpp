/// What writing does to the module.

#include <algorithm>

#include "model/module_model.hpp"

namespace model {
namespace {

using mod_p3dgrid::integer;

int highest_extension(const std::array<integer, 3>& flags) {
  int highest = 0;
  for (std::size_t m = 0; m < 3 && flags[m] != 999; ++m) {
    if (flags[m] == 1) highest = std::max(highest, 10);
    if (flags[m] == 41 && m < 2) highest = std::max(highest, m == 0 ? 8 : 13);
  }
  return highest;
}

}  // namespace

void ModuleModel::write_restart_header(const Operation& of, const char* name) {
  if (of.known_form()) {
    if (of.layout == 3 && nfvar_ && std::ssize(*nfvar_) < of.blocks) throw RunEnds{2};
    units_[301] = name;
  }
  if (of.layout == 0) throw RunEnds{0};
  if (of.known_form() && of.layout == 3 && !nfvar_) nfvar_.emplace(of.blocks, 0);
}

void ModuleModel::write_restart(const Operation& of) {
  set_table(of, true);
  ++announced_;
  if (of.layout == 7) throw RunEnds{2};
  if (of.layout == 3) num_[0] = nfvar_ ? most_variables() : 0;
  const bool writable = of.known_form() && of.layout != 0;
  if (writable) {
    check_to_write(of);
    // Sections and extensions need rows; copies in double precision have those that are counted.
    const int extended = of.layout == 101 ? highest_extension(iflag_) : 0;
    const int highest = std::max<int>(of.last_variable(), extended);
    if (of.records_in_double() && highest > variables()) throw RunEnds{2};
    check_parameters(of);
  }
  write_restart_header(of, "written");
  if (of.layout == 3) num_[0] = most_variables();
  if (writable) {
    if (of.layout == 2) create_parameters(of);
    if (of.layout == 3) num_[0] = (*nfvar_)[static_cast<std::size_t>(of.blocks) - 1];
  }
  units_.erase(201);
}

/// What is refused before a file is touched.
void ModuleModel::check_to_write(const Operation& of) const {
  if (of.layout == 3 && nfvar_ && std::ssize(*nfvar_) < of.blocks) throw RunEnds{2};
  if (of.layout == 101 && std::ranges::find(iflag_, 999) == iflag_.end()) throw RunEnds{2};
}

void ModuleModel::check_parameters(const Operation& of) const {
  if (of.layout != 2) return;
  const auto& own = of.parameters_in_double() ? dqvar_ : sqvar_;
  const auto& other = of.parameters_in_double() ? sqvar_ : dqvar_;
  const auto& used = own ? own : other;
  if (!used || std::ssize(*used) < of.blocks) throw RunEnds{2};
}

/// Parameters that are missing are those of the other precision, or zeros where there are none.
void ModuleModel::create_parameters(const Operation& of) {
  if (own(of)) return;
  Parameters made(static_cast<std::size_t>(of.blocks));
  const auto& from = other(of);
  for (std::size_t b = 0; from && b < made.size(); ++b) {
    made[b] = (*from)[std::min(b, from->size() - 1)];
  }
  own(of) = made;
}

void ModuleModel::write_next_variable(const Operation& of) {
  if (of.variable < 1 || of.variable > 15) throw RunEnds{2};
  std::string name = (of.variable < 10 ? "v00000" : "v0000") + std::to_string(of.variable) + ".tmp";
  while (variable_files_.contains(name)) name += "t";
  variable_files_[name] = {of.blocks, of.dblprec};
  tmpfile_[static_cast<std::size_t>(of.variable) - 1] = name;
  units_.erase(301);
}

void ModuleModel::combine(const Operation& of) {
  set_table(of, true);
  for (integer m = 1; of.write_first && m <= variables(); ++m) {
    write_next_variable(of.of_variable(m));
  }
  if (of.layout == 7) throw RunEnds{2};
  const bool writable = of.known_form() && of.layout != 0;
  if (writable) {
    check_to_write(of);
    check_parameters(of);
  }
  const integer files = variables();
  for (integer m = 1; m <= files; ++m) {
    const std::string& name = tmpfile_[static_cast<std::size_t>(m) - 1];
    units_.erase(301 + m);
    if (!variable_files_.contains(name)) throw RunEnds{2};
    units_[301 + m] = name;
  }
  write_restart_header(of, "combined");
  if (writable && of.layout == 2) create_parameters(of);
  const bool complete = !writable || variable_files_fit(of);
  for (integer m = 1; m <= files; ++m) {
    variable_files_.erase(tmpfile_[static_cast<std::size_t>(m) - 1]);
    units_.erase(301 + m);
  }
  if (!complete) return fail_read();
  units_.erase(301);
}

/// Whether the files that are read have the records that the blocks ask for.
bool ModuleModel::variable_files_fit(const Operation& of) const {
  const auto fits = [&](integer m) {
    const VariableFile& file = variable_files_.at(tmpfile_[static_cast<std::size_t>(m) - 1]);
    return file.blocks == of.blocks && file.wide == (of.dblprec || of.text());
  };
  const auto all_fit = [&](integer first, integer last) {
    for (integer m = first; m <= last; ++m) {
      if (!fits(m)) return false;
    }
    return true;
  };
  if (!all_fit(1, of.last_variable())) return false;
  for (std::size_t m = 0; of.layout == 101 && m < 3 && iflag_[m] != 999; ++m) {
    if (iflag_[m] == 1 && !all_fit(6, 10)) return false;
    if (iflag_[m] == 41 && m == 0 && !all_fit(6, 8)) return false;
    if (iflag_[m] == 41 && m == 1 && !all_fit(11, 13)) return false;
  }
  return true;
}

}  // namespace model
