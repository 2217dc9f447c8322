#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <type_traits>

#include "recordio/record_list.hpp"

/// Moves the values of a list entry between memory and the payload of an unformatted or binary
/// record: any type with `read(void*, bytes)` and `discard(bytes)`, or with `write(const void*,
/// bytes)`.
namespace mod_p3dgrid::recordio {
namespace detail {

/// Values of one line that are gathered or scattered at a time: 32 KiB of doubles stay in the
/// first-level cache.
inline constexpr std::int64_t transfer_piece = 4096;

template <class Stored, class Kept, class Payload>
void read_lines(Payload& payload, const Values<void>& entry) {
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    Kept* to = static_cast<Kept*>(entry.memory) + row;
    if (std::is_same_v<Stored, Kept> && entry.stride == 1) {
      payload.read(to, entry.count * static_cast<std::int64_t>(sizeof(Stored)));
      continue;
    }
    std::array<Stored, transfer_piece> piece;
    for (std::int64_t done = 0; done < entry.count; done += transfer_piece) {
      const std::int64_t n = std::min(transfer_piece, entry.count - done);
      payload.read(piece.data(), n * static_cast<std::int64_t>(sizeof(Stored)));
      for (std::int64_t i = 0; i < n; ++i) {
        to[(done + i) * entry.stride] = static_cast<Kept>(piece[static_cast<std::size_t>(i)]);
      }
    }
  }
}

template <class Stored, class Kept, class Payload>
void write_lines(Payload& payload, const Values<const void>& entry) {
  for (std::int64_t row = 0; row < entry.rows; ++row) {
    const Kept* from = static_cast<const Kept*>(entry.memory) + row;
    if (std::is_same_v<Stored, Kept> && entry.stride == 1) {
      payload.write(from, entry.count * static_cast<std::int64_t>(sizeof(Stored)));
      continue;
    }
    std::array<Stored, transfer_piece> piece;
    for (std::int64_t done = 0; done < entry.count; done += transfer_piece) {
      const std::int64_t n = std::min(transfer_piece, entry.count - done);
      for (std::int64_t i = 0; i < n; ++i) {
        piece[static_cast<std::size_t>(i)] = static_cast<Stored>(from[(done + i) * entry.stride]);
      }
      payload.write(piece.data(), n * static_cast<std::int64_t>(sizeof(Stored)));
    }
  }
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

template <class Payload>
void read_values(Payload& payload, const Values<void>& entry) {
  if (entry.count == 0) return;
  if (entry.drop) return payload.discard(entry.bytes());
  detail::with_types(entry.file_kind, entry.memory_kind, [&](auto stored, auto kept) {
    detail::read_lines<decltype(stored), decltype(kept)>(payload, entry);
  });
}

template <class Payload>
void write_values(Payload& payload, const Values<const void>& entry) {
  if (entry.count == 0) return;
  detail::with_types(entry.file_kind, entry.memory_kind, [&](auto stored, auto kept) {
    detail::write_lines<decltype(stored), decltype(kept)>(payload, entry);
  });
}

}  // namespace mod_p3dgrid::recordio
