#include <algorithm>
#include <utility>

#include "format/body.hpp"
#include "front/extents.hpp"
#include "front/file.hpp"
#include "front/lists.hpp"
#include "front/point_runs.hpp"
#include "front/sections.hpp"
#include "front/settle.hpp"
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
  if (own.blocks() != grid.blocks()) {
    mismatch(path, "does not belong to its grid: it holds " + std::to_string(own.blocks()) +
                       " blocks, the grid " + std::to_string(grid.blocks()));
  }
  for (std::size_t b = 0; b < own.i.size(); ++b) {
    if (own.of(b) == grid.of(b)) continue;
    mismatch(path, "does not belong to its grid: its block " + std::to_string(b + 1) + " is " +
                       own.text_of(b) + ", the grid's " + grid.text_of(b));
  }
}

}  // namespace

/// Reads the records of a restart file in order, array by array.
class SolutionReader::File {
 public:
  File(const std::string& path, const Reading& reading)
      : form_(reading.restart()), source_(path, form_.coding) {
    read_header(reading.extents.get());
    settle_sections();
    begin_body();
  }

  [[nodiscard]] const RestartForm& form() const { return form_; }
  [[nodiscard]] const Extents& extents() const { return extents_; }
  [[nodiscard]] const RunData& run() const { return header_; }
  [[nodiscard]] const std::vector<std::int32_t>& flags() const { return flags_; }

  SolutionBlock read(std::int32_t block, const IndexRange& range) {
    const PointRuns runs(extents_at(block), range);
    go_to_block(block);
    SolutionBlock result{.extents = runs.extents()};
    while (const auto array = next_array()) {
      auto& arrays = array->triplet ? result.triplets : result.variables;
      const auto count = static_cast<std::size_t>(array->number);
      if (arrays.size() < count) arrays.resize(count);
      arrays[count - 1] = read_array(runs);
    }
    result.parameters = std::exchange(parameters_, {});
    return result;
  }

  Reals read(std::int32_t block, const FlowArray& array, const IndexRange& range) {
    const PointRuns runs(extents_at(block), range);
    if (block == block_ && skip_to(array)) return read_array(runs);
    go_to_block(block);
    if (skip_to(array)) return read_array(runs);
    refuse((array.triplet ? "a request for value " : "a request for variable ") +
               std::to_string(array.number),
           "one that block " + std::to_string(block) + " holds");
  }

 private:
  [[noreturn]] void refuse(std::string found, std::string expected) const {
    throw Error({.kind = ErrorKind::argument,
                 .file = source_.path(),
                 .found = std::move(found),
                 .expected = std::move(expected)});
  }

  BlockExtents extents_at(std::int32_t block) const {
    if (block < 0 || block >= extents_.blocks()) {
      refuse("a request for block " + std::to_string(block),
             "0 to " + std::to_string(extents_.blocks() - 1));
    }
    return extents_.of(static_cast<std::size_t>(block));
  }

  [[nodiscard]] const LayoutTraits& layout() const { return traits_of(form_.layout); }
  [[nodiscard]] recordio::FileKind kind() const { return real_kind(form_.coding); }

  void read_header(const Extents* of_grid) {
    walk_lead(layout(), form_.coding, form_.multiblock, header_,
              [&](const recordio::ReadList& list) { source_.read(list); });
    require_blocks(source_, header_.nblocks, layout().holds_extents());
    if (layout().header == HeaderKind::single_block) {
      extents_ = {{header_.i}, {header_.j}, {header_.k}};
      return require_valid(source_.path(), extents_);
    }
    if (layout().holds_extents()) {
      extents_ = read_extents(source_, layout().dimensions, header_.nblocks,
                              layout().counted_variables ? &functions_ : nullptr);
      return;
    }
    if (of_grid == nullptr) mismatch(source_.path(), "holds no extents; they come from its grid");
    if (of_grid->blocks() != header_.nblocks) {
      mismatch(source_.path(), "holds " + std::to_string(header_.nblocks) + " blocks, the grid " +
                                   std::to_string(of_grid->blocks()));
    }
    extents_ = *of_grid;
  }

  /// Sets the usual sections unless some are stated, and checks them.
  void settle_sections() {
    const std::int32_t most =
        functions_.empty() ? solution_variables : std::ranges::max(functions_);
    if (!form_.sections) form_.sections = Sections{{1, most}};
    const bool differ = std::ranges::any_of(functions_, [&](std::int32_t n) { return n != most; });
    require_sections(source_.path(), *form_.sections, leading());
    for (const std::int32_t count : functions_) {
      if (count < 0 || count > most_variables) {
        source_.fail(std::to_string(count) + " variables in a block",
                     "0 to " + std::to_string(most_variables));
      }
    }
    if (functions_.empty() ||
        (variables_in(*form_.sections) == most && (!differ || form_.sections->size() == 1))) {
      return;
    }
    mismatch(source_.path(), "holds " + std::to_string(most) + " functions, not the sections " +
                                 describe(*form_.sections));
  }

  [[nodiscard]] bool leading() const { return reads_triplets(layout(), form_.coding); }

  void begin_body() {
    // Text has no records of older levels.
    const std::int32_t older = is_text(form_.coding) ? 0 : older_levels(header_.itimeint);
    walk_.emplace(block_records(layout(), shape_of(*form_.sections, leading(), older)),
                  extents_.blocks(), layout().extensions);
    flags_.clear();
    block_ = -1;
    record_ = walk_->next();
  }

  void rewind() {
    source_.rewind();
    const Extents before = extents_;
    read_header(&before);
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
      record_ = walk_->next();
    }
  }

  /// The variables of the current record.
  [[nodiscard]] Section variables() const {
    const bool counted = !functions_.empty() && form_.sections->size() == 1;
    return counted ? Section{1, functions_[static_cast<std::size_t>(block_)]} : record_->variables;
  }

  [[nodiscard]] std::int64_t arrays_in_record() const {
    return variables().variables() + triplets_in_record();
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
          return FlowArray{variables().first + static_cast<std::int32_t>(array_ - before)};
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
        parameters_.resize(static_cast<std::size_t>(record_->parameters));
        source_.read({recordio::stored_as(
            kind(), recordio::values(parameters_.data(), std::ssize(parameters_)))});
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

  [[nodiscard]] std::int64_t block_points() const {
    return extents_.points_of(static_cast<std::size_t>(block_));
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
    source_.read_part({recordio::dropped(kind(), block_points())});
    ++array_;
  }

  Reals read_array(const PointRuns& runs) {
    source_.require_room(runs.points(), kind(), recordio::Claim::may_be_truncated);
    Reals values(precision_in_memory(form_.coding), runs.points());
    recordio::ReadList list;
    runs.add_to(list, values_of(values, kind()));
    source_.read_part(list);
    ++array_;
    return values;
  }

  RestartForm form_;
  SourceFile source_;
  HeaderValues header_;
  Extents extents_;
  std::vector<std::int32_t> functions_;  ///< variables of each block, if the header has them
  std::optional<BodyWalk> walk_;
  std::optional<BodyRecord> record_;  ///< current or next record
  bool open_ = false;                 ///< its arrays are being read
  std::int64_t array_ = 0;            ///< next array of it
  std::int32_t block_ = -1;           ///< current block
  bool begun_ = false;                ///< a record of it has been read
  std::vector<double> parameters_;
  std::vector<std::int32_t> flags_;
};

SolutionReader::SolutionReader(const std::string& path, const SolutionOptions& options)
    : SolutionReader(path, settle_restart(path, options.form, extents_of(options.grid))) {
  if (options.grid != nullptr) require_same(path, extents(), options.grid->extents());
}
SolutionReader::SolutionReader(const std::string& path, const Reading& reading)
    : file_(std::make_unique<File>(path, reading)) {}
SolutionReader::SolutionReader(SolutionReader&&) noexcept = default;
SolutionReader& SolutionReader::operator=(SolutionReader&&) noexcept = default;
SolutionReader::~SolutionReader() = default;

const RestartForm& SolutionReader::form() const {
  return file_->form();
}

const Extents& SolutionReader::extents() const {
  return file_->extents();
}

const RunData& SolutionReader::run() const {
  return file_->run();
}

const std::vector<std::int32_t>& SolutionReader::flags() const {
  return file_->flags();
}

SolutionBlock SolutionReader::read(std::int32_t block, const IndexRange& range) {
  return file_->read(block, range);
}

Reals SolutionReader::read(std::int32_t block, const FlowArray& array, const IndexRange& range) {
  return file_->read(block, array, range);
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
  Solution solution{.form = reader.form(), .run = reader.run()};
  for (std::int32_t b = 0; b < reader.extents().blocks(); ++b) {
    solution.blocks.push_back(reader.read(b));
  }
  solution.flags = reader.flags();
  require_agreement(path, reading);
  return solution;
}

}  // namespace p3dgrid
