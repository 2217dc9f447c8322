#include <algorithm>
#include <memory>

#include "MOD_P3DReader.hpp"
#include "faults/operations.hpp"
#include "faults/restart_forms.hpp"
#include "support/scratch_folder.hpp"

namespace faults {

using namespace test_support;
using mod_p3dgrid::integer;

namespace {

Operation on_restart(const std::string& what, const HandMadeRestart& made) {
  Operation operation;
  operation.name = what + " " + name_of(made.form);
  operation.files["flow"] = made.bytes();
  operation.input = "flow";
  operation.iformat = made.form.iformat;
  operation.header = made.header().size();
  operation.needed = made.bytes().size();
  return operation;
}

/// The module variables that a read sets.
void put_state(std::string& bytes) {
  using namespace mod_p3dgrid;
  for (const integer value : {eqid, fileversion, nstep, itimeint, isgsmodel, ibeta, talnvar}) {
    put(bytes, value);
  }
  for (const double value : {dtau, talalfa, talbeta, talgam, talpr, talprt, talre, tals1, talxm1,
                             p3dxm1, p3dalfa, p3dre, p3dtau}) {
    put(bytes, value);
  }
  put(bytes, nfvar);
  put(bytes, sqvar);
  put(bytes, dqvar);
}

/// The first rows of a flow array, among them all that the files fill. A damaged header may make
/// room for millions.
void put_flow(std::string& bytes, const mod_p3dgrid::allocatable<float, 2>& flow) {
  constexpr std::int64_t most_rows = 100;
  const std::int64_t rows = std::min(most_rows, flow.extent(1));
  put(bytes, rows);
  put(bytes, flow.extent(2));
  for (std::int64_t p = 0; flow.allocated() && p < flow.extent(2); ++p) {
    bytes.append(reinterpret_cast<const char*>(flow.data() + p * flow.extent(1)),
                 static_cast<std::size_t>(rows) * sizeof(float));
  }
}

struct Extents {
  integer nblocks = -77;
  mod_p3dgrid::allocatable<integer, 1> idim, jdim, kdim;
};

/// A grid file of the header alone, with the extents of the hand-made restart files.
std::string grid_header(int iformat, int blocks) {
  Bytes count, extents;
  std::string text = std::to_string(blocks) + "\n";
  count.i4(blocks);
  for (int b = 0; b < blocks; ++b) {
    for (int d = 0; d < 3; ++d) {
      extents.i4(HandMadeRestart::extent(b, d));
      text += " " + std::to_string(HandMadeRestart::extent(b, d));
    }
  }
  if (iformat == formatted) return text + "\n";
  return iformat == 0 ? Bytes().record(count).record(extents).str() : count.append(extents).str();
}

/// @param input  which of the two files is to be damaged
Operation check(const HandMadeRestart& made, const char* input) {
  const RestartForm form = made.form;
  Operation operation = on_restart(std::string("check, damage to ") + input + ",", made);
  operation.files["grid"] = grid_header(form.iformat, form.blocks);
  operation.input = input;
  operation.needed = operation.header =
      operation.input == "grid" ? operation.files["grid"].size() : made.header().size();
  operation.start = [form] {
    const auto call = [form] {
      mod_p3dgrid::checkp3drstrtheader("grid", form.iformat, "flow", form.iformat, form.dblprec,
                                       form.layout, form.multiblock);
    };
    return Started{call, [] { return std::string("they agree"); }};
  };
  return operation;
}

Operation write(const HandMadeRestart& made, bool header_only) {
  const RestartForm form = made.form;
  Operation operation;
  operation.name = "write " + name_of(form);
  operation.output = "flow";
  operation.start = [made, form, header_only] {
    prepare_write(made);
    const auto restart = std::make_shared<Restart>(form.blocks);
    restart->fill(variables_in(made));
    const auto call = [=] {
      if (header_only) {
        mod_p3dgrid::writerestartheader("flow", form.iformat, form.dblprec, form.blocks,
                                        restart->idim, restart->jdim, restart->kdim, form.layout,
                                        form.multiblock);
      } else {
        restart->write("flow", form);
      }
      close_for_host(301);
    };
    return Started{call, [] { return read_file("flow"); }};
  };
  return operation;
}

}  // namespace

std::vector<Operation> restart_reads() {
  std::vector<Operation> all;
  for (HandMadeRestart made : restart_files()) {
    const RestartForm form = made.form;
    // A whole read of layout 100 in single-precision records expects ordinary sections.
    made.leading = !(form.layout == 100 && form.iformat != formatted && !form.dblprec);
    Operation operation = on_restart("read", made);
    operation.start = [made, form] {
      prepare_read(made);
      if (form.layout == 3) mod_gridvars::numrstrtvar.fill(0);
      const auto restart = std::make_shared<Restart>(form.blocks);
      const auto result = [=] {
        std::string bytes;
        put_flow(bytes, restart->varvalues);
        // Layout 100 leaves the triplets of its records unset.
        if (form.layout == 101 || form.iformat == formatted) put(bytes, restart->auxvalues);
        put_state(bytes);
        return bytes;
      };
      return Started{[=] { restart->read("flow", form); }, result};
    };
    operation.may_read_as = may_read_flow_as(made);
    all.push_back(operation);
  }
  return all;
}

std::vector<Operation> restart_header_reads() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    const RestartForm form = made.form;
    Operation operation = on_restart("read header", made);
    operation.needed = operation.header;
    operation.start = [made, form] {
      prepare_read(made);
      const auto extents = std::make_shared<Extents>();
      const auto call = [=] {
        mod_p3dgrid::readrestartheader("flow", form.iformat, form.dblprec, extents->nblocks,
                                       form.layout, form.multiblock, extents->idim, extents->jdim,
                                       extents->kdim);
        mod_p3dgrid::p3dcloseunit(201);
      };
      const auto result = [=] {
        std::string bytes;
        put(bytes, extents->nblocks);
        for (const auto* column : {&extents->idim, &extents->jdim, &extents->kdim}) {
          put(bytes, *column);
        }
        put_state(bytes);
        return bytes;
      };
      return Started{call, result};
    };
    all.push_back(operation);
  }
  return all;
}

std::vector<Operation> restart_header_writes() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    if (made.form.layout != 0 && made.form.layout != 102) all.push_back(write(made, true));
  }
  return all;
}

std::vector<Operation> restart_writes() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    if (made.form.layout != 0) all.push_back(write(made, false));
  }
  return all;
}

std::vector<Operation> restart_checks() {
  std::vector<Operation> all;
  for (const HandMadeRestart& made : restart_files()) {
    if (made.form.layout > 3) continue;
    for (const char* input : {"grid", "flow"}) all.push_back(check(made, input));
  }
  return all;
}

}  // namespace faults
