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
  float value = 0;
  integer block = 1;
  integer i = 1;
  integer j = 1;
  integer k = 1;
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
[[nodiscard]] std::vector<Survey> survey(const Restart& restart, Layout layout);

/// How often blanking values are 0, 1, negative (by custom: values come from the block of that
/// number) and others.
using BlankingCounts = std::array<std::int64_t, 4>;

/// Of each block; empty for a grid without blanking.
[[nodiscard]] std::vector<BlankingCounts> count_blanking(const Grid& grid);

/// A value of a restart file's header that applies to all blocks.
struct HeaderValue {
  const char* key;    ///< for programs
  const char* label;  ///< for people
  std::variant<integer, double> value;

  [[nodiscard]] std::string text(const RestartForm& form) const;
};

/// The values of the header that the library has read last, in file order.
[[nodiscard]] std::vector<HeaderValue> header_values(const RestartForm& form);

/// A real of the header with the digits of the file's precision.
[[nodiscard]] std::string digits_in(const RestartForm& form, double value);

/// A restart file. Its other header values are the library's module variables.
struct RestartReport {
  const Found& found;
  RestartHeader header;
  std::optional<Restart> body = {};  ///< none if the extents are not known, or the blocks hold
                                     ///< different numbers of functions

  /// Those read or else stated; null if neither is known.
  [[nodiscard]] const Sections* sections() const {
    if (body) return &body->sections;
    const auto& stated = found.restart().sections;
    return stated ? &*stated : nullptr;
  }
  [[nodiscard]] const Extents& extents() const { return body ? body->extents : header.extents; }
};

void print_info(const std::string& path, const Found& found, const Grid& grid);
void print_info(const std::string& path, const RestartReport& report);

[[nodiscard]] std::string json_of(const std::string& path, const Found& found, const Grid& grid);
[[nodiscard]] std::string json_of(const std::string& path, const RestartReport& report);

}  // namespace p3dgrid::tool
