#include <pybind11/functional.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <memory>
#include <mod_p3dgrid/version.hpp>
#include <p3dgrid/check.hpp>
#include <p3dgrid/grid.hpp>
#include <p3dgrid/layout.hpp>
#include <p3dgrid/solution.hpp>
#include <string>
#include <utility>

#include "forms.hpp"

/// The functions behind the package `p3dgrid`, which checks and completes their arguments. They
/// release the global interpreter lock while files are read and written.
namespace p3dgrid::python {
namespace {

using Release = py::gil_scoped_release;
using Acquire = py::gil_scoped_acquire;

/// Calls a function without the global interpreter lock.
template <class Function>
auto unlocked(Function function) {
  const Release release;
  return function();
}

py::dtype dtype_of(Precision precision) {
  return precision == Precision::double_precision ? py::dtype::of<double>()
                                                  : py::dtype::of<float>();
}

/// An array with i fastest in memory that `owner` keeps alive.
py::array array_at(const void* place, const py::dtype& type, const BlockExtents& extents,
                   const py::handle& owner) {
  const py::ssize_t size = type.itemsize();
  const py::ssize_t row = size * extents.i;
  const std::array<py::ssize_t, 3> shape = {extents.i, extents.j, extents.k};
  const std::array<py::ssize_t, 3> strides = {size, row, row * extents.j};
  return {type, shape, strides, place, owner};
}

/// The arrays of a block in one allocation of numpy.
struct BlockArrays {
  py::object x, y, z, iblank;

  BlockMemory allocate(Precision precision, const BlockExtents& extents, bool has_iblank) {
    const py::dtype type = dtype_of(precision);
    const py::ssize_t bytes = type.itemsize() * extents.points();
    const auto blanking = static_cast<py::ssize_t>(has_iblank ? sizeof(std::int32_t) : 0);
    py::array_t<std::byte> memory(3 * bytes + blanking * extents.points());
    auto* const begin = static_cast<std::byte*>(memory.mutable_data());
    BlockMemory result{{begin, begin + bytes, begin + 2 * bytes}, nullptr};
    x = array_at(result.coordinates[0], type, extents, memory);
    y = array_at(result.coordinates[1], type, extents, memory);
    z = array_at(result.coordinates[2], type, extents, memory);
    iblank = py::none();
    if (has_iblank) {
      result.iblank = reinterpret_cast<std::int32_t*>(begin + 3 * bytes);
      iblank = array_at(result.iblank, py::dtype::of<std::int32_t>(), extents, memory);
    }
    return result;
  }

  [[nodiscard]] py::tuple tuple() const { return py::make_tuple(x, y, z, iblank); }
};

/// Values that the library has read, without a copy.
py::object array_of(Reals&& reals, const BlockExtents& extents) {
  if (reals.empty() && extents.points() > 0) return py::none();
  auto held = std::make_unique<Reals>(std::move(reals));
  const auto* const place = held->visit([](auto values) -> const void* { return values.data(); });
  const py::dtype type = dtype_of(held->precision());
  const py::capsule owner(held.release(), [](void* owned) { delete static_cast<Reals*>(owned); });
  return array_at(place, type, extents, owner);
}

/// Copies an array of any strides and type of numbers to memory in the order of a file.
template <class Value>
void copy(const py::handle& from, Value* to, const BlockExtents& extents) {
  const py::capsule owner(to, [](void*) {});
  py::array view = array_at(to, py::dtype::of<Value>(), extents, owner);
  view[py::ellipsis()] = from;
}

Reals reals_of(const py::handle& array, Precision precision, const BlockExtents& extents) {
  if (array.is_none()) return {precision, 0};
  Reals reals(precision, extents.points());
  reals.visit([&](auto values) { copy(array, values.data(), extents); });
  return reals;
}

/// The properties of a file that are known before its arrays are read.
template <class Form>
py::dict summary(const Reading& reading, const Form& form, const Extents& extents,
                 const std::string& path) {
  py::dict result;
  result["form"] = to_python(form);
  result["extents"] = to_python(extents);
  result["reason"] = "as stated";
  if (reading.checked) {
    std::int64_t size = 0;
    if (reading.coding().encoding == Encoding::binary) {
      size = py::cast<std::int64_t>(
          py::module_::import("os").attr("stat")(py::bytes(path)).attr("st_size"));
    }
    result["reason"] = reason_for(reading, size);
  }
  return result;
}

py::list places_of(const BlockIndex& arrays) {
  py::list result;
  for (const StoredArray& array : arrays) {
    py::list ranges;
    for (const ByteRange& range : array.ranges) {
      ranges.append(py::make_tuple(range.offset, range.bytes));
    }
    result.append(py::make_tuple(name_of(array.content), array.number, name_of(array.kind),
                                 array.count, py::tuple(ranges)));
  }
  return result;
}

std::int32_t blocks_of(const GridReader& reader) {
  return reader.extents().blocks();
}

std::int32_t blocks_of(const SolutionReader& reader) {
  return reader.header().blocks;
}

/// The index of a file, which must agree with its form; None for text.
template <class Reader>
py::object index_of(Reader& reader) {
  const Reading& reading = reader.reading();
  if (is_text(reading.coding())) return py::none();
  std::vector<BlockIndex> index;
  {
    const Release release;
    reader.require_agreement();
    const std::int32_t blocks = blocks_of(reader);
    for (std::int32_t b = 0; b < blocks; ++b) index.push_back(reader.locate(b));
  }
  py::list result;
  for (const BlockIndex& arrays : index) result.append(places_of(arrays));
  return result;
}

py::dict summary(const GridReader& reader, const std::string& path) {
  return summary(reader.reading(), reader.form(), reader.extents(), path);
}

py::dict summary(const SolutionReader& reader, const std::string& path) {
  const SolutionHeader& header = reader.header();
  py::dict result = summary(reader.reading(), header.form, header.extents, path);
  result["header"] = to_python(header.form, header.run);
  result["flags"] = header.flags;
  result["variables"] = header.variables;
  result["triplets"] = header.triplets;
  return result;
}

GridReader grid_reader(const std::string& path, const py::dict& stated) {
  const StatedGridForm form = grid_form_in(stated);
  const Release release;
  return GridReader(path, form);
}

SolutionReader solution_reader(const std::string& path, const py::dict& stated,
                               const py::object& extents) {
  SolutionOptions options{.form = restart_form_in(stated)};
  Grid grid;
  if (const auto of_grid = extents_in(extents)) {
    for (std::size_t b = 0; b < of_grid->i.size(); ++b) {
      grid.blocks.push_back({.extents = of_grid->of(b)});
    }
    options.grid = &grid;
  }
  const Release release;
  return SolutionReader(path, options);
}

py::dict detect(const std::string& path, const std::string& kind, const py::dict& stated,
                const py::object& extents) {
  if (kind == "grid") {
    const StatedGridForm form = grid_form_in(stated);
    return to_python(unlocked([&] { return detect_grid(path, form); }));
  }
  if (kind == "restart") {
    const StatedRestartForm form = restart_form_in(stated);
    const auto of_grid = extents_in(extents);
    return to_python(unlocked([&] { return detect_restart(path, form, of_grid); }));
  }
  return to_python(unlocked([&] { return detect_any(path); }));
}

py::tuple read_block(GridReader& reader, std::int32_t block, const IndexRange& range = {}) {
  BlockArrays arrays;
  const bool iblank = reader.form().iblank;
  const Release release;
  reader.read(
      block,
      [&](Precision precision, const BlockExtents& extents) {
        const Acquire acquire;
        return arrays.allocate(precision, extents, iblank);
      },
      range);
  const Acquire acquire;
  return arrays.tuple();
}

py::dict read_grid(const std::string& path, const py::dict& stated) {
  GridReader reader = grid_reader(path, stated);
  py::dict result = summary(reader, path);
  py::list blocks;
  for (std::int32_t b = 0; b < reader.extents().blocks(); ++b) {
    blocks.append(read_block(reader, b));
  }
  result["blocks"] = blocks;
  const Release release;
  reader.require_agreement();
  return result;
}

py::list arrays_of(std::vector<Reals>& arrays, const BlockExtents& extents) {
  py::list list;
  for (Reals& reals : arrays) list.append(array_of(std::move(reals), extents));
  return list;
}

void add_parameters(py::dict& result, const std::vector<double>& parameters,
                    const SolutionReader& reader) {
  result["parameters"] = parameters;
  result["parameter_names"] =
      parameter_names(static_cast<std::int32_t>(parameters.size()), reader.header().run.species);
}

py::dict read_block(SolutionReader& reader, std::int32_t block, const IndexRange& range = {}) {
  SolutionBlock read = [&] {
    const Release release;
    return reader.read(block, range);
  }();
  py::dict result;
  add_parameters(result, read.parameters, reader);
  result["variables"] = arrays_of(read.variables, read.extents);
  result["triplets"] = arrays_of(read.triplets, read.extents);
  return result;
}

py::dict read_solution(const std::string& path, const py::dict& stated, const py::object& extents) {
  SolutionReader reader = solution_reader(path, stated, extents);
  py::dict result = summary(reader, path);
  py::list blocks;
  for (std::int32_t b = 0; b < reader.header().blocks; ++b) blocks.append(read_block(reader, b));
  result["blocks"] = blocks;
  const Release release;
  reader.require_agreement();
  return result;
}

/// First index, last index and step of an index range in text form, counted from 0; None for an
/// invalid text.
py::object indices_of(const std::string& text, std::int32_t extent) {
  const auto indices = indices_in(text);
  if (!indices) return py::none();
  const auto index = [&](std::int32_t asked) {
    return asked == Indices::all_points ? extent - 1 : asked;
  };
  return py::make_tuple(index(indices->first), index(indices->last), indices->stride);
}

/// The ranges of a list of numbers, counted from 1; None for an invalid text.
py::object ranges_of(const std::string& text) {
  const auto ranges = numbers_in(text);
  if (!ranges) return py::none();
  py::list result;
  for (const Section& range : *ranges) result.append(py::make_tuple(range.first, range.last));
  return result;
}

/// The points of a part: first index, last index and step of each direction; None for all.
IndexRange range_of(const py::object& part) {
  IndexRange range;
  if (part.is_none()) return range;
  const auto given = py::cast<std::array<std::array<std::int32_t, 3>, 3>>(part);
  for (const Direction d : all_directions) {
    const auto [first, last, stride] = given[static_cast<std::size_t>(d)];
    range.set(d, {first, last, stride});
  }
  return range;
}

py::tuple read_grid_block(const std::string& path, const py::dict& stated, std::int32_t block,
                          const py::object& part) {
  GridReader reader = grid_reader(path, stated);
  return read_block(reader, block, range_of(part));
}

py::dict read_solution_block(const std::string& path, const py::dict& stated,
                             const py::object& extents, std::int32_t block,
                             const py::object& part) {
  SolutionReader reader = solution_reader(path, stated, extents);
  return read_block(reader, block, range_of(part));
}

py::dict read_parameters(const std::string& path, const py::dict& stated, const py::object& extents,
                         std::int32_t block) {
  SolutionReader reader = solution_reader(path, stated, extents);
  py::dict result;
  add_parameters(result, reader.parameters(block), reader);
  return result;
}

py::dict grid_summary(const std::string& path, const py::dict& stated) {
  return summary(grid_reader(path, stated), path);
}

py::dict open_grid(const std::string& path, const py::dict& stated) {
  GridReader reader = grid_reader(path, stated);
  py::dict result = summary(reader, path);
  result["index"] = index_of(reader);
  return result;
}

py::dict solution_summary(const std::string& path, const py::dict& stated,
                          const py::object& extents) {
  return summary(solution_reader(path, stated, extents), path);
}

py::dict open_solution(const std::string& path, const py::dict& stated, const py::object& extents) {
  SolutionReader reader = solution_reader(path, stated, extents);
  py::dict result = summary(reader, path);
  result["index"] = index_of(reader);
  return result;
}

Precision precision_in(const std::string& name) {
  return name == name_of(Precision::double_precision) ? Precision::double_precision
                                                      : Precision::single_precision;
}

/// Writes blocks of x, y, z and blanking values or None, one after another.
void write_grid(const std::string& path, const py::list& blocks, const py::list& extents,
                const std::string& precision, const py::dict& form, const py::dict& stated) {
  const Precision in_memory = precision_in(precision);
  Grid outline{.form = applied_to(GridForm(), grid_form_in(form))};
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    Block& block = outline.blocks.emplace_back();
    block.extents = block_extents_in(extents[b]);
    block.x = Reals(in_memory, 0);
    if (!py::cast<py::tuple>(blocks[b])[3].is_none()) block.iblank.resize(1);
  }
  const GridForm target = form_to_write(outline, grid_form_in(stated));
  GridWriter writer(path, target, outline.extents());
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    const auto arrays = py::cast<py::tuple>(blocks[b]);
    const BlockExtents& points = outline.blocks[b].extents;
    Block block{.extents = points,
                .x = reals_of(arrays[0], in_memory, points),
                .y = reals_of(arrays[1], in_memory, points),
                .z = reals_of(arrays[2], in_memory, points)};
    if (!arrays[3].is_none()) {
      block.iblank.resize(static_cast<std::size_t>(points.points()));
      copy(arrays[3], block.iblank.data(), points);
    }
    const Release release;
    writer.write(block);
  }
  const Release release;
  writer.close();
}

/// The array of a block of a solution: a list of variables or of triplets may be too short.
py::object array_in(const py::dict& block, const FlowArray& array) {
  const auto arrays = py::cast<py::list>(block[array.triplet ? "triplets" : "variables"]);
  const auto index = static_cast<std::size_t>(array.number - 1);
  return index < arrays.size() ? py::object(arrays[index]) : py::none();
}

/// Writes blocks array by array.
void write_solution(const std::string& path, const py::list& blocks, const py::list& extents,
                    const std::string& precision, const py::dict& header,
                    const std::vector<std::int32_t>& flags, const py::dict& form,
                    const py::dict& stated) {
  const Precision in_memory = precision_in(precision);
  SolutionHeader outline{.form = applied_to(RestartForm(), restart_form_in(form)),
                         .run = run_data_in(header),
                         .flags = flags,
                         .blocks = static_cast<std::int32_t>(blocks.size())};
  outline.form.coding.precision = in_memory;
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    outline.extents.add(block_extents_in(extents[b]));
    outline.variables.push_back(
        static_cast<std::int32_t>(py::len(py::cast<py::dict>(blocks[b])["variables"])));
  }
  SolutionWriter writer(path, header_to_write(outline, restart_form_in(stated)));
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    const auto block = py::cast<py::dict>(blocks[b]);
    const BlockExtents points = outline.extents.of(b);
    const auto parameters = py::cast<std::vector<double>>(block["parameters"]);
    const Release release;
    writer.write(parameters, [&](const FlowArray& array) {
      const Acquire acquire;
      return reals_of(array_in(block, array), in_memory, points);
    });
  }
  const Release release;
  writer.close();
}

py::list findings_of(const std::vector<Error>& findings) {
  py::list list;
  for (const Error& finding : findings) list.append(to_python(finding));
  return list;
}

py::list check_any(const std::string& path) {
  return findings_of(unlocked([&] { return check(path); }));
}

py::list check_grid_file(const std::string& path, const py::dict& stated) {
  const StatedGridForm form = grid_form_in(stated);
  return findings_of(unlocked([&] { return check_grid(path, form); }));
}

py::list check_solution_file(const std::string& path, const py::dict& stated,
                             const py::object& extents) {
  const StatedRestartForm form = restart_form_in(stated);
  const auto of_grid = extents_in(extents);
  return findings_of(unlocked([&] { return check_solution(path, form, of_grid); }));
}

py::list check_case(const std::string& grid, const std::string& path, const py::dict& stated) {
  const StatedRestartForm form = restart_form_in(stated);
  return findings_of(unlocked([&] { return check_pair(grid, path, {}, form); }));
}

}  // namespace

PYBIND11_MODULE(_p3dgrid, module) {
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const Error& error) {
      const py::object exception = to_python(error);
      PyErr_SetObject(py::type::of(exception).ptr(), exception.ptr());
    }
  });
  module.attr("__version__") = MOD_P3DGRID_VERSION;
  module.def("detect", &detect);
  module.def("check", &check_any);
  module.def("indices_in", &indices_of);
  module.def("numbers_in", &ranges_of);
  module.def("check_grid", &check_grid_file);
  module.def("check_solution", &check_solution_file);
  module.def("check_pair", &check_case);
  module.def("open_grid", &open_grid);
  module.def("open_solution", &open_solution);
  module.def("grid_summary", &grid_summary);
  module.def("solution_summary", &solution_summary);
  module.def("read_grid", &read_grid);
  module.def("read_solution", &read_solution);
  module.def("read_grid_block", &read_grid_block);
  module.def("read_solution_block", &read_solution_block);
  module.def("read_parameters", &read_parameters);
  module.def("write_grid", &write_grid);
  module.def("write_solution", &write_solution);
}

}  // namespace p3dgrid::python
