#include <algorithm>
#include <exception>
#include <utility>

#include "format/body.hpp"
#include "front/extents.hpp"
#include "front/file.hpp"
#include "front/lists.hpp"
#include "front/point_runs.hpp"
#include "front/sections.hpp"
#include "front/settle.hpp"
#include "p3dgrid/check.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {
namespace {

std::shared_ptr<const Extents> extents_of(const Grid* grid) {
  return grid == nullptr ? nullptr : std::make_shared<const Extents>(grid->extents());
}

[[noreturn]] void mismatch(const std::string& path, std::string reason) {
  throw Error({.kind = ErrorKind::mismatch, .file = path, .reason = std::move(reason)});
}

void require_same(const std::string& path, const Extents& own, const Extents& grid) {
  const auto differences = differing_blocks(path, own, grid);
  if (!differences.empty()) throw Error(differences.front());
}

}  // namespace

/// Reads the records of a restart file in order, array by array.
class SolutionReader::File {
 public:
  File(const std::string& path, const Reading& reading)
      : header_{.form = reading.restart()}, reading_(reading), source_(path, form().coding) {
    require_files_of(path, form());
    header_.triplets = has_triplets(path, reading);
    read_header(header_, reading.extents.get());
    if (layout().more_parameters) {
      parameter_count_ = source_.parameters_after(form().multiblock ? 2 : 1);
    }
    settle_sections();
    begin_body();
    if (layout().extensions) read_flags();
  }

  [[nodiscard]] const SolutionHeader& header() const { return header_; }
  [[nodiscard]] const Reading& reading() const { return reading_; }
  [[nodiscard]] const std::string& path() const { return source_.path(); }

  std::vector<double> parameters(std::int32_t block) {
    static_cast<void>(extents_at(block));
    const ErrorGuard guard(*this);
    if (block != block_ || arrays_begun_) go_to_block(block);
    static_cast<void>(next_array());
    return parameters_;
  }

  SolutionBlock read(std::int32_t block, const IndexRange& range) {
    const PointRuns runs(extents_at(block), range);
    const ErrorGuard guard(*this);
    go_to_block(block);
    SolutionBlock result{.extents = runs.extents()};
    while (const auto array = next_array()) {
      auto& arrays = array->triplet ? result.triplets : result.variables;
      const auto count = static_cast<std::size_t>(array->number);
      if (arrays.size() < count) arrays.resize(count);
      arrays[count - 1] = read_array(runs);
    }
    const auto absent = static_cast<std::size_t>(absent_variable(layout(), form().coding));
    if (absent > 0 && absent <= result.variables.size()) {
      result.variables[absent - 1] = absent_values(runs);
    }
    result.parameters = parameters_;
    return result;
  }

  BlockIndex locate(std::int32_t block) {
    require_places(source_.path(), form().coding);
    static_cast<void>(extents_at(block));
    const ErrorGuard guard(*this);
    go_to_block(block);
    BlockIndex arrays;
    index_ = &arrays;
    while (const auto array = next_array()) {
      const Content content = array->triplet ? Content::triplets : Content::variable;
      arrays.push_back(source_.locate({content, array->number, kind(), block_points()}));
      ++array_;
    }
    arrays_begun_ = true;  // the flow parameters have not been read
    return arrays;
  }

  Reals read(std::int32_t block, const FlowArray& array, const IndexRange& range) {
    const PointRuns runs(extents_at(block), range);
    const std::int32_t absent = absent_variable(layout(), form().coding);
    if (!array.triplet && absent > 0 && array.number == absent) return absent_values(runs);
    const ErrorGuard guard(*this);
    if (block == block_ && skip_to(array)) return read_array(runs);
    go_to_block(block);
    if (skip_to(array)) return read_array(runs);
    throw Error({.kind = ErrorKind::argument,
                 .file = source_.path(),
                 .reason = "block " + std::to_string(block + 1) + " holds no " +
                           (array.triplet ? "triplet " : "variable ") +
                           std::to_string(array.number)});
  }

 private:
  /// Goes back to the beginning of the file if the last read failed, because the position in the
  /// file is then unknown. Its destructor ends the making of an index.
  class ErrorGuard {
   public:
    explicit ErrorGuard(File& file) : file_(file) {
      if (file_.failed_) file_.rewind();
      file_.failed_ = false;
    }
    ErrorGuard(const ErrorGuard&) = delete;
    ErrorGuard& operator=(const ErrorGuard&) = delete;
    ~ErrorGuard() {
      file_.failed_ = std::uncaught_exceptions() > exceptions_;
      file_.index_ = nullptr;
    }

   private:
    File& file_;
    int exceptions_ = std::uncaught_exceptions();
  };

  BlockExtents extents_at(std::int32_t block) const {
    if (extents().i.empty()) {
      mismatch(source_.path(), "holds no extents; they come from its grid");
    }
    if (block < 0 || block >= extents().blocks()) {
      refuse(source_.path(), "a request for block " + std::to_string(block),
             "0 to " + std::to_string(extents().blocks() - 1));
    }
    return extents().of(static_cast<std::size_t>(block));
  }

  [[nodiscard]] const RestartForm& form() const { return header_.form; }
  [[nodiscard]] const Extents& extents() const { return header_.extents; }
  [[nodiscard]] const LayoutTraits& layout() const { return traits_of(form().layout); }
  [[nodiscard]] recordio::FileKind kind() const { return real_kind(form().coding); }

  /// @param of_grid  extents for layouts without extents; may be null
  void read_header(SolutionHeader& header, const Extents* of_grid) {
    HeaderValues values;
    walk_lead(layout(), form().coding, form().multiblock, values,
              [&](const recordio::ReadList& list) { source_.read(list); });
    header.run = static_cast<const RunData&>(values);
    header.blocks = values.nblocks;
    // Blocks of a grid may have no points, so that the file holds less than a value for each.
    if (layout().holds_extents() || of_grid == nullptr) {
      require_blocks(source_, values.nblocks, layout().holds_extents());
    }
    if (layout().header == HeaderKind::single_block) {
      header.extents = {{values.i}, {values.j}, {values.k}};
      require_valid(source_.path(), form().coding, header.extents);
    } else if (layout().holds_extents()) {
      HeaderCounts counts;
      header.extents = read_extents(source_, layout().dimensions, values.nblocks, counts);
      header.variables = std::move(counts.variables);
      header.run.species = counts.species;
    } else if (of_grid != nullptr) {
      if (of_grid->blocks() != values.nblocks) {
        mismatch(source_.path(), "holds " + std::to_string(values.nblocks) + " blocks, the grid " +
                                     std::to_string(of_grid->blocks()));
      }
      header.extents = *of_grid;
    }
  }

  /// Sets the usual sections unless some are stated, and checks them.
  void settle_sections() {
    auto& counts = header_.variables;
    const bool counted = layout().counted_variables;
    const std::int32_t most = counted ? std::ranges::max(counts) : solution_variables;
    const std::int32_t least = counted ? std::ranges::min(counts) : solution_variables;
    if (least < 0 || most > most_variables) {
      source_.fail(std::to_string(least) + " to " + std::to_string(most) + " variables in a block",
                   "0 to " + std::to_string(most_variables));
    }
    auto& sections = header_.form.sections;
    if (!sections) sections = Sections{{1, most}};
    require_sections(source_.path(), *sections, header_.triplets);
    if (!counted) {
      counts.assign(static_cast<std::size_t>(header_.blocks),
                    std::ranges::max(*sections, {}, &Section::last).last);
    } else if (variables_in(*sections) != most || (least != most && sections->size() > 1)) {
      mismatch(source_.path(), "holds " + std::to_string(most) + " functions, not the sections " +
                                   describe(*sections));
    }
  }

  /// Reads the flags after the block, and with them the number of variables.
  void read_flags() {
    go_to_block(0);
    while (const auto array = next_array()) {
      if (!array->triplet) header_.variables[0] = std::max(header_.variables[0], array->number);
      skip_array();
    }
    header_.flags = flags_;
    rewind();
  }

  void begin_body() {
    const std::int32_t older = older_levels(form().coding, header_.run.itimeint);
    BlockShape shape = shape_of(*form().sections, header_.triplets, older);
    shape.parameters = parameter_count_;
    walk_.emplace(block_records(layout(), form().coding, shape), extents().blocks(),
                  layout().extensions);
    flags_.clear();
    block_ = -1;
    record_ = walk_->next();
  }

  void rewind() {
    source_.rewind();
    SolutionHeader again;
    read_header(again, &extents());
    open_ = false;
    begin_body();
  }

  /// Goes to the beginning of a block.
  void go_to_block(std::int32_t block) {
    if (block < block_ || (block == block_ && begun_)) rewind();
    while (block_ < block) {
      while (next_array()) skip_array();
      ++block_;
      begun_ = false;
      arrays_begun_ = false;
      parameters_.clear();
      record_ = walk_->next();
    }
  }

  /// The variables of the current record.
  [[nodiscard]] Section variables() const {
    return variables_of(header_, static_cast<std::size_t>(block_), record_->variables);
  }

  [[nodiscard]] std::int64_t arrays_in_record() const {
    return variables().variables() - record_->leaves_out() + triplets_in_record();
  }

  [[nodiscard]] std::int64_t triplets_in_record() const {
    return record_->kind == BodyRecordKind::leading ? triplet : 0;
  }

  /// The next array of the block; none at its end.
  std::optional<FlowArray> next_array() {
    for (;;) {
      if (open_) {
        const std::int64_t before = triplets_in_record();
        if (array_ < before) return FlowArray{static_cast<std::int32_t>(array_) + 1, true};
        if (array_ < arrays_in_record()) {
          const auto index = static_cast<std::int32_t>(array_ - before);
          const std::int32_t number = variables().first + index;
          return FlowArray{number + (record_->leaves_out() && number >= record_->absent)};
        }
        source_.end();
        open_ = false;
        record_ = walk_->next();
      }
      if (!record_ || record_->kind == BodyRecordKind::block) return std::nullopt;
      begun_ = true;
      take_record();
    }
  }

  /// Reads a record without arrays, or begins one with arrays.
  void take_record() {
    switch (record_->kind) {
      case BodyRecordKind::parameters:
        read_parameters(record_->parameters);
        break;
      case BodyRecordKind::older_level:
        source_.skip({recordio::dropped(kind(), record_->values_per_point() * block_points())});
        break;
      case BodyRecordKind::flag:
        source_.read({recordio::scalar(flags_.emplace_back(0))});
        walk_->set_flag(flags_.back());
        break;
      default:
        source_.begin();
        open_ = true;
        array_ = 0;
        return;
    }
    record_ = walk_->next();
    if (!record_ && walk_->unterminated_chain()) {
      source_.fail("three flags, none of them 999",
                   "a chain of at most three flags that ends with 999");
    }
  }

  void read_parameters(const ParameterCount& count) {
    if (index_ != nullptr) return locate_parameters(count);
    parameters_.resize(static_cast<std::size_t>(count.all));
    const auto reals = [&](std::int32_t from, std::int32_t to) {
      return recordio::stored_as(kind(), recordio::values(parameters_.data() + from, to - from));
    };
    if (count.integer == 0) return source_.read({reals(0, count.all)});
    std::int32_t integer = 0;
    source_.read(
        {reals(0, count.integer - 1), recordio::scalar(integer), reals(count.integer, count.all)});
    parameters_[static_cast<std::size_t>(count.integer) - 1] = integer;
  }

  void locate_parameters(const ParameterCount& count) {
    const auto locate = [&](std::int32_t first, std::int32_t last, recordio::FileKind kind) {
      if (first > last) return;
      index_->push_back(source_.locate({Content::parameters, first, kind, last - first + 1}));
    };
    source_.begin();
    if (count.integer > 0) {
      locate(1, count.integer - 1, kind());
      locate(count.integer, count.integer, recordio::FileKind::integer4);
    }
    locate(count.integer + 1, count.all, kind());
    source_.end();
  }

  [[nodiscard]] std::int64_t block_points() const {
    return extents().points_of(static_cast<std::size_t>(block_));
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
    source_.read_part(recordio::dropped(kind(), block_points()));
    ++array_;
    arrays_begun_ = true;
  }

  [[nodiscard]] Reals absent_values(const PointRuns& runs) const {
    return zeros(precision_in_memory(form().coding), runs.points());
  }

  Reals read_array(const PointRuns& runs) {
    source_.require_room(runs.points(), kind(), recordio::Claim::may_be_truncated);
    Reals values(precision_in_memory(form().coding), runs.points());
    runs.read(source_, values_of(values, kind()));
    ++array_;
    arrays_begun_ = true;
    return values;
  }

  SolutionHeader header_;
  Reading reading_;
  SourceFile source_;
  std::optional<BodyWalk> walk_;
  std::optional<BodyRecord> record_;  ///< current or next record
  bool failed_ = false;               ///< the last read has thrown
  bool open_ = false;                 ///< its arrays are being read
  std::int64_t array_ = 0;            ///< next array of it
  std::int32_t block_ = -1;           ///< current block
  bool begun_ = false;                ///< a record of it has been read
  bool arrays_begun_ = false;         ///< an array of it has been read
  ParameterCount parameter_count_;    ///< where the layout does not fix it
  std::vector<double> parameters_;    ///< of the block, once read
  std::vector<std::int32_t> flags_;   ///< read so far
  BlockIndex* index_ = nullptr;       ///< receives parameters instead of `parameters_`
};

SolutionReader::SolutionReader(const std::string& path, const SolutionOptions& options)
    : SolutionReader(path, settle_restart(path, options.form, extents_of(options.grid))) {
  if (options.grid != nullptr) require_same(path, header().extents, options.grid->extents());
}
SolutionReader::SolutionReader(const std::string& path, const Reading& reading)
    : file_(std::make_shared<File>(path, reading)) {}

const SolutionHeader& SolutionReader::header() const {
  return file_->header();
}

const Reading& SolutionReader::reading() const {
  return file_->reading();
}

void SolutionReader::require_agreement() const {
  p3dgrid::require_agreement(file_->path(), file_->reading());
}

std::vector<double> SolutionReader::parameters(std::int32_t block) {
  return file_->parameters(block);
}

SolutionBlock SolutionReader::read(std::int32_t block, const IndexRange& range) {
  return file_->read(block, range);
}

Reals SolutionReader::read(std::int32_t block, const FlowArray& array, const IndexRange& range) {
  return file_->read(block, array, range);
}

BlockIndex SolutionReader::locate(std::int32_t block) {
  return file_->locate(block);
}

Index index_solution(const std::string& path, const SolutionOptions& options) {
  const Reading reading = settle_restart(path, options.form, extents_of(options.grid));
  Index index = index_solution(path, reading);
  if (options.grid != nullptr) require_same(path, index.extents, options.grid->extents());
  return index;
}

Index index_solution(const std::string& path, const Reading& reading) {
  SolutionReader reader(path, reading);
  Index index{.byte_order = reading.coding().byte_order, .extents = reader.header().extents};
  for (std::int32_t b = 0; b < reader.header().blocks; ++b) {
    index.blocks.push_back(reader.locate(b));
  }
  reader.require_agreement();
  return index;
}

Solution read_solution(const std::string& path, const SolutionOptions& options) {
  const Reading reading = settle_restart(path, options.form, extents_of(options.grid));
  Solution solution = read_solution(path, reading);
  if (options.grid != nullptr) {
    require_same(path, solution.extents(), options.grid->extents());
  }
  return solution;
}

Solution read_solution(const std::string& path, const Reading& reading) {
  SolutionReader reader(path, reading);
  const SolutionHeader& header = reader.header();
  Solution solution{.form = header.form, .run = header.run, .flags = header.flags};
  for (std::int32_t b = 0; b < header.blocks; ++b) {
    solution.blocks.push_back(reader.read(b));
  }
  reader.require_agreement();
  return solution;
}

}  // namespace p3dgrid
