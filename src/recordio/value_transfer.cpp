#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "recordio/interleave.hpp"
#include "recordio/read_error.hpp"
#include "recordio/unformatted_record.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Values of one line that are moved at a time: 32 KiB of doubles fit the first-level cache.
constexpr std::int64_t piece_values = 4096;

/// Large entries of several lines are moved in tiles, a piece of each line in turn, so that memory
/// is traversed once rather than once per line. A tile fits a cache, and its pieces are long enough
/// for efficient system calls. Entries below `least_bytes_for_tiles` are moved line by line.
constexpr std::int64_t tile_bytes = std::int64_t{1536} * 1024;
constexpr std::int64_t least_bytes_for_tiles = std::int64_t{384} * 1024;
constexpr std::int64_t least_values_in_tile = 4096;

/// Buffer between file and memory: the beginning of the entry's staging array, or else `own`.
template <class Stored, class Memory>
Stored* staging_buffer(const Values<Memory>& entry, Stored* own) {
  return entry.staging == nullptr ? own : static_cast<Stored*>(entry.staging);
}

template <class Stored>
struct Tile {
  template <class Memory>
  explicit Tile(const Values<Memory>& entry)
      : values(std::min(
            entry.count,
            std::max(least_values_in_tile, tile_bytes / (entry.rows * bytes_of(entry.file_kind))))),
        own(entry.staging != nullptr ? nullptr
                                     : std::make_unique_for_overwrite<Stored[]>(
                                           static_cast<std::size_t>(entry.rows * values))),
        lines(staging_buffer(entry, own.get())) {}

  std::int64_t values;  ///< of one line
  std::unique_ptr<Stored[]> own;
  Stored* lines;
};

template <class T>
constexpr std::int64_t bytes_for(std::int64_t values) {
  return values * static_cast<std::int64_t>(sizeof(T));
}

template <class Memory>
bool pays_in_tiles(const Values<Memory>& entry) {
  return entry.rows > 1 && entry.bytes() >= least_bytes_for_tiles;
}

/// Address in memory of value `index` of row `row`.
template <class Kept, class Memory>
auto* place_of(const Values<Memory>& entry, std::int64_t row, std::int64_t index) {
  using Place = std::conditional_t<std::is_const_v<Memory>, const Kept, Kept>;
  return static_cast<Place*>(entry.memory) + index * entry.stride + row;
}

/// Reads values into `piece` and calls `keep` with their number, after a failed read with the
/// number of complete values.
template <class T, class Keep>
void read_piece(PayloadReader& payload, bool swap, T* piece, std::int64_t count, Keep keep) {
  const std::int64_t before = payload.bytes_read();
  const auto take = [&](std::int64_t whole) {
    if (swap) swap_bytes(piece, whole);
    keep(whole);
  };
  try {
    payload.read(piece, bytes_for<T>(count));
  } catch (const ReadError&) {
    take((payload.bytes_read() - before) / bytes_for<T>(1));
    throw;
  }
  take(count);
}

/// Reads contiguous values that the file is known to hold.
template <class T>
void read_run(PayloadReader& payload, bool swap, T* to, std::int64_t count) {
  const std::int64_t at_a_time = swap ? piece_values : count;
  for (std::int64_t done = 0; done < count; done += at_a_time) {
    read_piece(payload, swap, to + done, std::min(at_a_time, count - done), [](std::int64_t) {});
  }
}

template <class Stored, class Kept>
void read_lines(PayloadReader& payload, bool swap, const Values<void>& entry) {
  if constexpr (std::is_same_v<Stored, Kept>) {
    const bool together = entry.rows == 1 && entry.stride == 1 && entry.staging == nullptr;
    // In a shorter file the last value could be incomplete, and must not be changed.
    if (together && payload.surely_holds(entry.bytes())) {
      return read_run(payload, swap, static_cast<Kept*>(entry.memory), entry.count);
    }
  }
  std::array<Stored, piece_values> own;
  Stored* const piece = staging_buffer(entry, own.data());
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      read_piece(payload, swap, piece, std::min(piece_values, entry.count - done),
                 [&](std::int64_t n) {
                   interleave(piece, n, 1, n, place_of<Kept>(entry, row, done), entry.stride);
                 });
    }
  }
}

template <class Stored, class Kept>
void read_tiles(PayloadReader& payload, bool swap, const Values<void>& entry) {
  const Tile<Stored> tile(entry);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      Stored* const line = tile.lines + row * tile.values;
      payload.read_ahead(bytes_for<Stored>(row * entry.count + done), line, bytes_for<Stored>(n));
      if (swap) swap_bytes(line, n);
    }
    interleave(tile.lines, tile.values, entry.rows, n, place_of<Kept>(entry, 0, done),
               entry.stride);
  }
  payload.skip(entry.bytes());
}

/// Reads in tiles. If that fails, reads line by line again, so that every complete value is stored.
template <class Stored, class Kept>
void read_tiles_or_lines(PayloadReader& payload, bool swap, const Values<void>& entry) {
  try {
    read_tiles<Stored, Kept>(payload, swap, entry);
  } catch (const ReadError&) {
    try {
      read_lines<Stored, Kept>(payload, swap, entry);
    } catch (const ReadError&) {  // the first error is reported
    }
    throw;
  }
}

template <class Stored, class Kept>
void write_lines(PayloadWriter& payload, bool swap, const Values<const void>& entry) {
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    if constexpr (std::is_same_v<Stored, Kept>) {
      if (entry.stride == 1 && entry.staging == nullptr && !swap) {
        payload.write(place_of<Kept>(entry, row, 0), bytes_for<Kept>(entry.count));
        continue;
      }
    }
    std::array<Stored, piece_values> own;
    Stored* const piece = staging_buffer(entry, own.data());
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      const std::int64_t n = std::min(piece_values, entry.count - done);
      interleave(piece, n, 1, n, place_of<Kept>(entry, row, done), entry.stride);
      if (swap) swap_bytes(piece, n);
      payload.write(piece, bytes_for<Stored>(n));
    }
  }
}

template <class Stored, class Kept>
void write_tiles(PayloadWriter& payload, bool swap, const Values<const void>& entry) {
  const Tile<Stored> tile(entry);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    interleave(tile.lines, tile.values, entry.rows, n, place_of<Kept>(entry, 0, done),
               entry.stride);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      Stored* const line = tile.lines + row * tile.values;
      if (swap) swap_bytes(line, n);
      payload.write_ahead(bytes_for<Stored>(row * entry.count + done), line, bytes_for<Stored>(n));
    }
  }
  payload.skip(entry.bytes());
}

/// Calls `visit` with a value of the type in the file and one of the type in memory.
template <class Visit>
void with_types(FileKind stored, FileKind kept, Visit visit) {
  if (kept == FileKind::integer4) return visit(integer{}, integer{});
  const auto with_kept = [&](auto value) {
    return stored == FileKind::real4 ? visit(float{}, value) : visit(double{}, value);
  };
  return kept == FileKind::real4 ? with_kept(float{}) : with_kept(double{});
}

}  // namespace

void PayloadReader::read_values(const Values<void>& entry) {
  if (entry.count == 0) return;
  if (entry.drop) return discard(entry.bytes());
  const bool swap = needs_swap(coding_.byte_order);
  const bool tiles = pays_in_tiles(entry) && allows_random_access(entry.bytes());
  with_types(entry.file_kind, entry.memory_kind, [&]<class Stored, class Kept>(Stored, Kept) {
    tiles ? read_tiles_or_lines<Stored, Kept>(*this, swap, entry)
          : read_lines<Stored, Kept>(*this, swap, entry);
  });
}

void PayloadWriter::write_values(const Values<const void>& entry) {
  if (entry.count == 0) return;
  const bool swap = needs_swap(coding_.byte_order);
  const bool tiles = pays_in_tiles(entry) && allows_random_access(entry.bytes());
  with_types(entry.file_kind, entry.memory_kind, [&]<class Stored, class Kept>(Stored, Kept) {
    tiles ? write_tiles<Stored, Kept>(*this, swap, entry)
          : write_lines<Stored, Kept>(*this, swap, entry);
  });
}

}  // namespace mod_p3dgrid::recordio
