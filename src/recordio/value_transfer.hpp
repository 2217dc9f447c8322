#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "recordio/byte_order.hpp"
#include "recordio/interleave.hpp"
#include "recordio/record_list.hpp"

/// Moves the values of list entries between memory and the payload of an unformatted or binary
/// record.
///
/// A payload to read from is any type with `read(void*, bytes)` and `discard(bytes)`, and with
/// `lies_ahead(bytes)`, which says whether so many bytes lie in one run of a file that allows
/// `read_ahead(distance, void*, bytes)`, reading behind the place where it stands, and
/// `skip(bytes)`. One to write to has `write(const void*, bytes)`, and `lies_ahead`,
/// `write_ahead(distance, const void*, bytes)` and `skip(bytes)` likewise.
namespace mod_p3dgrid::recordio {
namespace detail {

/// Values of one line that are moved at a time: 32 KiB of doubles stay in the first-level cache.
inline constexpr std::int64_t piece_values = 4096;

/// Several lines are moved point by point in tiles, a piece of each line in turn, so that memory is
/// gone through once rather than once for each line. A tile stays in the second-level cache, and
/// its pieces are long enough for the system calls not to count.
inline constexpr std::int64_t tile_bytes = 384 * 1024;
inline constexpr std::int64_t least_values_in_tile = 4096;

template <class T>
struct Tile {
  explicit Tile(std::int64_t lines)
      : values(std::max(least_values_in_tile,
                        tile_bytes / (lines * static_cast<std::int64_t>(sizeof(T))))),
        memory(std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(lines * values))) {}

  std::int64_t values;  ///< of one line
  std::unique_ptr<T[]> memory;
};

template <class T>
constexpr std::int64_t bytes_for(std::int64_t values) {
  return values * static_cast<std::int64_t>(sizeof(T));
}

/// Whether tiles pay: more than one line, and more values than tiles are made for.
template <class Memory>
bool fills_tiles(const Values<Memory>& entry) {
  return entry.rows > 1 && entry.bytes() >= tile_bytes;
}

/// Values next to each other.
template <class T, class Payload>
void read_run(Payload& payload, bool foreign, T* to, std::int64_t count) {
  if (!foreign) return payload.read(to, bytes_for<T>(count));
  for (std::int64_t done = 0; done < count; done += piece_values) {
    const std::int64_t n = std::min(piece_values, count - done);
    payload.read(to + done, bytes_for<T>(n));
    reverse_bytes(to + done, n);
  }
}

template <class Stored, class Kept, class Payload>
void read_lines(Payload& payload, bool foreign, const Values<void>& entry) {
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    Kept* const to = static_cast<Kept*>(entry.memory) + row;
    if constexpr (std::is_same_v<Stored, Kept>) {
      if (entry.stride == 1) {
        read_run(payload, foreign, to, entry.count);
        continue;
      }
    }
    std::array<Stored, piece_values> piece;
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      const std::int64_t n = std::min(piece_values, entry.count - done);
      read_run(payload, foreign, piece.data(), n);
      for (std::int64_t i = 0; i < n; ++i) {
        to[(done + i) * entry.stride] = static_cast<Kept>(piece[static_cast<std::size_t>(i)]);
      }
    }
  }
}

template <class T, class Payload>
void read_tiles(Payload& payload, bool foreign, const Values<void>& entry) {
  const Tile<T> tile(entry.rows);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      T* const line = tile.memory.get() + row * tile.values;
      payload.read_ahead(bytes_for<T>(row * entry.count + done), line, bytes_for<T>(n));
      if (foreign) reverse_bytes(line, n);
    }
    interleave(tile.memory.get(), tile.values, entry.rows, n,
               static_cast<T*>(entry.memory) + done * entry.stride, entry.stride);
  }
  payload.skip(entry.bytes());
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
    const Kept* const from = static_cast<const Kept*>(entry.memory) + row;
    if constexpr (std::is_same_v<Stored, Kept>) {
      if (entry.stride == 1) {
        write_run(payload, foreign, from, entry.count);
        continue;
      }
    }
    std::array<Stored, piece_values> piece;
    for (std::int64_t done = 0; done < entry.count; done += piece_values) {
      const std::int64_t n = std::min(piece_values, entry.count - done);
      for (std::int64_t i = 0; i < n; ++i) {
        piece[static_cast<std::size_t>(i)] = static_cast<Stored>(from[(done + i) * entry.stride]);
      }
      if (foreign) reverse_bytes(piece.data(), n);
      payload.write(piece.data(), bytes_for<Stored>(n));
    }
  }
}

template <class T, class Payload>
void write_tiles(Payload& payload, bool foreign, const Values<const void>& entry) {
  const Tile<T> tile(entry.rows);
  for (std::int64_t done = 0; done < entry.count; done += tile.values) {
    const std::int64_t n = std::min(tile.values, entry.count - done);
    deinterleave(static_cast<const T*>(entry.memory) + done * entry.stride, entry.stride,
                 tile.memory.get(), tile.values, entry.rows, n);
    for (std::int64_t row = 0; row < entry.rows; ++row) {
      T* const line = tile.memory.get() + row * tile.values;
      if (foreign) reverse_bytes(line, n);
      payload.write_ahead(bytes_for<T>(row * entry.count + done), line, bytes_for<T>(n));
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
  detail::with_types(entry.file_kind, entry.memory_kind,
                     [&]<class Stored, class Kept>(Stored, Kept) {
                       if constexpr (std::is_same_v<Stored, Kept>) {
                         if (detail::fills_tiles(entry) && payload.lies_ahead(entry.bytes())) {
                           return detail::read_tiles<Kept>(payload, foreign, entry);
                         }
                       }
                       detail::read_lines<Stored, Kept>(payload, foreign, entry);
                     });
}

/// @param order  byte order of the file
template <class Payload>
void write_values(Payload& payload, std::endian order, const Values<const void>& entry) {
  if (entry.count == 0) return;
  const bool foreign = is_foreign(order);
  detail::with_types(entry.file_kind, entry.memory_kind,
                     [&]<class Stored, class Kept>(Stored, Kept) {
                       if constexpr (std::is_same_v<Stored, Kept>) {
                         if (detail::fills_tiles(entry) && payload.lies_ahead(entry.bytes())) {
                           return detail::write_tiles<Kept>(payload, foreign, entry);
                         }
                       }
                       detail::write_lines<Stored, Kept>(payload, foreign, entry);
                     });
}

}  // namespace mod_p3dgrid::recordio
