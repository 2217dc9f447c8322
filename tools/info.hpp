#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "file_input.hpp"
#include "find.hpp"
#include "geometry.hpp"

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

/// The shortest digits of the value; "-" for none.
[[nodiscard]] std::string text_of(const std::optional<Extreme>& extreme);

/// Statistics of the values of an array. Trivially copyable.
struct Findings {
  std::optional<Extreme> low;  ///< of the finite values; none if there are none
  std::optional<Extreme> high;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;

  /// Includes values at adjacent points of a block.
  /// @param block  from 0
  /// @param first  the first point, from 0
  void include(std::size_t block, const BlockExtents& extents, const Reals& values,
               std::int64_t first = 0);
  /// Includes the statistics of later points.
  void include(const Findings& later);
};

/// One variable at all points.
struct Survey : Findings {
  std::string label;      ///< "1", "triplet 1", "x"
  std::string name = {};  ///< "density"; empty if it is not known
};

/// The bounding box of a block, or of all.
struct Box {
  std::array<Range, 3> ranges;
  std::int64_t not_finite = 0;  ///< points with an infinite or NaN coordinate

  void include(const std::array<double, 3>& point);
  void include(const Box& other);
};

/// How often blanking values are 0, 1, negative (by custom: values come from the block of that
/// number) and others.
using BlankingCounts = std::array<std::int64_t, 4>;

/// Statistics of points of a grid. Trivially copyable.
struct GridFindings {
  std::array<Findings, 3> coordinates;
  Box box;
  BlankingCounts blanking{};

  /// Includes adjacent points of a block.
  /// @param number   of the block, from 0
  /// @param extents  of the whole block
  /// @param points   their coordinates and blanking values
  /// @param first    the first point, from 0
  void include(std::size_t number, const BlockExtents& extents, const Block& points,
               std::int64_t first = 0);
  /// Includes the statistics of later points.
  void include(const GridFindings& later);
};

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

/// What is known of a file.
struct Report {
  Found found;
  Extents extents;                                   ///< of the blocks; empty if they are not known
  std::optional<SolutionHeader> header = {};         ///< of a restart file
  std::optional<std::vector<Survey>> surveys = {};   ///< of all arrays; none if they are not read
  std::vector<GridFindings> blocks = {};             ///< of a grid, if it is read
  std::vector<std::vector<double>> parameters = {};  ///< flow parameters of the blocks, if any
  std::vector<std::int32_t> shown = {};              ///< blocks in the tables, from 0
  std::vector<BlockIndex> index = {};                ///< instead of surveys, with `--index`

  [[nodiscard]] const char* kind() const { return header ? "restart" : "grid"; }
  /// The form in words.
  [[nodiscard]] std::string form() const;
  /// Whether the blocks have numbers of variables of their own.
  [[nodiscard]] bool counts_by_block() const {
    return header && traits_of(header->form.layout).counts_by_block();
  }
  /// Those of a restart file that are read, extensions included, or else stated; none if neither is
  /// known.
  [[nodiscard]] std::optional<Sections> sections() const {
    return surveys || !index.empty() ? all_sections(*header) : found.restart().sections;
  }
  /// The values of the header, in file order; none for a grid.
  [[nodiscard]] std::vector<HeaderValue> header_values() const;

  /// Begins the surveys of a grid.
  void begin_surveys();
  /// Includes the statistics of later points of a block.
  void include(std::size_t block, const GridFindings& later);

  /// Begins the surveys of a restart file: those of the variables, then of any triplets.
  /// @param names  of the variables
  void begin_surveys(const std::vector<std::string>& names);
  /// The place of an array of a restart file among the surveys.
  [[nodiscard]] std::size_t place_of(const FlowArray& array) const {
    const std::int32_t before = array.triplet ? header->most_variables() : 0;
    return static_cast<std::size_t>(before + array.number - 1);
  }
};

/// The blocks of a list, counted from 0; all for "all", and for an empty text if they are few.
[[nodiscard]] std::vector<std::int32_t> shown_blocks(const std::string& list,
                                                     const std::string& path, std::int32_t count);

void print_info(const std::string& path, const Report& report);

/// Prints one line for each file, with its differences from the previous file.
void print_series(const std::vector<std::string>& paths,
                  const std::function<Report(const std::string& path)>& report_on);

/// With the byte ranges of the arrays in place of the statistics of their values, if the report has
/// an index.
[[nodiscard]] std::string json_of(const std::string& path, const Report& report);

}  // namespace p3dgrid::tool
