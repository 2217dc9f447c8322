#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// Detection of the form of grid and restart files.
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
  std::int64_t end = 0;  ///< of a binary file: expected size

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
  bool own_extents = true;      ///< the extents are in the file
  std::int64_t records = 0;     ///< expected records
  Fit fit = {};                 ///< agreement of the file
  bool free_count = false;      ///< the number of variables follows from the size, and is unusual
  bool unknown_flag = false;    ///< layout 101: a flag has no meaning
  bool checked = true;          ///< false if only the header could be compared
  std::string unreadable = {};  ///< why such a file cannot be read: "layout ..., which ..."

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

/// Result of a detection.
struct Detection {
  /// Readings that agree with the file. With several the form is ambiguous.
  std::vector<Reading> fitting = {};
  std::vector<Reading> nearest = {};  ///< if none fits: those that agree furthest
  /// @name Set if no reading is proven: parts of a sentence, or empty
  /// @{
  std::string foreign = {};    ///< a form that cannot be read: "is an OVERFLOW solution, ..."
  std::string damage = {};     ///< damage of the header
  std::string beginning = {};  ///< beginning of the file
  /// @}
  std::int64_t size = 0;        ///< bytes of the file
  std::int64_t bytes_read = 0;  ///< bytes read from it

  /// Whether a reading has been compared with the whole file and agrees.
  [[nodiscard]] bool proven() const;
};

/// Thrown for a file that cannot be opened or read, or is not a regular file. `what()` is the path
/// and the reason.
class FileError : public std::runtime_error {
 public:
  /// @param message  the path and the reason
  explicit FileError(const std::string& message) : std::runtime_error(message) {}
};

/// Detects the members of a file's form that are not stated. Text is read for less than two
/// seconds, which is at least 200 MB in lines of three values. Readings that agree up to there fit
/// `so_far`; `compare` reads all of it. Of other files only headers, markers and the length are
/// examined. Memory: at most twice the extents in the file and 64 MiB. Throws `FileError`.
[[nodiscard]] Detection detect_grid(const std::string& path, const StatedGridForm& stated = {});
/// The same for a restart file.
/// @param path    of the file
/// @param stated  known members of its form
/// @param grid    extents of its grid, for layouts without extents
[[nodiscard]] Detection detect_restart(const std::string& path,
                                       const StatedRestartForm& stated = {},
                                       const std::shared_ptr<const Extents>& grid = {});
/// The same for a file of unknown kind.
[[nodiscard]] Detection detect_any(const std::string& path);

/// Compares the records of a file, and the whole of a text, with a form. Extents are read from its
/// header. Returns `Agreement::whole` without a comparison if the header is invalid in this form.
/// Throws `FileError`.
[[nodiscard]] Fit compare(const std::string& path, const GridForm& form);
/// The same for a restart file.
/// @param path            of the file
/// @param form            to compare it with
/// @param grid            extents for layouts without extents
/// @param leading_record  whether blocks begin with their triplets
[[nodiscard]] Fit compare(const std::string& path, const RestartForm& form,
                          const std::shared_ptr<const Extents>& grid, bool leading_record);

/// The extents in the header of a file of this form; null if there are none. Throws `FileError`.
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const std::string& path,
                                                        const GridForm& form);
/// @copydoc extents_in
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const std::string& path,
                                                        const RestartForm& form);

/// Whether each number of a text file rounds to the same single-precision value directly and by way
/// of double precision. False if an item is not a finite number. Throws `FileError`.
[[nodiscard]] bool survives_double_precision(const std::string& path);

/// Why single-precision files of layout 100 cannot be read, as part of a sentence.
inline constexpr const char* triplets_not_read =
    "begins its blocks with triplets, and single-precision files of layout 100 are read without; "
    "write it in double precision or as text";

}  // namespace p3dgrid

#pragma GCC visibility pop
