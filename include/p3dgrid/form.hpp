#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#pragma GCC visibility push(default)

/// The form of a grid or restart file: what must be known to read it and is not stored in it.
namespace p3dgrid {

/// How a file holds its records. The values are the module's file-format codes.
enum class Encoding : std::int32_t {
  unformatted = 0,  ///< each framed by length markers, as Fortran programs write them
  formatted = 1,    ///< list-directed text
  binary = 2,       ///< the bytes of unformatted records without markers
};

/// Size of the reals of an unformatted or binary file.
enum class Precision : std::uint8_t { single_precision, double_precision };

/// Byte order of integers, reals and record markers.
using ByteOrder = std::endian;

/// Size of the record markers of an unformatted file.
enum class MarkerBytes : std::uint8_t { four = 4, eight = 8 };

/// Dimensions of a file. In two there are no k extents, which count as 1, no third coordinate and
/// no third momentum, which count as 0. Grids and some layouts of restart files have such files.
enum class Dimensions : std::uint8_t { two = 2, three = 3 };

/// Layouts of restart files. The values are the module's restart layout codes.
enum class Layout : std::int32_t {
  talven = 0,
  time_step = 1,
  solution = 2,  ///< PLOT3D solution
  function = 3,  ///< PLOT3D function
  triplets = 100,
  single_block = 101,
  bare = 102,
  overflow = 200,  ///< solution of OVERFLOW; the module has no code for it
};

/// The variables `first` to `last` of a restart file, which one record holds.
struct Section {
  std::int32_t first = 1;  ///< from 1
  std::int32_t last = 0;   ///< less than `first` for none

  /// Number of variables.
  [[nodiscard]] constexpr std::int64_t variables() const {
    return last < first ? 0 : std::int64_t{last} - first + 1;
  }
  /// Compares both ends.
  friend bool operator==(const Section&, const Section&) = default;
};

/// The sections of a block in file order.
using Sections = std::vector<Section>;

/// Number of variables in all sections.
[[nodiscard]] std::int32_t variables_in(const Sections& sections);

/// Variables of every solution file, and of the leading record of layouts 100 and 101.
inline constexpr std::int32_t solution_variables = 5;

/// Encodings whose files have a member.
enum class Scope : std::uint8_t { all_files, records, marked_records };

/// Whether files of an encoding have the members of a scope.
[[nodiscard]] constexpr bool is_in(Scope scope, Encoding encoding) {
  return scope == Scope::all_files || encoding == Encoding::unformatted ||
         (scope == Scope::records && encoding == Encoding::binary);
}

/// Describes one member of a form. The command derives option names, help and JSON keys from it.
template <class Value>
struct Member {
  const char* name;                ///< "format"
  std::span<const Value> choices;  ///< its possible values; empty if they cannot be listed
  const char* meaning;             ///< description of its values
  Scope scope = Scope::all_files;  ///< encodings for which it has a meaning
  bool only_in_restarts = false;   ///< meaningless for grids
  bool has_default = false;        ///< the initial value holds if all other members are stated
};

extern const Member<Encoding> encoding_member;         ///< how records are held
extern const Member<Precision> precision_member;       ///< size of the reals
extern const Member<ByteOrder> byte_order_member;      ///< of each number
extern const Member<MarkerBytes> marker_bytes_member;  ///< size of record markers
extern const Member<Dimensions> dimensions_member;     ///< two or three
extern const Member<bool> grid_multiblock_member;      ///< a grid begins with its block count
extern const Member<bool> restart_multiblock_member;   ///< a restart file does
extern const Member<bool> iblank_member;               ///< blocks end with blanking values
extern const Member<Layout> layout_member;             ///< which records a restart file has
extern const Member<std::optional<Sections>> sections_member;  ///< variables of its records

/// The word for a value in options, messages and JSON.
[[nodiscard]] const char* name_of(Encoding encoding);
[[nodiscard]] const char* name_of(Precision precision);  ///< @copydoc name_of
[[nodiscard]] const char* name_of(ByteOrder order);      ///< @copydoc name_of
[[nodiscard]] const char* name_of(MarkerBytes bytes);    ///< @copydoc name_of
[[nodiscard]] const char* name_of(Dimensions count);     ///< @copydoc name_of
[[nodiscard]] const char* name_of(Layout layout);        ///< @copydoc name_of
[[nodiscard]] const char* name_of(bool choice);          ///< @copydoc name_of

/// Holder of a known member. The holder of one that may be stated is `std::optional`.
template <class T>
using Known = T;

/// Initial value of a member: `value` for `Known`, none for `std::optional`.
template <class Held, class Value>
constexpr Held unless_stated(Value value) {
  if constexpr (std::is_same_v<Held, Value>) {
    return value;
  } else {
    return {};
  }
}

/// How the numbers of a file are coded. New members must be added to `for_each_member`, which
/// options, comparison, messages and JSON use.
template <template <class> class Holder>
struct BasicCoding {
  Holder<Encoding> encoding = {};    ///< how records are held
  Holder<Precision> precision = {};  ///< of reals; text has none
  /// Of unformatted and binary files; text has none.
  Holder<ByteOrder> byte_order = unless_stated<Holder<ByteOrder>>(ByteOrder::native);
  /// Of unformatted files; others have no markers.
  Holder<MarkerBytes> marker_bytes = unless_stated<Holder<MarkerBytes>>(MarkerBytes::four);
  /// Of any file.
  Holder<Dimensions> dimensions = unless_stated<Holder<Dimensions>>(Dimensions::three);

  /// Calls `visit(member, its value in each coding...)` for every member.
  template <class Visit, class... Codings>
  static void for_each_member(Visit&& visit, Codings&... codings) {
    visit(encoding_member, codings.encoding...);
    visit(precision_member, codings.precision...);
    visit(byte_order_member, codings.byte_order...);
    visit(marker_bytes_member, codings.marker_bytes...);
    visit(dimensions_member, codings.dimensions...);
  }

  /// Compares all members.
  friend bool operator==(const BasicCoding&, const BasicCoding&) = default;
};
using Coding = BasicCoding<Known>;                ///< of a file
using StatedCoding = BasicCoding<std::optional>;  ///< the known members

/// Whether the file is list-directed text.
[[nodiscard]] constexpr bool is_text(const Coding& coding) {
  return coding.encoding == Encoding::formatted;
}
/// Whether the file holds 64-bit reals; false for text.
[[nodiscard]] constexpr bool holds_doubles(const Coding& coding) {
  return !is_text(coding) && coding.precision == Precision::double_precision;
}
/// Whether the file holds 32-bit reals; false for text.
[[nodiscard]] constexpr bool holds_singles(const Coding& coding) {
  return !is_text(coding) && coding.precision == Precision::single_precision;
}
/// Precision of the reals in memory: that of the file, and double for text.
[[nodiscard]] constexpr Precision precision_in_memory(const Coding& coding) {
  return is_text(coding) ? Precision::double_precision : coding.precision;
}
/// Bytes of a real in an unformatted or binary file.
[[nodiscard]] constexpr std::int64_t real_bytes(const Coding& coding) {
  return coding.precision == Precision::double_precision ? 8 : 4;
}
/// Whether the file has two dimensions.
[[nodiscard]] constexpr bool is_planar(const Coding& coding) {
  return coding.dimensions == Dimensions::two;
}
/// Extents of a block and coordinates of a point in the file.
[[nodiscard]] constexpr std::int64_t axes_of(const Coding& coding) {
  return static_cast<std::int64_t>(coding.dimensions);
}
/// Bytes of a record marker of an unformatted file.
[[nodiscard]] constexpr std::int64_t marker_size(const Coding& coding) {
  return static_cast<std::int64_t>(coding.marker_bytes);
}

/// The form of a grid file.
template <template <class> class Holder>
struct BasicGridForm {
  BasicCoding<Holder> coding = {};  ///< of its numbers
  /// The file begins with its block count.
  Holder<bool> multiblock = unless_stated<Holder<bool>>(true);
  Holder<bool> iblank = {};  ///< each block ends with its blanking values

  /// Calls `visit(member, its value in each form...)` for every member.
  template <class Visit, class... Forms>
  static void for_each_member(Visit&& visit, Forms&... forms) {
    BasicCoding<Holder>::for_each_member(visit, forms.coding...);
    visit(grid_multiblock_member, forms.multiblock...);
    visit(iblank_member, forms.iblank...);
  }

  /// Compares all members.
  friend bool operator==(const BasicGridForm&, const BasicGridForm&) = default;
};
using GridForm = BasicGridForm<Known>;  ///< of a grid file

/// The known members of a grid file's form; the others are detected.
using StatedGridForm = BasicGridForm<std::optional>;

/// The form of a restart file.
template <template <class> class Holder>
struct BasicRestartForm {
  /// Determines its records.
  Holder<Layout> layout = unless_stated<Holder<Layout>>(Layout::solution);
  BasicCoding<Holder> coding = {};  ///< of its numbers
  /// Layouts 2 and 3: the file begins with its block count.
  Holder<bool> multiblock = unless_stated<Holder<bool>>(true);
  /// None for the usual ones: variables 1 to 5, or all of a function file.
  std::optional<Sections> sections = {};

  /// Calls `visit(member, its value in each form...)` for every member.
  template <class Visit, class... Forms>
  static void for_each_member(Visit&& visit, Forms&... forms) {
    visit(layout_member, forms.layout...);
    BasicCoding<Holder>::for_each_member(visit, forms.coding...);
    visit(restart_multiblock_member, forms.multiblock...);
    visit(sections_member, forms.sections...);
  }

  /// Compares all members.
  friend bool operator==(const BasicRestartForm&, const BasicRestartForm&) = default;
};
using RestartForm = BasicRestartForm<Known>;                ///< of a restart file
using StatedRestartForm = BasicRestartForm<std::optional>;  ///< the known members

/// The form, or the coding, with its members replaced by those that are stated.
template <template <template <class> class> class Form>
[[nodiscard]] Form<Known> applied_to(Form<Known> form, const Form<std::optional>& stated) {
  const auto apply = [](const auto&, auto& value, const auto& choice) {
    if (choice) value = *choice;
  };
  Form<Known>::for_each_member(apply, form, stated);
  return form;
}

/// The form, or the coding, with all members stated.
template <template <template <class> class> class Form>
[[nodiscard]] Form<std::optional> stated_as(const Form<Known>& form) {
  Form<std::optional> stated;
  Form<std::optional>::for_each_member(
      [](const auto&, auto& choice, const auto& value) { choice = value; }, stated, form);
  return stated;
}

/// Whether all members that matter are stated.
[[nodiscard]] bool is_complete(const StatedGridForm& stated);
/// @copydoc is_complete
[[nodiscard]] bool is_complete(const StatedRestartForm& stated);

/// "unformatted, little-endian, single precision" or "formatted".
[[nodiscard]] std::string describe(const Coding& coding);
/// "binary, little-endian, double precision, multi-block, with blanking".
[[nodiscard]] std::string describe(const GridForm& form);
/// "layout 2, unformatted, little-endian, single precision, multi-block".
[[nodiscard]] std::string describe(const RestartForm& form);
/// "1-5,6-7".
[[nodiscard]] std::string describe(const Sections& sections);

/// Number of points of a block, or an index, in the three directions.
struct BlockExtents {
  std::int32_t i = 0;  ///< fastest
  std::int32_t j = 0;  ///< second
  std::int32_t k = 0;  ///< slowest

  /// Number of points.
  [[nodiscard]] constexpr std::int64_t points() const { return std::int64_t{i} * j * k; }
  /// "49x25x5".
  [[nodiscard]] std::string text() const {
    return std::to_string(i) + "x" + std::to_string(j) + "x" + std::to_string(k);
  }

  /// Compares all three.
  friend bool operator==(const BlockExtents&, const BlockExtents&) = default;
};

/// Number of points of each block in the three directions.
struct Extents {
  std::vector<std::int32_t> i;  ///< an entry per block
  std::vector<std::int32_t> j;  ///< an entry per block
  std::vector<std::int32_t> k;  ///< an entry per block

  /// Number of blocks.
  [[nodiscard]] std::int32_t blocks() const { return static_cast<std::int32_t>(i.size()); }

  /// Extents of a block, counted from 0.
  [[nodiscard]] BlockExtents of(std::size_t block) const { return {i[block], j[block], k[block]}; }

  /// Points of a block, counted from 0.
  [[nodiscard]] std::int64_t points_of(std::size_t block) const { return of(block).points(); }

  /// Appends a block.
  void add(const BlockExtents& block) {
    i.push_back(block.i);
    j.push_back(block.j);
    k.push_back(block.k);
  }

  /// Points of all blocks.
  [[nodiscard]] std::int64_t points() const {
    std::int64_t sum = 0;
    for (std::size_t block = 0; block < i.size(); ++block) sum += points_of(block);
    return sum;
  }

  /// Compares all blocks.
  friend bool operator==(const Extents&, const Extents&) = default;
};

}  // namespace p3dgrid

#pragma GCC visibility pop
