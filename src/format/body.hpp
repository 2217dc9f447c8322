#pragma once

#include <optional>
#include <vector>

#include "p3dgrid/layout.hpp"

/// The body of a restart file: which records follow the header, in which order, holding what.
///
///     body    = block of grid 1 ... block of grid n, [ extensions ]
///     block   = [ parameters ], ( sections 1.. | leading, sections 2.. ), older levels
///     section = each variable of the section at all points of the block
///     leading = three values per point, value after value, then the variables of section 1
///     extensions = flag, [ its variables, a record per block ], ... , the flag 999
///
/// Every record holds its variables one after another, each at the block's points in order.
namespace p3dgrid {

enum class BodyRecordKind : std::uint8_t {
  block,        ///< no record: the block begins
  parameters,   ///< the flow parameters of the block
  leading,      ///< triplets, then variables
  section,      ///< variables
  older_level,  ///< variables of an older time level
  flag,         ///< one integer, which `BodyWalk::take_flag` is to be told
  extension,    ///< variables that a flag announces
};

struct BodyRecord {
  BodyRecordKind kind;
  Section variables = {};
  std::int32_t block = 0;  ///< from 1; of a flag 0
  std::int32_t flag = 0;   ///< position of the flag itself, or of the one that announces the record
  std::int32_t parameters = 0;  ///< flow parameters that it holds

  /// Values per point that it holds.
  [[nodiscard]] std::int64_t values_per_point() const {
    return variables.variables() + (kind == BodyRecordKind::leading ? triplet : 0);
  }
};

/// Parameters of the records of a block, besides the layout.
struct BlockShape {
  Sections sections;
  /// Variables in the leading record; none if blocks do not begin with it. Such blocks have no
  /// older levels.
  std::optional<std::int32_t> leading = {};
  std::int32_t older_levels = 0;
  Section older = {};  ///< variables in the record of an older level
};

/// The records of a block in file order.
[[nodiscard]] std::vector<BodyRecord> block_records(const LayoutTraits& layout,
                                                    const BlockShape& shape);

/// Goes through the records of a body in file order.
class BodyWalk {
 public:
  /// @param records     of each block
  /// @param extensions  whether flags and their records follow the blocks
  BodyWalk(std::vector<BodyRecord> records, std::int32_t nblocks, bool extensions)
      : records_(std::move(records)), nblocks_(nblocks), extensions_(extensions) {}

  /// The next record; none at the end. Behind a flag, `take_flag` comes first.
  [[nodiscard]] std::optional<BodyRecord> next();

  /// Sets the value of the flag that `next` has returned.
  void take_flag(std::int32_t flag);

  /// Whether the third flag did not end the chain.
  [[nodiscard]] bool chain_without_end() const { return flag_ > most_flags; }

 private:
  std::vector<BodyRecord> records_;
  std::int32_t nblocks_;
  bool extensions_;
  std::int32_t block_ = 1;
  std::size_t next_ = 0;  ///< record of the block, 0 for the block itself
  std::int32_t flag_ = 0;
  const Extension* announced_ = nullptr;
};

}  // namespace p3dgrid
