#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "detect/byte_source.hpp"

namespace p3dgrid {

inline constexpr std::uint64_t marker_bytes = 4;

/// A record of an unformatted file, between the markers that hold its length.
struct Record {
  enum class State { sound, cut, broken };

  std::uint64_t offset = 0;  ///< of the marker before it
  std::uint64_t end = 0;     ///< of the byte behind it, if it is sound
  std::uint64_t length = 0;  ///< as the markers before its pieces tell
  State state = State::sound;
  std::string what = {};  ///< unless it is sound: what is wrong, as part of a sentence
};

/// The records of an unformatted file in one byte order, found by their markers as they are asked
/// for.
class RecordList {
 public:
  RecordList(ByteSource& source, ByteOrder order) : source_(&source), order_(order) {}

  /// Record `n`, from 0; null behind the last one, which is the first that is not sound.
  const Record* at(std::size_t n);

 private:
  void look_at_next();
  bool take_piece(Record& record, bool first);

  ByteSource* source_;
  ByteOrder order_;
  std::vector<Record> records_;
  std::uint64_t end_ = 0;  ///< of the last sound record that has been looked at
};

}  // namespace p3dgrid
