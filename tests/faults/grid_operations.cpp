#include <algorithm>
#include <memory>

#include "MOD_P3DReader.hpp"
#include "faults/operations.hpp"
#include "faults/plain_grid_reader.hpp"
#include "grid/grid_case.hpp"

namespace faults {
namespace {

using namespace test_support;
using mod_p3dgrid::integer;

std::size_t header_size(const GridForm& form, const HandMadeGrid& grid, const std::string& bytes) {
  if (form.iformat == formatted) {
    std::size_t end = bytes.find('\n') + 1;
    if (form.multiblock) end = bytes.find('\n', end) + 1;
    return end;
  }
  const std::size_t markers = form.iformat == 0 ? 8 : 0;
  return (form.multiblock ? 4 + markers : 0) + 12 * static_cast<std::size_t>(grid.blocks()) +
         markers;
}

Operation on_grid(const std::string& what, const GridForm& form) {
  const HandMadeGrid grid(form);
  Operation operation;
  operation.name = what + " " + name_of(form);
  operation.files["grid"] = grid.bytes(false);
  operation.input = "grid";
  operation.iformat = form.iformat;
  operation.needed = operation.files["grid"].size();
  operation.header = header_size(form, grid, operation.files["grid"]);
  return operation;
}

Operation grid_write(const GridForm& form) {
  Operation operation;
  operation.name = "write " + name_of(form);
  operation.output = "grid";
  operation.start = [form] {
    // Read from the bytes that are to be written again.
    const auto grid = std::make_shared<Grid>();
    write_file("source", HandMadeGrid(form).bytes(false));
    grid->read("source", form);
    return Started{[=] { grid->write("grid", form); }, [] { return read_file("grid"); }};
  };
  return operation;
}

/// @param form     of the file
/// @param read_as  what the reader takes it for
Operation grid_read(const GridForm& form, const GridForm& read_as) {
  Operation operation = on_grid("read", form);
  operation.start = [read_as] {
    const auto grid = std::make_shared<Grid>();
    return Started{[=] { grid->read("grid", read_as); }, [=] { return result_of(*grid); }};
  };
  operation.may_read_as = [read_as](const std::string& result, const std::string&) {
    const std::string file = read_file("grid");
    // List-directed reading knows more than the plain one: repeat counts, null values, slashes.
    const bool plain =
        read_as.iformat != formatted || file.find_first_not_of("0123456789+-.E \n") == file.npos;
    return !plain || plain_reading(read_as, file) == result;
  };
  return operation;
}

}  // namespace

std::vector<Operation> grid_reads() {
  std::vector<Operation> all;
  for (const GridForm& form : all_grid_forms()) {
    all.push_back(grid_read(form, form));
    if (form.iformat != 0 || !form.iblank) continue;
    // Blanking values that are not asked for are skipped.
    GridForm read_as = form;
    read_as.iblank = false;
    all.push_back(grid_read(form, read_as));
    all.back().name += " without blanking";
  }
  return all;
}

std::vector<Operation> grid_header_reads() {
  std::vector<Operation> all;
  for (const GridForm& form : all_grid_forms()) {
    if (form.iblank) continue;
    for (const bool with_points : {false, true}) {
      Operation operation = on_grid(with_points ? "count points" : "count blocks", form);
      const std::size_t count = form.iformat == 0 ? 12 : 4;
      operation.needed = with_points                 ? operation.header
                         : !form.multiblock          ? 0
                         : form.iformat == formatted ? operation.files["grid"].find('\n') + 1
                                                     : count;
      operation.start = [form, with_points] {
        struct Header {
          integer nblocks = -77, ndim = -77, npoints = -77;
        };
        const auto header = std::make_shared<Header>();
        const auto call = [=] {
          if (with_points) {
            mod_p3dgrid::readp3dgridheader("grid", form.iformat, header->nblocks, header->ndim,
                                           form.multiblock, header->npoints);
          } else {
            mod_p3dgrid::readp3dgridheader("grid", form.iformat, header->nblocks, header->ndim,
                                           form.multiblock);
          }
        };
        const auto result = [=] {
          std::string bytes;
          put(bytes, *header);
          return bytes;
        };
        return Started{call, result};
      };
      all.push_back(operation);
    }
  }
  return all;
}

std::vector<Operation> grid_writes() {
  std::vector<Operation> all;
  for (const GridForm& form : all_grid_forms()) {
    if (form.multiblock == form.iblank) all.push_back(grid_write(form));
  }
  return all;
}

std::vector<Operation> tecplot_writes() {
  std::vector<Operation> all;
  for (const bool blanked : {false, true}) {
    Operation operation;
    operation.name = blanked ? "write blanked" : "write";
    operation.output = "flow.dat";
    operation.start = [blanked] {
      constexpr int points = 11;
      struct Arrays {
        std::vector<integer> idim{2, 3}, jdim{2, 1}, kdim{2, 1};
        std::vector<integer> iblank = std::vector<integer>(points, 1);
        mod_p3dgrid::allocatable<double, 2> xyz, qvar;
      };
      const auto arrays = std::make_shared<Arrays>();
      static_cast<void>(arrays->xyz.allocate(3, points));
      static_cast<void>(arrays->qvar.allocate(5, points));
      for (auto* array : {&arrays->xyz, &arrays->qvar}) {
        double value = 0.1;
        for (double& element : array->span()) element = value += 1.0 / 3.0;
      }
      const auto call = [=] {
        mod_p3dgrid::writetecplotfile_p3d("flow.dat", 2, arrays->xyz, arrays->qvar, arrays->idim,
                                          arrays->jdim, arrays->kdim, arrays->iblank, blanked);
        close_for_host(594);
      };
      return Started{call, [] { return read_file("flow.dat"); }};
    };
    all.push_back(operation);
  }
  return all;
}

}  // namespace faults
