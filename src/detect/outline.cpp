#include "detect/evidence.hpp"
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

  /// Calls `read(a copy)` and goes back to where the file was.
  template <class Read>
  bool look_ahead(Read read) const {
    const std::int64_t begin = file_.offset();
    HeaderReader copy = *this;
    const bool result = read(copy);
    file_.seek(begin);
    return result;
  }

  HeaderSizes sizes;

 private:
  recordio::InputFile& file_;
  const Coding& coding_;
  std::int64_t lines_ = 0;
};

bool are_plausible(const Extents& extents, EmptyBlocks empty) {
  std::int64_t points = 0;
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    if (!add_points(points, extents.of(b))) return false;
    if (empty == EmptyBlocks::refused && extents.points_of(b) == 0) return false;
  }
  return true;
}

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
    const bool plausible = reader.look_ahead([&](HeaderReader& sample) {
      return are_plausible(read_block_dimensions(kind, coding, sample_blocks, sample).extents,
                           empty);
    });
    if (!plausible) return false;
  }
  BlockDimensions all = read_block_dimensions(kind, coding, outline.blocks, reader);
  // A solution with species has the usual variables too.
  const std::int32_t least =
      kind == DimensionKind::one_record_with_species ? solution_variables : 0;
  const bool counts_plausible = std::ranges::all_of(all.variables, [&](std::int32_t count) {
    return count >= std::max(least, all.species) && count <= most_variables;
  });
  if (!counts_plausible || all.species < 0 || !are_plausible(all.extents, empty)) return false;
  outline.functions = std::move(all.variables);
  outline.extents = std::make_shared<const Extents>(std::move(all.extents));
  return true;
}

/// Reads the header. False if it is invalid.
bool read_header(Evidence& evidence, HeaderReader& reader, const RestartForm& form,
                 EmptyBlocks empty, Outline& outline) {
  const LayoutTraits& layout = traits_of(form.layout);
  HeaderValues header;
  walk_lead(layout, form.coding, form.multiblock, header, reader);
  outline.blocks = header.nblocks;
  outline.older_levels = older_levels(form.coding, header.itimeint);
  if (layout.header == HeaderKind::single_block) {
    outline.extents = std::make_shared<const Extents>(Extents{{header.i}, {header.j}, {header.k}});
    if (!are_plausible(*outline.extents, empty)) return false;
  }
  return read_dimensions(evidence, reader, form.coding, layout.dimensions, empty, outline);
}

}  // namespace

std::optional<Outline> Evidence::outline(const GridForm& form, EmptyBlocks empty) {
  return outline(with_header_of(form), empty);
}

std::optional<Outline> Evidence::outline(const RestartForm& form, EmptyBlocks empty) {
  if (!has_readable_header(form.coding)) return std::nullopt;
  Outline result;
  HeaderReader reader(*this, form.coding);
  try {
    if (!read_header(*this, reader, form, empty, result)) return std::nullopt;
  } catch (const recordio::ReadError& error) {
    // Rethrow errors of the system.
    if (error.status > recordio::status_error) throw;
    return std::nullopt;
  }
  result.sizes = std::move(reader.sizes);
  if (!traits_of(form.layout).more_parameters) return result;
  const auto parameters = overflow_parameters(file_, form.coding, size_, result.sizes.records());
  if (!parameters) return std::nullopt;
  result.parameters = *parameters;
  return result;
}

std::optional<Outline> Evidence::outline(const Reading& reading) {
  return std::visit([&](const auto& form) { return outline(form, EmptyBlocks::accepted); },
                    reading.form);
}

}  // namespace p3dgrid
