#include <algorithm>
#include <utility>

#include "format/body.hpp"
#include "front/extents.hpp"
#include "front/file.hpp"
#include "front/lists.hpp"
#include "front/sections.hpp"
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
    throw Error({.kind = ErrorKind::unsupported,
                 .file = path,
                 .reason = "files of " + layout_text(layout) + " can be read, but not written"});
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
class SolutionWriter::File {
 public:
  File(const std::string& path, SolutionHeader header)
      : path_(path),
        header_((check(path, header), std::move(header))),
        layout_(traits_of(header_.form.layout)),
        target_(path, header_.form.coding),
        walk_(block_records(layout_, header_.form.coding,
                            shape_of(*header_.form.sections, layout_.triplets, 0)),
              header_.extents.blocks(), layout_.extensions) {
    write_header();
    record_ = walk_.next();
  }

  void write(const std::vector<double>& parameters,
             const std::function<Reals(const FlowArray&)>& arrays) {
    write_block(parameters, [&](const FlowArray& array, const auto& put) {
      const Reals values = arrays(array);
      put(&values);
    });
  }

  void write(const SolutionBlock& block) {
    if (block_ < header_.extents.blocks()) {
      check(path_, header_, static_cast<std::size_t>(block_), block);
    }
    write_block(block.parameters,
                [&](const FlowArray& array, const auto& put) { put(&block.of(array)); });
  }

  void reserve(const std::vector<double>& parameters) {
    require_places(path_, header_.form.coding);
    write_block(parameters, [](const FlowArray&, const auto& put) { put(nullptr); });
  }

  void close() {
    if (block_ < header_.extents.blocks()) {
      refuse(path_, std::to_string(block_) + " blocks",
             "the " + std::to_string(header_.extents.blocks()) + " of the header");
    }
    target_.close();
  }

 private:
  void write_header() {
    HeaderValues values;
    static_cast<RunData&>(values) = header_.run;
    values.nblocks = header_.extents.blocks();
    if (layout_.header == HeaderKind::single_block) {
      values.i = header_.extents.i.front();
      values.j = header_.extents.j.front();
      values.k = header_.extents.k.front();
    }
    walk_lead(layout_, header_.form.coding, header_.form.multiblock, std::as_const(values),
              [&](const recordio::WriteList& list) { target_.write(list); });
    if (layout_.dimensions == DimensionKind::none) return;
    write_extents(target_, header_.form.coding, layout_.dimensions, header_.extents,
                  layout_.counted_variables ? &header_.variables : nullptr);
  }

  /// @param with_array  `with_array(array, put)` calls `put(pointer to values)`; a null pointer
  ///                    leaves room for them
  template <class WithArray>
  void write_block(const std::vector<double>& parameters, WithArray with_array) {
    if (block_ == header_.extents.blocks()) {
      refuse(path_, "one more block", "the " + std::to_string(block_) + " of the header");
    }
    require_parameters(path_, layout_, parameters);
    ++block_;
    for (record_ = walk_.next(); record_ && record_->kind != BodyRecordKind::block;
         record_ = walk_.next()) {
      if (record_->kind == BodyRecordKind::parameters) {
        target_.write({recordio::stored_as(
            parameter_kind(), recordio::values(parameters.data(), layout_.parameters))});
      } else if (record_->kind == BodyRecordKind::flag) {
        write_flag(static_cast<std::size_t>(record_->flag - 1));
      } else {
        write_arrays(with_array);
      }
    }
  }

  void write_flag(std::size_t position) {
    const std::int32_t flag =
        position < header_.flags.size() ? header_.flags[position] : end_of_extensions;
    target_.write({recordio::scalar(flag)});
    walk_.set_flag(flag);
  }

  template <class WithArray>
  void write_arrays(WithArray with_array) {
    const auto block = static_cast<std::size_t>(block_ - 1);
    const Section variables = variables_of(header_, block, record_->variables);
    const std::int64_t triplets = record_->kind == BodyRecordKind::leading ? triplet : 0;
    const std::int64_t points = header_.extents.points_of(block);
    const std::int64_t count = triplets + variables.variables() - record_->leaves_out();
    target_.write(count * points * bytes_of(kind()), [&](recordio::RecordOutput& record) {
      const auto write = [&](const FlowArray& array) {
        with_array(array, [&](const Reals* values) {
          if (values == nullptr) return record.leave(points * bytes_of(kind()));
          require_values(path_, array, *values, points);
          record.write(values_of(*values, kind_to_write(header_.form.coding, *values)));
        });
      };
      for (std::int32_t n = 1; n <= triplets; ++n) write({n, true});
      for (std::int32_t n = variables.first; n <= variables.last; ++n) {
        if (n != record_->absent) {
          write({n, false});
        } else {
          with_array(FlowArray{n, false}, [&](const Reals* values) {
            if (values != nullptr) require_absent(path_, *values);
          });
        }
      }
    });
  }

  [[nodiscard]] recordio::FileKind kind() const { return real_kind(header_.form.coding); }

  /// Text has the digits of the precision of the solution, and of doubles that are no singles.
  [[nodiscard]] recordio::FileKind parameter_kind() const {
    const bool is_double = header_.form.coding.precision == Precision::double_precision;
    return is_double ? recordio::FileKind::real8 : recordio::FileKind::real4;
  }

  std::string path_;
  SolutionHeader header_;
  const LayoutTraits& layout_;
  TargetFile target_;
  BodyWalk walk_;
  std::optional<BodyRecord> record_;  ///< that is being written
  std::int32_t block_ = 0;            ///< blocks written
};

SolutionWriter::SolutionWriter(const std::string& path, SolutionHeader header)
    : file_(std::make_shared<File>(path, std::move(header))) {}

void SolutionWriter::write(const SolutionBlock& block) {
  file_->write(block);
}

void SolutionWriter::write(const std::vector<double>& parameters,
                           const std::function<Reals(const FlowArray&)>& arrays) {
  file_->write(parameters, arrays);
}

void SolutionWriter::reserve(const std::vector<double>& parameters) {
  file_->reserve(parameters);
}

void SolutionWriter::close() {
  file_->close();
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
