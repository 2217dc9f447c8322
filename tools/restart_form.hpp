#pragma once

#include <MOD_P3DReader.hpp>
#include <optional>
#include <string>

#include "encoding.hpp"
#include "grid_form.hpp"
#include "sections.hpp"

namespace p3dgrid {

/// The values are the library's restart layout codes.
enum class Layout : mod_p3dgrid::integer {
  talven = 0,
  time_step = 1,
  solution = 2,
  function = 3,
  triplets = 100,
  single_block = 101,
  bare = 102,
};

/// Variables that every solution file has, and that the leading record of layouts 100 and 101
/// holds.
inline constexpr mod_p3dgrid::integer solution_variables = 5;

/// The flag that ends the variable extensions of layout 101.
inline constexpr mod_p3dgrid::integer end_of_extensions = 999;

[[nodiscard]] bool holds_extents(Layout layout);     ///< the extents of each block, for a reader
[[nodiscard]] bool holds_step(Layout layout);        ///< step count and step size
[[nodiscard]] bool holds_parameters(Layout layout);  ///< Mach number and others of each block
[[nodiscard]] bool holds_triplets(Layout layout);    ///< three values per point, first of a block
[[nodiscard]] bool holds_one_block(Layout layout);   ///< there is no place for a second block
[[nodiscard]] bool may_hold_count(Layout layout);  ///< begins with a block count, if it is told to

[[nodiscard]] const char* name_of(Layout layout);

/// What has to be known of a restart file to read it; the file itself does not say.
struct RestartForm {
  Layout layout = Layout::solution;
  Encoding encoding = Encoding::unformatted;
  Precision precision = Precision::single_precision;
  bool multiblock = true;
  ByteOrder byte_order = ByteOrder::native;
  std::optional<Sections> sections = std::nullopt;  ///< where not stated: the five variables of a
  ///< solution, or all functions of a function file

  friend bool operator==(const RestartForm&, const RestartForm&) = default;
};

/// True when the blocks of the file are read beginning with their triplets: layout 100 is read
/// without them from single-precision records, although it is never written so.
[[nodiscard]] bool reads_triplets(const RestartForm& form);

/// What a user states of a restart file's form; the rest is left open. Of a file to be read, what
/// is open is found out; of one to be written, it stays as in the file read.
struct StatedRestartForm {
  std::optional<Layout> layout = {};
  std::optional<Encoding> encoding = {};
  std::optional<Precision> precision = {};
  std::optional<bool> multiblock = {};
  std::optional<ByteOrder> byte_order = {};
  std::optional<Sections> sections = {};

  [[nodiscard]] RestartForm applied_to(const RestartForm& read) const;

  friend bool operator==(const StatedRestartForm&, const StatedRestartForm&) = default;
};

/// Everything of a form, as if a user had stated it.
[[nodiscard]] StatedRestartForm stated_as(const RestartForm& form);

/// For people: "layout 2, unformatted, little-endian, single precision, multi-block".
[[nodiscard]] std::string describe(const RestartForm& form);

/// Every option that says something of a file of this form.
[[nodiscard]] std::vector<FormOption> options_of(const RestartForm& form);

/// What has been stated, as options.
[[nodiscard]] std::vector<FormOption> options_of(const StatedRestartForm& stated);

}  // namespace p3dgrid
