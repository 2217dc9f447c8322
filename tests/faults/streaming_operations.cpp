#include <algorithm>
#include <memory>

#include "MOD_P3DReader.hpp"
#include "faults/operations.hpp"
#include "faults/restart_forms.hpp"
#include "support/scratch_folder.hpp"

namespace faults {

using namespace test_support;
using mod_p3dgrid::integer;

std::vector<HandMadeRestart> restart_files() {
  std::vector<HandMadeRestart> all;
  for (const int layout : {0, 1, 2, 3, 100, 101, 102}) {
    for (const int iformat : {0, 1, 2}) {
      for (const bool dblprec : {false, true}) {
        const int blocks = layout == 101 || layout == 102 ? 1 : 2;
        std::vector<std::pair<int, int>> sections{{1, 5}};
        if (layout != 101) sections.emplace_back(6, 7);
        HandMadeRestart made({layout, iformat, dblprec, blocks, sections, true});
        if (layout == 0 && dblprec) made.equation_set = 1;
        if (layout == 0 && iformat != 1) made.time_integration = 2;
        if (layout == 0 && iformat != 1) made.older_levels = 1;
        if (layout == 101) made.flags = {1, 999};
        all.push_back(made);
      }
    }
  }
  return all;
}

std::function<bool(const std::string&, const std::string&)> may_read_flow_as(
    const HandMadeRestart& made) {
  return [made](const std::string& result, const std::string& undamaged) {
    // With other numbers of blocks and older levels the blocks begin elsewhere.
    const RestartForm& form = made.form;
    integer nblocks = 0;
    mod_p3dgrid::readrestartheader("flow", form.iformat, form.dblprec, nblocks, form.layout,
                                   form.multiblock);
    return nblocks != form.blocks || mod_p3dgrid::itimeint != made.time_integration ||
           same_flow(result, undamaged);
  };
}

int variables_in(const HandMadeRestart& made) {
  constexpr int with_extension = 10;
  return made.form.layout == 101 ? with_extension : made.highest_variable();
}

void prepare_read(const HandMadeRestart& made) {
  set_sections(made.form.sections);
  for (auto* array : {&mod_p3dgrid::nfvar}) array->deallocate();
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  mod_p3dgrid::iflag.fill(0);
}

void prepare_write(const HandMadeRestart& made) {
  prepare_read(made);
  using namespace mod_p3dgrid;
  if (made.form.layout == 101) {
    iflag(1) = 1;
    iflag(2) = 999;
    mod_gridvars::numrstrtvar(2) = 5;
  }
  nstep = HandMadeRestart::steps;
  dtau = HandMadeRestart::step_size;
  static_cast<void>(nfvar.allocate(made.form.blocks));
  std::ranges::fill(nfvar.span(), variables_in(made));
  // The other of the two arrays is made by the operation.
  const bool from_single = made.form.wide() || made.form.iformat == 1;
  static_cast<void>(from_single ? sqvar.allocate(made.form.blocks, 4)
                                : dqvar.allocate(made.form.blocks, 4));
  std::ranges::fill(sqvar.span(), 0.5F);
  std::ranges::fill(dqvar.span(), 0.5);
}

namespace {

/// The variable's temporary file, by hand.
std::string variable_file(const HandMadeRestart& made, int variable) {
  const bool wide = made.form.dblprec || made.form.iformat == formatted;
  Bytes file;
  int point = 0;
  for (int b = 0; b < made.form.blocks; ++b) {
    Bytes record;
    for (int p = 0; p < HandMadeRestart::points(b); ++p) {
      const auto value = static_cast<float>(HandMadeRestart::flow(variable, point++));
      if (wide) {
        record.r8(value);
      } else {
        record.r4(value);
      }
    }
    file.record(record);
  }
  return file.str();
}

std::string name_of_variable(int variable) {
  return (variable < 10 ? "v00000" : "v0000") + std::to_string(variable) + ".tmp";
}

Operation read_variable(HandMadeRestart made) {
  const RestartForm form = made.form;
  Operation operation;
  operation.name = "read one variable " + name_of(form);
  operation.files["flow"] = made.bytes();
  operation.input = "flow";
  operation.iformat = form.iformat;
  operation.header = made.header().size();
  operation.needed = made.bytes().size();
  operation.start = [made, form] {
    prepare_read(made);
    if (form.layout == 101) mod_gridvars::numrstrtvar(2) = 5;
    const auto restart = std::make_shared<Restart>(form.blocks);
    static_cast<void>(restart->varvalues.allocate(1, made.all_points()));
    std::ranges::fill(restart->varvalues.span(), -1.0F);
    const auto call = [=] {
      mod_p3dgrid::readnextp3dvar(variables_in(made), "flow", form.iformat, form.dblprec,
                                  form.blocks, restart->blockpoints, restart->varvalues,
                                  restart->idim, restart->jdim, restart->kdim, form.layout,
                                  form.multiblock);
    };
    const auto result = [=] {
      std::string bytes;
      put(bytes, restart->varvalues);
      put(bytes, mod_p3dgrid::sqvar);
      put(bytes, mod_p3dgrid::dqvar);
      return bytes;
    };
    return Started{call, result};
  };
  operation.may_read_as = may_read_flow_as(made);
  return operation;
}

/// @param damaged  the variable whose file is to be damaged
Operation combine(const HandMadeRestart& made, int damaged) {
  const RestartForm form = made.form;
  Operation operation;
  operation.name = "combine, damage to variable " + std::to_string(damaged) + ", " + name_of(form);
  for (int v = 1; v <= variables_in(made); ++v) {
    operation.files[name_of_variable(v)] = variable_file(made, v);
  }
  operation.input = name_of_variable(damaged);
  operation.needed = operation.files[operation.input].size();
  operation.output = "combined";
  operation.deletes_input = true;
  operation.start = [made, form] {
    prepare_write(made);
    for (int v = 1; v <= variables_in(made); ++v) mod_p3dgrid::tmpfile(v) = name_of_variable(v);
    // All variables that the blocks hold are counted in the first section.
    if (form.layout != 101) {
      mod_gridvars::numrstrtvar.fill(0);
      mod_gridvars::numrstrtvar(1) = variables_in(made);
    }
    const auto restart = std::make_shared<Restart>(form.blocks);
    restart->fill(variables_in(made));
    const auto call = [=] {
      mod_p3dgrid::combinep3dvarfiles(restart->auxvalues, "combined", form.iformat, form.dblprec,
                                      form.blocks, form.blocks, restart->idim, restart->jdim,
                                      restart->kdim, form.layout, form.multiblock);
    };
    return Started{call, [] { return read_file("combined"); }};
  };
  return operation;
}

Operation write_variable(bool dblprec) {
  Operation operation;
  operation.name = dblprec ? "write in double precision" : "write in single precision";
  operation.output = "v000003.tmp";
  operation.start = [dblprec] {
    const auto restart = std::make_shared<Restart>(2);
    restart->fill(1);
    const auto call = [=] {
      mod_p3dgrid::writenextp3dvar(3, "v", dblprec, 2, restart->blockpoints, restart->varvalues,
                                   restart->idim, restart->jdim, restart->kdim);
    };
    return Started{call, [] { return read_file("v000003.tmp"); }};
  };
  return operation;
}

}  // namespace

std::vector<Operation> variable_reads() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    // Text is asked for older levels as records, and fails.
    all.push_back(read_variable(made));
  }
  return all;
}

std::vector<Operation> variable_writes() {
  return {write_variable(false), write_variable(true)};
}

std::vector<Operation> combination_writes() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    const int layout = made.form.layout;
    if (layout == 2 || layout == 3 || layout == 101) all.push_back(combine(made, 1));
  }
  return all;
}

std::vector<Operation> combinations() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    if (made.form.layout == 0) continue;
    for (const int damaged : {1, variables_in(made)}) all.push_back(combine(made, damaged));
  }
  return all;
}

}  // namespace faults
