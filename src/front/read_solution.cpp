#include <algorithm>
#include <utility>

#include "format/body.hpp"
#include "front/file.hpp"
#include "front/header.hpp"
#include "front/settle.hpp"
#include "front/values.hpp"
#include "p3dgrid/check.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {
namespace {

Reading settle(const std::string& path, const SolutionOptions& options) {
  const auto* const grid = options.grid;
  return settle_restart(path, options.form,
                        grid ? std::make_shared<const Extents>(grid->extents()) : nullptr);
}

/// Throws if the grid of the options, if there is one, has other extents.
void require_same(const std::string& path, const Extents& own, const SolutionOptions& options) {
  if (options.grid == nullptr) return;
  const auto differences = differing_blocks(path, own, options.grid->extents());
  if (!differences.empty()) throw Error(differences.front());
}

}  // namespace

/// Reads the records of a restart file in order, array by array.
struct SolutionReader::File {
  File(const std::string& path, const Reading& settled)
      : header{.form = settled.restart()}, reading(settled), source(path, form.coding) {
    require_files_of(path, form);
    header.triplets = has_triplets(path, reading);
    read_header(header, reading.extents.get());
    if (layout.more_parameters) parameter_count = source.parameters_after(form.multiblock ? 2 : 1);
    settle_sections();
    begin_body();
    if (layout.extensions) read_flags();
  }

  /// Returns `read(extents of the block)`. After a read that failed the position in the file is
  /// unknown, so the next one goes back to the beginning.
  template <class Read>
  auto at_block(std::int32_t number, Read read) {
    if (extents.i.empty()) {
      fail(ErrorKind::mismatch, source.path(), "holds no extents; they come from its grid");
    }
    const BlockExtents whole = extents_of(source.path(), extents, number);
    if (std::exchange(failed, true)) rewind();
    auto result = read(whole);
    failed = false;
    return result;
  }

  /// @param of_grid  extents for layouts without extents; may be null
  void read_header(SolutionHeader& target, const Extents* of_grid) {
    HeaderValues values;
    walk_lead(layout, form.coding, form.multiblock, values,
              [&](const recordio::ReadList& list) { source.read(list); });
    target.run = static_cast<const RunData&>(values);
    target.blocks = values.nblocks;
    // Blocks of a grid may have no points, so that the file holds less than a value for each.
    if (layout.holds_extents() || of_grid == nullptr) {
      require_blocks(source, values.nblocks, layout.holds_extents());
    }
    if (layout.header == HeaderKind::single_block) {
      target.extents = {{values.i}, {values.j}, {values.k}};
      require_valid(source.path(), form.coding, target.extents);
    } else if (layout.holds_extents()) {
      BlockDimensions read = read_dimensions(source, layout.dimensions, values.nblocks);
      target.extents = std::move(read.extents);
      target.variables = std::move(read.variables);
      target.run.species = read.species;
    } else if (of_grid != nullptr) {
      if (of_grid->blocks() != values.nblocks) {
        fail(ErrorKind::mismatch, source.path(),
             "holds " + std::to_string(values.nblocks) + " blocks, the grid " +
                 std::to_string(of_grid->blocks()));
      }
      target.extents = *of_grid;
    }
  }

  /// Sets the usual sections unless some are stated, and checks them.
  void settle_sections() {
    auto& counts = header.variables;
    const bool counted = layout.counted_variables;
    const std::int32_t most = counted ? std::ranges::max(counts) : solution_variables;
    const std::int32_t least = counted ? std::ranges::min(counts) : solution_variables;
    if (least < 0 || most > most_variables) {
      source.fail(std::to_string(least) + " to " + std::to_string(most) + " variables in a block",
                  "0 to " + std::to_string(most_variables));
    }
    auto& sections = header.form.sections;
    if (!sections) sections = Sections{{1, most}};
    require_sections(source.path(), *sections, header.triplets);
    if (!counted) {
      counts.assign(static_cast<std::size_t>(header.blocks),
                    std::ranges::max(*sections, {}, &Section::last).last);
    } else if (variables_in(*sections) != most || (least != most && sections->size() > 1)) {
      fail(ErrorKind::mismatch, source.path(),
           "holds " + std::to_string(most) + " functions, not the sections " + describe(*sections));
    }
  }

  /// Reads the flags after the block, and with them the number of variables.
  void read_flags() {
    go_to_block(0);
    while (const auto array = next_array()) {
      if (!array->triplet) header.variables[0] = std::max(header.variables[0], array->number);
      skip_array();
    }
    header.flags = flags;
    rewind();
  }

  void begin_body() {
    const BlockShape shape =
        shape_of(*form.sections, header.triplets, older_levels(form.coding, header.run.itimeint),
                 parameter_count);
    walk.emplace(block_records(layout, form.coding, shape), extents.blocks(), layout.extensions);
    flags.clear();
    block = -1;
    record = walk->next();
  }

  void rewind() {
    source.rewind();
    SolutionHeader again;
    read_header(again, &extents);
    begin_body();
  }

  /// Goes to the beginning of a block. The caller reads its first record.
  void go_to_block(std::int32_t number) {
    if (number <= block) rewind();
    while (block < number) {
      while (next_array()) skip_array();
      ++block;
      parameters.reset();
      record = walk->next();
    }
  }

  /// The next array of the block; none at its end.
  std::optional<FlowArray> next_array() {
    for (;;) {
      if (source.in_record()) {
        const bool leading = record->kind == BodyRecordKind::leading;
        const std::int64_t index = next - (leading ? triplet : 0);
        if (index < 0) return FlowArray{next + 1, true};
        if (next < record->values_per_point()) {
          const std::int32_t number = record->variables.first + static_cast<std::int32_t>(index);
          return FlowArray{number + (record->leaves_out() && number >= record->absent)};
        }
        source.end();
        record = walk->next();
      }
      if (!record || record->kind == BodyRecordKind::block) return std::nullopt;
      take_record();
    }
  }

  /// Reads a record without arrays, or begins one with arrays.
  void take_record() {
    switch (record->kind) {
      case BodyRecordKind::parameters:
        read_parameters(record->parameters);
        break;
      case BodyRecordKind::older_level:
        source.skip({recordio::dropped(kind, record->values_per_point() * block_points())});
        break;
      case BodyRecordKind::flag:
        source.read({recordio::scalar(flags.emplace_back(0))});
        walk->set_flag(flags.back());
        break;
      default:
        source.begin();
        record->variables =
            variables_of(header, static_cast<std::size_t>(block), record->variables);
        next = 0;
        return;
    }
    record = walk->next();
    if (!record && walk->unterminated_chain()) {
      source.fail("three flags, none of them 999",
                  "a chain of at most three flags that ends with 999");
    }
  }

  void read_parameters(const ParameterCount& count) {
    parameters.emplace(static_cast<std::size_t>(count.all));
    const auto reals = [&](std::int32_t from, std::int32_t to) {
      return recordio::stored_as(kind, recordio::values(parameters->data() + from, to - from));
    };
    if (count.integer == 0) return source.read({reals(0, count.all)});
    std::int32_t integer = 0;
    source.read(
        {reals(0, count.integer - 1), recordio::scalar(integer), reals(count.integer, count.all)});
    (*parameters)[static_cast<std::size_t>(count.integer) - 1] = integer;
  }

  /// Appends the arrays of the record of flow parameters, and skips it.
  void locate_parameters(BlockIndex& arrays) {
    const ParameterCount& count = record->parameters;
    const auto locate = [&](std::int32_t first, std::int64_t values, recordio::FileKind file_kind) {
      if (values < 1) return;
      arrays.push_back(source.locate({Content::parameters, first, file_kind, values}));
    };
    source.begin();
    locate(1, count.integer - 1, kind);
    locate(count.integer, count.integers(), recordio::FileKind::integer4);
    locate(count.integer + 1, count.all - count.integer, kind);
    source.end();
    record = walk->next();
  }

  [[nodiscard]] std::int64_t block_points() const {
    return extents.points_of(static_cast<std::size_t>(block));
  }

  /// Skips arrays of the block up to `wanted`; false if it does not come.
  bool skip_to(const FlowArray& wanted) {
    while (const auto array = next_array()) {
      if (*array == wanted) return true;
      skip_array();
    }
    return false;
  }

  void skip_array() {
    source.read_part(recordio::dropped(kind, block_points()));
    ++next;
  }

  Reals read_array(const PointRuns& runs) {
    source.require_room(runs.points(), kind, recordio::Claim::may_be_truncated);
    Reals values(precision_in_memory(form.coding), runs.points());
    runs.read(source, values_of(values, kind));
    ++next;
    return values;
  }

  /// The values of the absent variable.
  [[nodiscard]] Reals absent_values(const PointRuns& runs) const {
    return zeros(precision_in_memory(form.coding), runs.points());
  }

  SolutionHeader header;
  const RestartForm& form = header.form;
  const Extents& extents = header.extents;
  const LayoutTraits& layout = traits_of(form.layout);
  recordio::FileKind kind = real_kind(form.coding);            ///< of the arrays
  std::int32_t absent = absent_variable(layout, form.coding);  ///< variable, 0 for none
  Reading reading;
  SourceFile source;
  std::optional<BodyWalk> walk;
  std::optional<BodyRecord> record;  ///< current or next record
  bool failed = false;               ///< the last read has thrown
  std::int32_t next = 0;             ///< next array of the current record
  std::int32_t block = -1;           ///< current block, of which a record has been read
  ParameterCount parameter_count;    ///< where the layout does not fix it
  std::optional<std::vector<double>> parameters;  ///< of the block, once read
  std::vector<std::int32_t> flags;                ///< read so far
};

SolutionReader::SolutionReader(const std::string& path, const SolutionOptions& options)
    : SolutionReader(path, settle(path, options)) {
  require_same(path, header().extents, options);
}
SolutionReader::SolutionReader(const std::string& path, const Reading& reading)
    : file_(std::make_shared<File>(path, reading)) {}

const SolutionHeader& SolutionReader::header() const {
  return file_->header;
}

const Reading& SolutionReader::reading() const {
  return file_->reading;
}

void SolutionReader::require_agreement() const {
  p3dgrid::require_agreement(file_->source.path(), file_->reading);
}

std::vector<double> SolutionReader::parameters(std::int32_t block) {
  File& file = *file_;
  return file.at_block(block, [&](const BlockExtents&) {
    if (file.layout.parameters > 0 && (block != file.block || !file.parameters)) {
      file.go_to_block(block);
      static_cast<void>(file.next_array());
    }
    return file.parameters.value_or(std::vector<double>());
  });
}

SolutionBlock SolutionReader::read(std::int32_t block, const IndexRange& range) {
  File& file = *file_;
  return file.at_block(block, [&](const BlockExtents& whole) {
    const PointRuns runs(whole, range);
    file.go_to_block(block);
    SolutionBlock result{.extents = runs.extents()};
    while (const auto array = file.next_array()) {
      auto& arrays = array->triplet ? result.triplets : result.variables;
      const auto count = static_cast<std::size_t>(array->number);
      if (arrays.size() < count) arrays.resize(count);
      arrays[count - 1] = file.read_array(runs);
    }
    const auto absent = static_cast<std::size_t>(file.absent);
    if (absent > 0 && absent <= result.variables.size()) {
      result.variables[absent - 1] = file.absent_values(runs);
    }
    if (file.parameters) result.parameters = *file.parameters;
    return result;
  });
}

Reals SolutionReader::read(std::int32_t block, const FlowArray& array, const IndexRange& range) {
  File& file = *file_;
  return file.at_block(block, [&](const BlockExtents& whole) {
    const PointRuns runs(whole, range);
    if (!array.triplet && file.absent > 0 && array.number == file.absent) {
      return file.absent_values(runs);
    }
    if (block == file.block && file.skip_to(array)) return file.read_array(runs);
    file.go_to_block(block);
    if (file.skip_to(array)) return file.read_array(runs);
    fail(ErrorKind::argument, file.source.path(),
         "block " + std::to_string(block + 1) + " holds no " +
             (array.triplet ? "triplet " : "variable ") + std::to_string(array.number));
  });
}

BlockIndex SolutionReader::locate(std::int32_t block) {
  File& file = *file_;
  require_places(file.source.path(), file.form.coding);
  return file.at_block(block, [&](const BlockExtents& whole) {
    file.go_to_block(block);
    BlockIndex arrays;
    if (file.record->kind == BodyRecordKind::parameters) file.locate_parameters(arrays);
    while (const auto array = file.next_array()) {
      const Content content = array->triplet ? Content::triplets : Content::variable;
      arrays.push_back(file.source.locate({content, array->number, file.kind, whole.points()}));
      ++file.next;
    }
    return arrays;
  });
}

Index index_solution(const std::string& path, const SolutionOptions& options) {
  SolutionReader reader(path, settle(path, options));
  const SolutionHeader& header = reader.header();
  Index index{.byte_order = header.form.coding.byte_order, .extents = header.extents};
  for (std::int32_t b = 0; b < header.blocks; ++b) index.blocks.push_back(reader.locate(b));
  reader.require_agreement();
  require_same(path, header.extents, options);
  return index;
}

Solution read_solution(const std::string& path, const SolutionOptions& options) {
  SolutionReader reader(path, settle(path, options));
  const SolutionHeader& header = reader.header();
  Solution solution{.form = header.form, .run = header.run, .flags = header.flags};
  for (std::int32_t b = 0; b < header.blocks; ++b) solution.blocks.push_back(reader.read(b));
  reader.require_agreement();
  require_same(path, header.extents, options);
  return solution;
}

}  // namespace p3dgrid
