/// Reads a grid or a solution by way of the front: as a whole, block by block, array by array and a
/// range of points. The parts must be those of the whole. What has been read is written and read
/// again.

#include <algorithm>
#include <bit>
#include <new>
#include <optional>

#include "p3dgrid/layout.hpp"
#include "p3dgrid/solution.hpp"
#include "target.hpp"

namespace fuzz {
namespace {

using namespace p3dgrid;

constexpr Flag is_solution = quiet;

/// Members of the form that are left to detection: a bit of `Options::allocated` for each.
struct Left {
  std::uint8_t bits;
  template <class Value>
  void state(int position, std::optional<Value>& member, Value value) const {
    if ((bits >> position & 1) == 0) member = value;
  }
};

StatedCoding coding_of(const Options& options) {
  const Left left{options.allocated};
  StatedCoding coding;
  left.state(0, coding.encoding,
             static_cast<Encoding>(std::clamp(format_of(options.format), 0, 2)));
  left.state(
      1, coding.precision,
      has(options, double_precision) ? Precision::double_precision : Precision::single_precision);
  constexpr ByteOrder other =
      ByteOrder::native == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
  left.state(2, coding.byte_order, has(options, other_byte_order) ? other : ByteOrder::native);
  const bool rare = has_rare_traits(options.format);
  left.state(3, coding.marker_bytes, rare ? MarkerBytes::eight : MarkerBytes::four);
  left.state(4, coding.dimensions, rare ? Dimensions::two : Dimensions::three);
  return coding;
}

StatedGridForm grid_form(const Options& options) {
  const Left left{options.allocated};
  StatedGridForm form{.coding = coding_of(options)};
  left.state(5, form.multiblock, has(options, multiblock));
  left.state(6, form.iblank, has(options, blanking));
  return form;
}

StatedRestartForm restart_form(const Options& options) {
  const Left left{options.allocated};
  StatedRestartForm form{.coding = coding_of(options)};
  left.state(5, form.multiblock, has(options, multiblock));
  if (traits_of(layout_code(options)).known) {
    left.state(6, form.layout, Layout{layout_code(options)});
  }
  const auto sections = static_cast<std::size_t>(std::clamp(sections_in_use(options), 0, 3));
  if ((options.allocated >> 7 & 1) != 0) return form;
  form.sections.emplace();
  for (std::size_t s = 0; s < sections; ++s) {
    form.sections->push_back({options.sections[s][0], options.sections[s][1]});
  }
  return form;
}

IndexRange range_of(const Options& options) {
  const auto& first = options.extents[1];
  const auto& last = options.extents[2];
  const auto stride = [&](int direction) { return 1 + (options.numrstrtvar[direction] & 3); };
  return {{extent_of(first[0]) - 1, extent_of(first[1]) - 1, extent_of(first[2]) - 1},
          {extent_of(last[0]), extent_of(last[1]), extent_of(last[2])},
          {stride(0), stride(1), stride(2)}};
}

bool same_bits(const Reals& a, const Reals& b) {
  if (a.precision() != b.precision() || a.size() != b.size()) return false;
  return a.visit([&](auto values) {
    using Real = typename decltype(values)::value_type;
    using Bits = std::conditional_t<sizeof(Real) == 8, std::uint64_t, std::uint32_t>;
    return std::ranges::equal(values, b.span<Real>(), {}, std::bit_cast<Bits, Real>,
                              std::bit_cast<Bits, Real>);
  });
}

bool same_bits(const std::vector<Reals>& a, const std::vector<Reals>& b) {
  return std::ranges::equal(a, b, [](const Reals& x, const Reals& y) { return same_bits(x, y); });
}

/// Whether an index from 0 on is one of a range, whose first index may be below 0.
bool is_in(std::int32_t index, const Indices& range) {
  const std::int32_t first = std::max(range.first, 0);
  return index >= first && index <= range.last && (index - first) % range.stride == 0;
}

/// The values of a range, one by one.
Reals part_of(const Reals& whole, const BlockExtents& extents, const IndexRange& range) {
  return whole.visit([&](auto values) {
    if (values.empty()) return Reals(whole.precision(), 0);
    Array<typename decltype(values)::value_type> part;
    std::size_t point = 0;
    for (std::int32_t k = 0; k < extents.k; ++k) {
      for (std::int32_t j = 0; j < extents.j; ++j) {
        for (std::int32_t i = 0; i < extents.i; ++i, ++point) {
          if (is_in(i, range.of(Direction::i)) && is_in(j, range.of(Direction::j)) &&
              is_in(k, range.of(Direction::k))) {
            part.push_back(values[point]);
          }
        }
      }
    }
    return Reals(std::move(part));
  });
}

/// Runs an action that may throw an error with a reason, or lack memory. Whether it has not.
template <class Action>
bool succeeds(Action action) {
  try {
    action();
    return true;
  } catch (const Error& error) {
    const std::string_view what = error.what();
    require(!what.empty() && what.find('\n') == what.npos, "an error is one line");
    require(!error.details().reason.empty() || !error.details().found.empty(),
            "an error has a reason");
  } catch (const std::bad_alloc&) {
  }
  return false;
}

void require_same(const Block& a, const Block& b, const char* what) {
  require(a.extents == b.extents && same_bits(a.x, b.x) && same_bits(a.y, b.y) &&
              same_bits(a.z, b.z) && a.iblank == b.iblank,
          what);
}

void require_range(const Block& part, const Block& whole, const IndexRange& range) {
  require(same_bits(part.x, part_of(whole.x, whole.extents, range)) &&
              same_bits(part.z, part_of(whole.z, whole.extents, range)),
          "a range has the values of the block");
  require(part.extents.points() == part.x.size(), "a range has as many values as points");
}

/// Every readable file except text has an index.
template <class Reader>
void require_places(Reader& reader, const Coding& coding, std::int32_t block) {
  if (is_text(coding)) return;
  for (const StoredArray& array : reader.locate(block)) {
    std::int64_t bytes = 0;
    for (const ByteRange& range : array.ranges) bytes += range.bytes;
    require(bytes == array.count * bytes_of(array.kind), "an array has as many bytes as values");
  }
}

void run_grid(const Options& options) {
  const std::string path = scratch_path("file");
  const StatedGridForm form = grid_form(options);
  const IndexRange range = range_of(options);
  std::optional<Grid> whole;
  succeeds([&] { whole = read_grid(path, form); });
  const bool parts_read = succeeds([&] {
    GridReader reader(path, form);
    bool all = true;
    for (std::int32_t b = reader.extents().blocks(); b-- > 0;) {
      all = succeeds([&] {
              const Block block = reader.read(b);
              const auto n = static_cast<std::size_t>(b);
              if (whole) require_same(block, whole->blocks[n], "a block is that of the whole");
              require_range(reader.read(b, range), block, range);
              require_places(reader, reader.form().coding, b);
            }) &&
            all;
    }
    require(all || !whole, "the blocks of a grid are read");
  });
  if (!whole) return;
  require(parts_read, "a grid that is read can be read in parts");
  write_grid(scratch_path("copy"), *whole);
  const Grid copy = read_grid(scratch_path("copy"), stated_as(form_to_write(*whole)));
  require(copy.blocks.size() == whole->blocks.size(), "a copy has the same blocks");
  for (std::size_t b = 0; b < copy.blocks.size(); ++b) {
    require_same(copy.blocks[b], whole->blocks[b], "a copy has the same values");
  }
}

/// Arrays that a block holds, from the last on.
template <class Read>
void read_arrays(const std::vector<Reals>& arrays, bool triplet, Read read) {
  for (auto number = static_cast<std::int32_t>(arrays.size()); number > 0; --number) {
    const Reals& array = arrays[static_cast<std::size_t>(number - 1)];
    if (!array.empty())
      require(same_bits(read({number, triplet}), array), "arrays are the block's");
  }
}

void read_parts(SolutionReader& reader, std::int32_t b, const IndexRange& range,
                const Solution* whole) {
  const SolutionBlock block = reader.read(b);
  read_arrays(block.variables, false, [&](const FlowArray& a) { return reader.read(b, a); });
  read_arrays(block.triplets, true, [&](const FlowArray& a) { return reader.read(b, a); });
  const SolutionBlock part = reader.read(b, range);
  for (std::size_t v = 0; v < part.variables.size(); ++v) {
    if (block.variables[v].empty()) continue;
    require(same_bits(part.variables[v], part_of(block.variables[v], block.extents, range)),
            "a range has the values of the block");
  }
  require(reader.parameters(b).size() == block.parameters.size(), "parameters are the block's");
  require_places(reader, reader.header().form.coding, b);
  if (whole == nullptr) return;
  const SolutionBlock& expected = whole->blocks[static_cast<std::size_t>(b)];
  require(same_bits(block.variables, expected.variables) &&
              same_bits(block.triplets, expected.triplets),
          "a block is that of the whole");
}

void run_solution(const Options& options) {
  const std::string path = scratch_path("file");
  Grid grid;
  const Blocks blocks(options);
  for (std::size_t b = 0; b < blocks.kdim.size(); ++b) {
    grid.blocks.push_back({.extents = {blocks.idim[b], blocks.jdim[b], blocks.kdim[b]}});
  }
  const SolutionOptions stated{.form = restart_form(options),
                               .grid = has(options, no_extents_wanted) ? nullptr : &grid};
  std::optional<Solution> whole;
  succeeds([&] { whole = read_solution(path, stated); });
  const bool parts_read = succeeds([&] {
    SolutionReader reader(path, stated);
    bool all = true;
    for (std::int32_t b = reader.header().blocks; b-- > 0;) {
      all =
          succeeds([&] { read_parts(reader, b, range_of(options), whole ? &*whole : nullptr); }) &&
          all;
    }
    require(all || !whole, "the blocks of a solution are read");
  });
  if (!whole) return;
  require(parts_read, "a solution that is read can be read in parts");
  succeeds([&] {
    write_solution(scratch_path("copy"), *whole);
    const SolutionHeader header = header_to_write(*whole);
    const Grid extents = [&] {
      Grid same;
      for (const SolutionBlock& block : whole->blocks) {
        same.blocks.push_back({.extents = block.extents});
      }
      return same;
    }();
    const Solution copy =
        read_solution(scratch_path("copy"), {.form = stated_as(header.form), .grid = &extents});
    for (std::size_t b = 0; b < copy.blocks.size(); ++b) {
      require(same_bits(copy.blocks[b].variables, whole->blocks[b].variables),
              "a copy has the same values");
    }
  });
}

}  // namespace

void place_files(const Options& options, Content content) {
  place_file(options, "file", content);
}

void run_operation(const Options& options) {
  const Outcome outcome = attempt([&] {
    if (has(options, is_solution)) {
      run_solution(options);
    } else {
      run_grid(options);
    }
  });
  require(outcome == Outcome::done, "the front calls no host");
}

}  // namespace fuzz

#ifdef __has_feature
#if __has_feature(address_sanitizer)
// The sanitizer's own function ends the process where memory is refused.
void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
#endif
#endif
