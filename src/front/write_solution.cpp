#include <algorithm>
#include <utility>

#include "format/body.hpp"
#include "front/file.hpp"
#include "front/header.hpp"
#include "front/values.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {
namespace {

std::string layout_text(const LayoutTraits& layout) {
  return std::string("layout ") + layout.name;
}

/// Refuses what a file in this form cannot hold.
void check(const std::string& path, const SolutionHeader& header) {
  const LayoutTraits& layout = traits_of(header.form.layout);
  if (!layout.writable) {
    fail(ErrorKind::unsupported, path,
         "files of " + layout_text(layout) + " can be read, but not written");
  }
  require_files_of(path, header.form);
  require_valid(path, header.form.coding, header.extents);
  require_sections(path, header.form.sections.value_or(Sections()), layout.triplets);
  const std::int32_t blocks = header.extents.blocks();
  const bool one = layout.one_block || (layout.may_hold_count() && !header.form.multiblock);
  if (blocks < 1 || (one && blocks > 1)) {
    refuse(path, std::to_string(blocks) + " blocks",
           one ? "one for a file of " + layout_text(layout) + " without a block count"
               : "at least one");
  }
  if (layout.counted_variables && std::ssize(header.variables) != blocks) {
    refuse(path, "variable counts of " + std::to_string(header.variables.size()) + " blocks",
           "of " + std::to_string(blocks));
  }
  const auto& flags = header.flags;
  if (!layout.extensions || flags.empty() || flags.size() > most_flags) return;
  if (std::ranges::find(flags, end_of_extensions) != flags.end()) return;
  refuse(path, "flags without 999", "a chain of at most three flags that ends with 999");
}

void require_values(const std::string& path, const FlowArray& array, const Reals& values,
                    std::int64_t points) {
  if (values.size() == points) return;
  refuse(path,
         std::to_string(values.size()) + " values of " +
             (array.triplet ? "the triplets" : "variable " + std::to_string(array.number)),
         std::to_string(points));
}

/// Further parameters, which an OVERFLOW solution has, are not written.
void require_parameters(const std::string& path, const LayoutTraits& layout,
                        const std::vector<double>& parameters) {
  if (layout.parameters == 0 || std::ssize(parameters) >= layout.parameters) return;
  refuse(path, std::to_string(parameters.size()) + " flow parameters",
         std::to_string(layout.parameters));
}

/// Refuses values that a file of two dimensions leaves out.
void require_absent(const std::string& path, const Reals& values) {
  if (is_zero(values)) return;
  refuse(path, "a third momentum other than 0", "one of 0 in two dimensions");
}

/// Refuses a block without the values that the file is to hold.
void check(const std::string& path, const SolutionHeader& header, std::size_t number,
           const SolutionBlock& block) {
  const LayoutTraits& layout = traits_of(header.form.layout);
  const std::int64_t points = header.extents.points_of(number);
  const auto require = [&](const Section& section, bool triplet) {
    for (std::int32_t n = section.first; n <= section.last; ++n) {
      require_values(path, {n, triplet}, block.of({n, triplet}), points);
    }
  };
  const std::int32_t absent = absent_variable(layout, header.form.coding);
  if (absent > 0) require_absent(path, block.of({absent}));
  require_parameters(path, layout, block.parameters);
  if (layout.triplets) require({1, triplet}, true);
  for (const Section& section : *header.form.sections) {
    require(variables_of(header, number, section), false);
  }
  if (!layout.extensions) return;
  for (const Section& extension : extensions_in(header.flags)) require(extension, false);
}

}  // namespace

/// Writes the records of a restart file in order, array by array.
struct SolutionWriter::File {
  /// Values of an array; null leaves room for them.
  using Values = std::function<const Reals*(const FlowArray&)>;

  File(const std::string& path, SolutionHeader checked)
      : header(std::move(checked)),
        layout(traits_of(form.layout)),
        target(path, form.coding, extents.blocks()),
        walk(block_records(layout, form.coding, shape_of(*form.sections, layout.triplets, 0)),
             extents.blocks(), layout.extensions) {
    write_header();
    static_cast<void>(walk.next());
  }

  void write_header() {
    HeaderValues values;
    static_cast<RunData&>(values) = header.run;
    values.nblocks = extents.blocks();
    if (layout.header == HeaderKind::single_block) {
      values.i = extents.i.front();
      values.j = extents.j.front();
      values.k = extents.k.front();
    }
    walk_lead(layout, form.coding, form.multiblock, std::as_const(values),
              [&](const recordio::WriteList& list) { target.write(list); });
    if (layout.dimensions == DimensionKind::none) return;
    write_extents(target, form.coding, layout.dimensions, extents,
                  layout.counted_variables ? &header.variables : nullptr);
  }

  void write_block(const std::vector<double>& parameters, const Values& values) {
    const auto block = static_cast<std::size_t>(target.next_block());
    require_parameters(target.path(), layout, parameters);
    target.begin_block();
    for (auto record = walk.next(); record && record->kind != BodyRecordKind::block;
         record = walk.next()) {
      if (record->kind == BodyRecordKind::parameters) {
        // Text has the digits of the solution's precision, and of doubles that are no singles.
        target.write({recordio::stored_as(kind_of(form.coding.precision),
                                          recordio::values(parameters.data(), layout.parameters))});
      } else if (record->kind == BodyRecordKind::flag) {
        const auto n = static_cast<std::size_t>(record->flag - 1);
        const std::int32_t flag = n < header.flags.size() ? header.flags[n] : end_of_extensions;
        target.write({recordio::scalar(flag)});
        walk.set_flag(flag);
      } else {
        record->variables = variables_of(header, block, record->variables);
        write_arrays(*record, extents.points_of(block), values);
      }
    }
  }

  void write_arrays(const BodyRecord& record, std::int64_t points, const Values& values) {
    const std::int64_t bytes = points * bytes_of(real_kind(form.coding));
    target.write(record.values_per_point() * bytes, [&](recordio::RecordOutput& output) {
      const auto write = [&](const FlowArray& array) {
        const Reals* const reals = values(array);
        if (!array.triplet && array.number == record.absent) {
          if (reals != nullptr) require_absent(target.path(), *reals);
        } else if (reals == nullptr) {
          output.leave(bytes);
        } else {
          require_values(target.path(), array, *reals, points);
          output.write(values_of(*reals, kind_to_write(form.coding, *reals)));
        }
      };
      const bool leading = record.kind == BodyRecordKind::leading;
      for (std::int32_t n = 1; leading && n <= triplet; ++n) write({n, true});
      for (std::int32_t n = record.variables.first; n <= record.variables.last; ++n) write({n});
    });
  }

  SolutionHeader header;
  const RestartForm& form = header.form;
  const Extents& extents = header.extents;
  const LayoutTraits& layout;
  TargetFile target;
  BodyWalk walk;  ///< behind the beginning of the next block
};

SolutionWriter::SolutionWriter(const std::string& path, SolutionHeader header) {
  check(path, header);
  file_ = std::make_shared<File>(path, std::move(header));
}

void SolutionWriter::write(const SolutionBlock& block) {
  const auto number = static_cast<std::size_t>(file_->target.next_block());
  check(file_->target.path(), file_->header, number, block);
  file_->write_block(block.parameters, [&](const FlowArray& array) { return &block.of(array); });
}

void SolutionWriter::write(const std::vector<double>& parameters,
                           const std::function<Reals(const FlowArray&)>& arrays) {
  Reals values;
  file_->write_block(parameters, [&](const FlowArray& array) {
    values = {};  // one array in memory at a time
    values = arrays(array);
    return &values;
  });
}

void SolutionWriter::reserve(const std::vector<double>& parameters) {
  require_places(file_->target.path(), file_->form.coding);
  file_->write_block(parameters, [](const FlowArray&) { return nullptr; });
}

void SolutionWriter::close() {
  file_->target.close();
}

const Reals& SolutionBlock::of(const FlowArray& array) const {
  static const Reals none;
  const auto& arrays = array.triplet ? triplets : variables;
  const auto index = static_cast<std::size_t>(array.number - 1);
  return index < arrays.size() ? arrays[index] : none;
}

Extents Solution::extents() const {
  Extents extents;
  for (const SolutionBlock& block : blocks) extents.add(block.extents);
  return extents;
}

std::int32_t Solution::variables() const {
  std::size_t most = 0;
  for (const SolutionBlock& block : blocks) most = std::max(most, block.variables.size());
  return static_cast<std::int32_t>(most);
}

SolutionHeader header_to_write(const Solution& solution, const StatedRestartForm& stated) {
  SolutionHeader read{.form = solution.form,
                      .run = solution.run,
                      .flags = solution.flags,
                      .blocks = static_cast<std::int32_t>(solution.blocks.size()),
                      .extents = solution.extents()};
  for (const SolutionBlock& block : solution.blocks) {
    read.variables.push_back(static_cast<std::int32_t>(block.variables.size()));
  }
  if (!solution.blocks.empty()) {
    read.form.coding.precision = solution.blocks.front().of({}).precision();
  }
  return header_to_write(read, stated);
}

void write_solution(const std::string& path, const Solution& solution,
                    const StatedRestartForm& stated) {
  SolutionHeader header = header_to_write(solution, stated);
  check(path, header);
  for (std::size_t b = 0; b < solution.blocks.size(); ++b) {
    check(path, header, b, solution.blocks[b]);
  }
  SolutionWriter writer(path, std::move(header));
  for (const SolutionBlock& block : solution.blocks) writer.write(block);
  writer.close();
}

}  // namespace p3dgrid
