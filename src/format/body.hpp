#pragma once

#include <optional>
#include <vector>

#include "p3dgrid/layout.hpp"
#include "recordio/input_file.hpp"

/// The records of the body of a restart file:
///
///     body    = block of grid 1 ... block of grid n, [ extensions ]
///     block   = [ parameters ], ( sections 1.. | leading, sections 2.. ), older levels
///     section = each variable of the section at all points of the block
///     leading = three values per point, value after value, then the variables of section 1
///     extensions = flag, [ its variables, a record per block ], ... , the flag 999
namespace p3dgrid {

namespace recordio = mod_p3dgrid::recordio;

enum class BodyRecordKind : std::uint8_t {
  block,        ///< no record: the beginning of a block
  parameters,   ///< the flow parameters of the block
  leading,      ///< triplets, then variables
  section,      ///< variables
  older_level,  ///< variables of an older time level
  flag,         ///< one integer, to be passed to `BodyWalk::set_flag`
  extension,    ///< variables that a flag announces
};

/// The flow parameters of a block.
struct ParameterCount {
  std::int32_t all = 0;
  /// The one at this position is an integer; 0 for none. OVERFLOW solutions may have one.
  std::int32_t integer = 0;

  [[nodiscard]] std::int64_t reals() const { return all - integers(); }
  [[nodiscard]] std::int64_t integers() const { return integer > 0 ? 1 : 0; }
};

/// The flow parameters of the blocks of an OVERFLOW solution, by the length of the first record
/// after the header; none if it is no record of parameters. One of them is an integer in some
/// versions. In single precision, where it is as long as a real, its value shows it.
/// @param size            bytes of the file
/// @param header_records  records of the header
[[nodiscard]] std::optional<ParameterCount> overflow_parameters(recordio::InputFile& file,
                                                                const Coding& coding,
                                                                std::int64_t size,
                                                                std::int64_t header_records);

struct BodyRecord {
  BodyRecordKind kind;
  Section variables = {};
  std::int32_t block = 0;  ///< from 1; 0 for a flag
  std::int32_t flag = 0;   ///< position of the flag, or of the flag that announces the record
  ParameterCount parameters = {};  ///< flow parameters
  std::int32_t absent = 0;         ///< variable that the file leaves out; 0 for none

  /// Whether the absent variable is one of the record's.
  [[nodiscard]] bool leaves_out() const {
    return absent > 0 && variables.first <= absent && absent <= variables.last;
  }
  /// Whether the record holds the variable.
  [[nodiscard]] bool holds(std::int32_t variable) const {
    return variables.first <= variable && variable <= variables.last && variable != absent;
  }
  /// The variables that the record holds, in order.
  [[nodiscard]] Sections held() const {
    if (!leaves_out()) return {variables};
    return {{variables.first, absent - 1}, {absent + 1, variables.last}};
  }
  [[nodiscard]] std::int64_t variables_held() const { return variables.variables() - leaves_out(); }
  [[nodiscard]] std::int64_t values_per_point() const {
    return variables_held() + (kind == BodyRecordKind::leading ? triplet : 0);
  }
};

/// Determines the records of a block together with the layout.
struct BlockShape {
  Sections sections;
  /// Variables in the leading record; none if blocks do not begin with it. Such blocks have no
  /// older levels.
  std::optional<std::int32_t> leading = {};
  std::int32_t older_levels = 0;
  Section older = {};              ///< variables in the record of an older level
  ParameterCount parameters = {};  ///< where the layout does not fix their number
};

/// Largest plausible number of variables, so that sizes of records fit 64 bits.
inline constexpr std::int32_t most_variables = 1'000'000;

/// The shape of a block with these sections.
/// @param leading     it begins with a leading record
/// @param parameters  flow parameters, where the layout does not fix their number
[[nodiscard]] BlockShape shape_of(const Sections& sections, bool leading, std::int32_t older_levels,
                                  const ParameterCount& parameters = {});

/// The records of a block in file order.
[[nodiscard]] std::vector<BodyRecord> block_records(const LayoutTraits& layout,
                                                    const Coding& coding, const BlockShape& shape);

/// Iterates over the records of a body in file order.
class BodyWalk {
 public:
  /// @param records     of each block
  /// @param extensions  flags and their records follow the blocks
  BodyWalk(std::vector<BodyRecord> records, std::int32_t nblocks, bool extensions)
      : records_(std::move(records)), nblocks_(nblocks), extensions_(extensions) {}

  /// The next record; none at the end. After a flag, call `set_flag` first.
  [[nodiscard]] std::optional<BodyRecord> next();

  /// Sets the value of the flag that `next` has returned.
  void set_flag(std::int32_t flag);

  /// Whether the last possible flag did not end the chain.
  [[nodiscard]] bool unterminated_chain() const { return flag_ > most_flags; }

 private:
  std::vector<BodyRecord> records_;
  std::int32_t nblocks_;
  bool extensions_;
  std::int32_t block_ = 1;
  std::size_t next_ = 0;  ///< record of the block from 1; 0 for the beginning of the block
  std::int32_t flag_ = 0;
  const Extension* announced_ = nullptr;
};

}  // namespace p3dgrid
