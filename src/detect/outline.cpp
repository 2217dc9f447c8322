#include "detect/evidence.hpp"
#include "format/overflow.hpp"
#include "recordio/connection.hpp"

namespace p3dgrid {
namespace {

constexpr std::int32_t most_blocks_with_empty = 1 << 18;

/// Blocks whose extents are checked before memory for those of all blocks is allocated.
constexpr std::int32_t sample_blocks = 1024;

/// Reads header records from the beginning of a file, and keeps their sizes.
class HeaderReader {
 public:
  HeaderReader(Evidence& evidence, const Coding& coding)
      : file_(is_text(coding) ? evidence.text() : evidence.file()), coding_(coding) {
    file_.seek(0);
  }

  void operator()(const recordio::ReadList& list) {
    sizes.add(list, real_kind(coding_));
    recordio::read_record(file_, coding_, list, recordio::RestOfRecord::skipped, lines_);
  }

  /// Runs a walk over header records; false if the file holds other records.
  template <class Walk>
  static bool succeeds(Walk walk) {
    try {
      return walk();
    } catch (const recordio::ReadError& error) {
      // Rethrow errors of the system.
      if (error.status > recordio::status_error) throw;
      return false;
    }
  }

  struct State {
    std::int64_t offset;
    std::int64_t lines;
    HeaderSizes sizes;
  };
  [[nodiscard]] State state() const { return {file_.offset(), lines_, sizes}; }
  void restore(State state) {
    file_.seek(state.offset);
    lines_ = state.lines;
    sizes = std::move(state.sizes);
  }

  HeaderSizes sizes;

 private:
  recordio::InputFile& file_;
  const Coding& coding_;
  std::int64_t lines_ = 0;
};

/// The same, and false for a block without points unless these are accepted.
bool add_points(std::int64_t& points, const BlockExtents& block, EmptyBlocks empty) {
  return add_points(points, block) && (block.points() > 0 || empty == EmptyBlocks::accepted);
}

struct BlockDimensions {
  Extents extents;
  std::vector<std::int32_t> functions;

  std::array<std::int32_t, 2> totals = {};  ///< variables and species of all blocks

  BlockDimensions(DimensionKind kind, std::int32_t blocks) {
    const auto count = static_cast<std::size_t>(blocks);
    for (auto* column : {&extents.i, &extents.j, &extents.k}) column->resize(count);
    if (kind == DimensionKind::one_record_with_variables) functions.resize(count);
  }

  template <class Visit>
  void walk(DimensionKind kind, const Coding& coding, std::int32_t blocks, Visit& visit) {
    std::vector<std::int32_t*> columns = {extents.i.data(), extents.j.data(), extents.k.data()};
    if (!functions.empty()) columns.push_back(functions.data());
    std::vector<std::int32_t*> ends;
    if (kind == DimensionKind::one_record_with_species) ends = {&totals[0], &totals[1]};
    walk_dimensions<std::int32_t>(kind, coding, blocks, columns, visit, ends);
  }

  [[nodiscard]] bool plausible(EmptyBlocks empty) const {
    std::int64_t points = 0;
    for (std::size_t b = 0; b < extents.i.size(); ++b) {
      if (!add_points(points, extents.of(b), empty)) return false;
    }
    return std::ranges::all_of(
        functions, [](std::int32_t count) { return count >= 0 && count <= most_variables; });
  }
};

/// Most blocks that fit the file with their extents and a record or a line each.
/// @param extents  number of extents per block in the header
std::int64_t most_blocks(std::int64_t size, Encoding encoding, std::int64_t extents) {
  if (encoding == Encoding::formatted) return size;
  const std::int64_t markers = encoding == Encoding::unformatted ? 8 : 0;
  return size / std::max<std::int64_t>(1, 4 * extents + markers);
}

/// Reads the block dimensions. Checks a sample of them first if there are many.
bool read_dimensions(Evidence& evidence, HeaderReader& reader, const Coding& coding,
                     DimensionKind kind, EmptyBlocks empty, Outline& outline) {
  const std::int64_t extents = kind == DimensionKind::none ? 0 : axes_of(coding);
  if (outline.blocks < 1 ||
      outline.blocks > most_blocks(evidence.size(), coding.encoding, extents)) {
    return false;
  }
  if (kind == DimensionKind::none) return true;
  if (outline.blocks > most_blocks_with_empty) {
    empty = EmptyBlocks::refused;
    // A block with points has at least one line of text.
    if (is_text(coding) && outline.blocks > evidence.text_lines()) return false;
  }
  if (outline.blocks > sample_blocks) {
    HeaderReader::State begin = reader.state();
    BlockDimensions sample(kind, sample_blocks);
    sample.walk(kind, coding, sample_blocks, reader);
    if (!sample.plausible(empty)) return false;
    reader.restore(std::move(begin));
  }
  BlockDimensions all(kind, outline.blocks);
  all.walk(kind, coding, outline.blocks, reader);
  if (!all.plausible(empty)) return false;
  outline.functions = std::move(all.functions);
  if (kind == DimensionKind::one_record_with_species) {
    const auto& [variables, species] = all.totals;
    if (variables < solution_variables || variables > most_variables) return false;
    if (species < 0 || species > variables) return false;
    outline.functions.assign(all.extents.i.size(), variables);
  }
  outline.extents = std::make_shared<const Extents>(std::move(all.extents));
  return true;
}

}  // namespace

std::optional<Outline> Evidence::grid_outline(const Coding& coding, bool multiblock,
                                              EmptyBlocks empty) {
  if (!has_readable_header(coding)) return std::nullopt;
  Outline outline;
  HeaderReader reader(*this, coding);
  const bool taken = HeaderReader::succeeds([&] {
    if (multiblock) reader({recordio::scalar(outline.blocks)});
    return read_dimensions(*this, reader, coding, DimensionKind::one_record, empty, outline);
  });
  outline.sizes = std::move(reader.sizes);
  return taken ? std::optional(std::move(outline)) : std::nullopt;
}

std::optional<Outline> Evidence::restart_outline(const RestartForm& form, EmptyBlocks empty) {
  if (!has_readable_header(form.coding)) return std::nullopt;
  Outline outline;
  HeaderReader reader(*this, form.coding);
  HeaderValues header;
  const LayoutTraits& layout = traits_of(form.layout);
  const bool taken = HeaderReader::succeeds([&] {
    walk_lead(layout, form.coding, form.multiblock, header, reader);
    outline.blocks = header.nblocks;
    if (layout.header == HeaderKind::single_block) {
      std::int64_t points = 0;
      if (!add_points(points, {header.i, header.j, header.k}, empty)) return false;
      outline.extents =
          std::make_shared<const Extents>(Extents{{header.i}, {header.j}, {header.k}});
    }
    return read_dimensions(*this, reader, form.coding, layout.dimensions, empty, outline);
  });
  outline.older_levels = older_levels(form.coding, header.itimeint);
  outline.sizes = std::move(reader.sizes);
  if (!taken) return std::nullopt;
  if (layout.more_parameters) {
    const auto parameters = overflow_parameters(file_, form.coding, size_, outline.sizes.records());
    if (!parameters) return std::nullopt;
    outline.parameters = *parameters;
  }
  return outline;
}

}  // namespace p3dgrid
