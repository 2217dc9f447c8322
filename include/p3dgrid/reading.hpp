#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// The forms in which a file can be read.
namespace p3dgrid {

/// How far a file agrees with the records that a reading expects.
struct Fit {
  /// Kinds of agreement.
  enum class Agreement {
    whole,   ///< all records agree
    padded,  ///< the same, followed by zero bytes up to a full disk block
    longer,  ///< all records agree, and more follows
    remark,  ///< all values of text agree, and words follow, which readers ignore
    so_far,  ///< text agrees up to a limit; the rest has not been read
    cut,     ///< the file ends too early
    other,   ///< a record differs or is damaged
  };

  Agreement agreement = Agreement::whole;  ///< kind of agreement
  std::int64_t records = 0;                ///< agreeing records before the first that differs
  std::string what = {};                   ///< unless whole: the difference as part of a sentence
  std::int64_t line = 0;                   ///< of text: line up to which it agrees
  /// Expected size divided by actual size: in bytes for a binary file and for the record that
  /// differs, in values for text; 0 if unknown.
  double share = 0;
  std::int64_t end = 0;     ///< of a binary file: expected size
  std::int64_t record = 0;  ///< of an unformatted file: the record that differs, from 1; else 0
  std::int64_t offset = 0;  ///< first byte of that record

  /// Nothing is missing, and nothing but padding follows.
  [[nodiscard]] bool whole() const {
    return agreement == Agreement::whole || agreement == Agreement::padded;
  }
};

/// Whether all records agree and what follows them can be ignored.
[[nodiscard]] bool only_followed(const Fit& fit, Encoding encoding);

/// One interpretation of a file, and how far the file agrees with it.
struct Reading {
  std::variant<GridForm, RestartForm> form;  ///< the assumed form
  /// Extents of the blocks, from the file or from its grid; null if unknown.
  std::shared_ptr<const Extents> extents = {};
  bool own_extents = true;    ///< the extents are in the file
  std::int64_t records = 0;   ///< expected records
  Fit fit = {};               ///< agreement of the file
  bool free_count = false;    ///< the number of variables follows from the size, and is unusual
  bool unknown_flag = false;  ///< layout 101: a flag has no meaning
  bool checked = true;        ///< false if only the header could be compared
  /// Blocks begin with their triplets; none if that is unknown.
  std::optional<bool> triplets = {};
  /// Why it is taken although others agree as well: "its reals are ..."; empty if none does.
  std::string preferred = {};

  /// Whether the form is that of a grid.
  [[nodiscard]] bool is_grid() const { return std::holds_alternative<GridForm>(form); }
  /// The coding of its form.
  [[nodiscard]] const Coding& coding() const {
    return std::visit([](const auto& any) -> const Coding& { return any.coding; }, form);
  }
  /// The form of a grid.
  [[nodiscard]] const GridForm& grid() const { return std::get<GridForm>(form); }
  /// The form of a restart file.
  [[nodiscard]] const RestartForm& restart() const { return std::get<RestartForm>(form); }
};

/// "grid, binary, ..." or "layout 2, unformatted, ..., sections 1-5".
[[nodiscard]] std::string describe(const Reading& reading);

/// The evidence for a reading, as part of a sentence: "its 96 bytes are what ...".
/// @param reading    of the file
/// @param file_size  bytes of the file
[[nodiscard]] std::string reason_for(const Reading& reading, std::int64_t file_size);

}  // namespace p3dgrid

#pragma GCC visibility pop
