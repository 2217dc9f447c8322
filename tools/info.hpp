#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "find.hpp"
#include "grid_file.hpp"
#include "restart_file.hpp"

/// What the command `info` shows of a file, as text and as JSON (schema: docs/info-json.md).
namespace p3dgrid::tool {

/// The smallest or largest value of a variable, and its first point, counted from 1.
struct Extreme {
  double value = 0;
  Precision precision = {};  ///< of the value
  std::int32_t block = 1;
  std::int32_t i = 1;
  std::int32_t j = 1;
  std::int32_t k = 1;
};

/// One variable at all points.
struct Survey {
  std::string label;           ///< "1", "triplet 1", "x"
  std::string name;            ///< "density"; empty if it is not known
  std::optional<Extreme> low;  ///< of the finite values; none if there are none
  std::optional<Extreme> high;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;
};

[[nodiscard]] std::vector<Survey> survey(const Grid& grid);

/// The flow variables, then the triplets if there are any.
[[nodiscard]] std::vector<Survey> survey(const Solution& solution);

/// How often blanking values are 0, 1, negative (by custom: values come from the block of that
/// number) and others.
using BlankingCounts = std::array<std::int64_t, 4>;

/// Of each block; empty for a grid without blanking.
[[nodiscard]] std::vector<BlankingCounts> count_blanking(const Grid& grid);

/// A value of a restart file's header that applies to all blocks.
struct HeaderValue {
  const char* key;    ///< for programs
  const char* label;  ///< for people
  std::variant<std::int32_t, double> value;

  [[nodiscard]] std::string text(const RestartForm& form) const;
};

/// The values of a header, in file order.
[[nodiscard]] std::vector<HeaderValue> header_values(const RestartForm& form, const RunData& run);

/// A real of the header with the shortest digits in the precision that the file has for it.
[[nodiscard]] std::string digits_in(const RestartForm& form, double value);

/// A restart file.
struct RestartReport {
  const Found& found;
  SolutionHeader header;
  std::optional<Solution> body = {};   ///< none if it is not read
  std::vector<BlockIndex> index = {};  ///< instead of the body, where it is asked for

  /// Those read, extensions included, or else stated; none if neither is known.
  [[nodiscard]] std::optional<Sections> sections() const {
    return body || !index.empty() ? all_sections(header) : found.restart().sections;
  }
  /// Whether the blocks have counts of their own.
  [[nodiscard]] bool counted_variables() const {
    return traits_of(header.form.layout).counts_by_block();
  }
};

void print_info(const std::string& path, const Found& found, const Grid& grid);
void print_info(const std::string& path, const RestartReport& report);

[[nodiscard]] std::string json_of(const std::string& path, const Found& found, const Grid& grid);
/// With the places of the arrays instead of what their values give.
[[nodiscard]] std::string json_of(const std::string& path, const Found& found,
                                  const Extents& extents, const std::vector<BlockIndex>& index);
[[nodiscard]] std::string json_of(const std::string& path, const RestartReport& report);

}  // namespace p3dgrid::tool
