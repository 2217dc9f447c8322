#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// Finds out which form a grid or restart file has.
namespace p3dgrid {

/// How far a file agrees with the records that a reading expects.
struct Fit {
  /// How far they agree.
  enum class Agreement {
    whole,   ///< record by record to the end
    padded,  ///< the same, and zero bytes up to a full block of the disk
    longer,  ///< all records are there, and more follows
    remark,  ///< all values of text are there, and words follow, which readers leave out
    so_far,  ///< text agrees up to a limit, and nothing behind that has been looked at
    cut,     ///< as far as the file goes, which ends too early
    other,   ///< a record is another, or damaged
  };

  Agreement agreement = Agreement::whole;  ///< how far they agree
  std::int64_t records = 0;                ///< records that agree, from the first on
  std::string what = {};                   ///< unless whole: where and how, as part of a sentence
  std::int64_t line = 0;                   ///< of text: up to where it may be so
  /// Expected size divided by actual size: in bytes for a binary file and for the record that
  /// differs, in values for text; 0 if unknown.
  double share = 0;
  std::int64_t end = 0;  ///< of a binary file: byte behind the last record asked for

  /// Nothing is missing, and nothing follows but padding.
  [[nodiscard]] bool whole() const {
    return agreement == Agreement::whole || agreement == Agreement::padded;
  }
};

/// True if all records are there and what follows them can be ignored.
[[nodiscard]] bool only_followed(const Fit& fit, Encoding encoding);

/// One interpretation of a file, and how far the file agrees with it.
struct Reading {
  std::variant<GridForm, RestartForm> form;  ///< as which it is taken
  /// Extents of its blocks, of the file itself or of its grid; null if none are known.
  std::shared_ptr<const Extents> extents = {};
  bool own_extents = true;      ///< they stand in the file
  std::int64_t records = 0;     ///< that it asks for
  Fit fit = {};                 ///< how the file goes together with that
  bool free_count = false;      ///< its variables are as many as fill the file, not a usual number
  bool unknown_flag = false;    ///< of layout 101: a flag that announces nothing
  bool checked = true;          ///< false where only the header could be compared
  bool planar = false;          ///< a grid in two dimensions
  std::string unreadable = {};  ///< why a file like this cannot be read: "layout ..., which ..."

  /// Taken as a grid, not as a restart file.
  [[nodiscard]] bool is_grid() const { return std::holds_alternative<GridForm>(form); }
  /// The coding of its form.
  [[nodiscard]] const Coding& coding() const {
    return std::visit([](const auto& any) -> const Coding& { return any.coding; }, form);
  }
  /// Its form, of a grid.
  [[nodiscard]] const GridForm& grid() const { return std::get<GridForm>(form); }
  /// Its form, of a restart file.
  [[nodiscard]] const RestartForm& restart() const { return std::get<RestartForm>(form); }
};

/// "grid, binary, ..." or "layout 2, unformatted, ..., sections 1-5".
[[nodiscard]] std::string describe(const Reading& reading);

/// What has been found out of a file.
struct Detection {
  /// Readings that agree with the file. With one, the form is known; with several, it is
  /// ambiguous.
  std::vector<Reading> fitting = {};
  std::vector<Reading> nearest = {};  ///< where none fits: those that agree furthest
  /// @name Set if no reading is proven: parts of a sentence, or empty
  /// @{
  std::string foreign = {};    ///< a form that cannot be read: "is a grid in two dimensions, ..."
  std::string damage = {};     ///< where the header is damaged
  std::string beginning = {};  ///< what the file begins with
  std::string planar = {};     ///< a form in two dimensions that is as long: "a grid in ..."
  /// @}
  std::int64_t size = 0;        ///< bytes of the file
  std::int64_t bytes_read = 0;  ///< that it took

  /// A reading has been compared with the file to its end.
  [[nodiscard]] bool proven() const;
};

/// Thrown for a file that cannot be examined: one that cannot be opened or read, or that is not
/// a regular file. `what()` is the path and the reason.
class FileError : public std::runtime_error {
 public:
  /// @param message  the path and the reason
  explicit FileError(const std::string& message) : std::runtime_error(message) {}
};

/// Detects the members of a file's form that are not stated. Text is read for less than two
/// seconds, which is 200 MB at least in lines of three values. Readings that agree up to there fit
/// `so_far`; `compare` looks at the rest. Of other files only headers, markers and the length are
/// looked at. Memory: at most twice the tables of extents of the file and 64 MiB. Throws
/// `FileError`.
[[nodiscard]] Detection detect_grid(const std::string& path, const StatedGridForm& stated = {});
/// The same of a restart file.
/// @param path    of the file
/// @param stated  what is known of its form
/// @param grid    extents of its grid, for layouts that hold none
[[nodiscard]] Detection detect_restart(const std::string& path,
                                       const StatedRestartForm& stated = {},
                                       const std::shared_ptr<const Extents>& grid = {});
/// The same of a file of which nothing is known.
[[nodiscard]] Detection detect_any(const std::string& path);

/// Compares the records of a file with a form, of text all of it. Extents are read from the header
/// of the file. Returns `Agreement::whole` without a comparison if the header is not valid in this
/// form. Throws `FileError`.
[[nodiscard]] Fit compare(const std::string& path, const GridForm& form);
/// The same of a restart file.
/// @param path            of the file
/// @param form            to compare it with
/// @param grid            extents for layouts that hold none
/// @param leading_record  whether the blocks begin with their triplets
[[nodiscard]] Fit compare(const std::string& path, const RestartForm& form,
                          const std::shared_ptr<const Extents>& grid, bool leading_record);

/// The extents that the header of a file of this form holds; null where there are none. Throws
/// `FileError`.
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const std::string& path,
                                                        const GridForm& form);
/// @copydoc extents_in
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const std::string& path,
                                                        const RestartForm& form);

/// True when every number of a text file becomes the same single-precision value directly and by
/// way of double precision; false also for text that holds more than finite numbers. Throws
/// `FileError`.
[[nodiscard]] bool survives_double_precision(const std::string& path);

/// Why single-precision records of layout 100 cannot be read as they are written.
inline constexpr const char* triplets_not_read =
    "begins its blocks with triplets, and single-precision files of layout 100 are read without; "
    "write it in double precision or as text";

}  // namespace p3dgrid

#pragma GCC visibility pop
