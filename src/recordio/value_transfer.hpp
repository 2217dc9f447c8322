#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "recordio/byte_order.hpp"
#include "recordio/interleave.hpp"
#include "recordio/read_error.hpp"
#include "recordio/record_list.hpp"

/// Moves the values of list entries between memory and the payload of an unformatted or binary
/// record.
///
/// A payload to read from is any type with `read(void*, bytes)` and `discard(bytes)`, with
/// `bytes_read()`, which counts those that a failed read has moved too, and with
/// `surely_holds(bytes)`, which says whether so many bytes are known to be there. Its
/// `lies_ahead(bytes)` says whether they lie in one run of a file that allows
/// `read_ahead(distance, void*, bytes)`, reading behind the place where it stands, and
/// `skip(bytes)`. One to write to has `write(const void*, bytes)`, and `lies_ahead`,
/// `write_ahead(distance, const void*, bytes)` and `skip(bytes)` likewise.
namespace mod_p3dgrid::recordio {
namespace detail {

/// Values of one line that are moved at a time: 32 KiB of doubles stay in the first-level cache.
inline constexpr std::int64_t piece_values = 4096;

/// Several lines are moved point by point in tiles, a piece of each line in turn, so that memory is
/// gone through once rather than once for each line. A tile is small enough for a cache, and its
/// pieces are long enough for the system to move many pages at a time. Arrays of
/// fewer than `least_bytes_for_tiles` are moved line by line.
inline constexpr std::int64_t tile_bytes = std::int64_t{1536} * 1024;
inline constexpr std::int64_t least_bytes_for_tiles = std::int64_t{384} * 1024;
inline constexpr std::int64_t least_values_in_tile = 4096;

/// Where values of an entry stand between file and memory: at the beginning of its staging array,
/// or else in `own`.
template <class Stored, class Memory>
Stored* passage(const Values<Memory>& entry, Stored* own) {
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
        lines(passage(entry, own.get())) {}

  std::int64_t values;  ///< of one line
  std::unique_ptr<Stored[]> own;
  Stored* lines;
};

template <class T>
constexpr std::int64_t bytes_for(std::int64_t values) {
  return values * static_cast<std::int64_t>(sizeof(T));
}

/// Whether tiles pay: more than one line, and many values.
template <class Memory>
bool pays_in_tiles(const Values<Memory>& entry) {
  return entry.rows > 1 && entry.bytes() >= least_bytes_for_tiles;
}

/// The place in memory of value `index` of row `row`.
template <class Kept, class Memory>
auto* place_of(const Values<Memory>& entry, std::int64_t row, std::int64_t index) {
  using Place = std::conditional_t<std::is_const_v<Memory>, const Kept, Kept>;
  return static_cast<Place*>(entry.memory) + index * entry.stride + row;
}

/// Reads values into `piece` and calls `keep` with their number. If that fails, the values that
/// have arrived whole are kept all the same.
template <class T, class Payload, class Keep>
void read_piece(Payload& payload, bool foreign, T* piece, std::int64_t count, Keep keep) {
  const std::int64_t before = payload.bytes_read();
  const auto take = [&](std::int64_t whole) {
    if (foreign) reverse_bytes(piece, whole);
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

/// Values next to each other, all of which are there.
template <class T, class Payload>
void read_run(Payload& payload, bool foreign, T* to, std::int64_t count) {
  const std::int64_t at_a_time = foreign ? piece_values : count;
  for (std::int64_t done = 0; done < count; done += at_a_time) {
    read_piece(payload, foreign, to + done, std::min(at_a_time, count - done), [](std::int64_t) {});
  }
}

template <class Stored, class Kept, class Payload>
void read_lines(Payload& payload, bool foreign, const Values<void>& entry) {
  if constexpr (std::is_same_v<Stored, Kept>) {
    const bool together = entry.rows == 1 && entry.stride == 1 && entry.staging == nullptr;
    // Otherwise a value of which the file holds a part would be changed.
    if (together && payload.surely_holds(entry.bytes())) {
      return read_run(payload, foreign, static_cast<Kept*>(entry.memory), entry.count);
    }
  }
  std::array<Stored, piece_values> own;
  Stored* const piece = passage(entry, own.data());
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      read_piece(payload, foreign, piece, std::min(piece_values, entry.count - done),
                 [&](std::int64_t n) {
                   interleave(piece, n, 1, n, place_of<Kept>(entry, row, done), entry.stride);
                 });
    }
  }
}

template <class Stored, class Kept, class Payload>
void read_tiles(Payload& payload, bool foreign, const Values<void>& entry) {
  const Tile<Stored> tile(entry);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      Stored* const line = tile.lines + row * tile.values;
      payload.read_ahead(bytes_for<Stored>(row * entry.count + done), line, bytes_for<Stored>(n));
      if (foreign) reverse_bytes(line, n);
    }
    interleave(tile.lines, tile.values, entry.rows, n, place_of<Kept>(entry, 0, done),
               entry.stride);
  }
  payload.skip(entry.bytes());
}

/// Reads in tiles. If a tile fails, its lines are read again one after another, so that every whole
/// value that is there is stored.
template <class Stored, class Kept, class Payload>
void read_tiles_or_lines(Payload& payload, bool foreign, const Values<void>& entry) {
  try {
    read_tiles<Stored, Kept>(payload, foreign, entry);
  } catch (const ReadError&) {
    try {
      read_lines<Stored, Kept>(payload, foreign, entry);
    } catch (const ReadError&) {  // the first one tells what happened
    }
    throw;
  }
}

template <class T, class Payload>
void write_run(Payload& payload, bool foreign, const T* from, std::int64_t count) {
  if (!foreign) return payload.write(from, bytes_for<T>(count));
  std::array<T, piece_values> piece;
  for (std::int64_t done = 0; done < count; done += piece_values) {
    const std::int64_t n = std::min(piece_values, count - done);
    std::copy_n(from + done, n, piece.data());
    reverse_bytes(piece.data(), n);
    payload.write(piece.data(), bytes_for<T>(n));
  }
}

template <class Stored, class Kept, class Payload>
void write_lines(Payload& payload, bool foreign, const Values<const void>& entry) {
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    if constexpr (std::is_same_v<Stored, Kept>) {
      if (entry.stride == 1 && entry.staging == nullptr) {
        write_run(payload, foreign, static_cast<const Kept*>(entry.memory) + row, entry.count);
        continue;
      }
    }
    std::array<Stored, piece_values> own;
    Stored* const piece = passage(entry, own.data());
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      const std::int64_t n = std::min(piece_values, entry.count - done);
      deinterleave(place_of<Kept>(entry, row, done), entry.stride, piece, n, 1, n);
      if (foreign) reverse_bytes(piece, n);
      payload.write(piece, bytes_for<Stored>(n));
    }
  }
}

template <class Stored, class Kept, class Payload>
void write_tiles(Payload& payload, bool foreign, const Values<const void>& entry) {
  const Tile<Stored> tile(entry);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    deinterleave(place_of<Kept>(entry, 0, done), entry.stride, tile.lines, tile.values, entry.rows,
                 n);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      Stored* const line = tile.lines + row * tile.values;
      if (foreign) reverse_bytes(line, n);
      payload.write_ahead(bytes_for<Stored>(row * entry.count + done), line, bytes_for<Stored>(n));
    }
  }
  payload.skip(entry.bytes());
}

/// Calls `visit` with a value of the stored and one of the kept type.
template <class Visit>
void with_types(FileKind stored, FileKind kept, Visit visit) {
  if (kept == FileKind::integer4) return visit(integer{}, integer{});
  const auto with_kept = [&](auto value) {
    return stored == FileKind::real4 ? visit(float{}, value) : visit(double{}, value);
  };
  return kept == FileKind::real4 ? with_kept(float{}) : with_kept(double{});
}

}  // namespace detail

/// @param order  byte order of the file
template <class Payload>
void read_values(Payload& payload, std::endian order, const Values<void>& entry) {
  if (entry.count == 0) return;
  if (entry.drop) return payload.discard(entry.bytes());
  const bool foreign = is_foreign(order);
  const bool tiles = detail::pays_in_tiles(entry) && payload.lies_ahead(entry.bytes());
  detail::with_types(entry.file_kind, entry.memory_kind,
                     [&]<class Stored, class Kept>(Stored, Kept) {
                       tiles ? detail::read_tiles_or_lines<Stored, Kept>(payload, foreign, entry)
                             : detail::read_lines<Stored, Kept>(payload, foreign, entry);
                     });
}

/// @param order  byte order of the file
template <class Payload>
void write_values(Payload& payload, std::endian order, const Values<const void>& entry) {
  if (entry.count == 0) return;
  const bool foreign = is_foreign(order);
  const bool tiles = detail::pays_in_tiles(entry) && payload.lies_ahead(entry.bytes());
  detail::with_types(entry.file_kind, entry.memory_kind,
                     [&]<class Stored, class Kept>(Stored, Kept) {
                       tiles ? detail::write_tiles<Stored, Kept>(payload, foreign, entry)
                             : detail::write_lines<Stored, Kept>(payload, foreign, entry);
                     });
}

}  // namespace mod_p3dgrid::recordio
