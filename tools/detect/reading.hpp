#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "detect/evidence.hpp"
#include "extents.hpp"
#include "grid_form.hpp"
#include "restart_form.hpp"

namespace p3dgrid {

/// One way to take a file, and how the file bears it out.
struct Reading {
  std::variant<GridForm, RestartForm> form;
  Extents extents = {};     ///< by which its records have been worked out; empty if none are known
  bool own_extents = true;  ///< they stand in the file
  std::size_t records = 0;  ///< that it asks for
  Fit fit = {};
  bool free_count = false;      ///< its variables are as many as fill the file, not a usual number
  bool unknown_flag = false;    ///< of layout 101, in a place where without markers data could be
  bool checked = true;          ///< false where only the header could be compared
  bool planar = false;          ///< a grid in two dimensions
  std::string unreadable = {};  ///< why a file like this cannot be read: "layout ..., which ..."

  [[nodiscard]] bool is_grid() const { return std::holds_alternative<GridForm>(form); }
  [[nodiscard]] Encoding encoding() const {
    return std::visit([](const auto& any) { return any.encoding; }, form);
  }
  [[nodiscard]] const GridForm& grid() const { return std::get<GridForm>(form); }
  [[nodiscard]] const RestartForm& restart() const { return std::get<RestartForm>(form); }
};

/// Why single-precision records of layout 100 cannot be read as they are written.
inline constexpr const char* triplets_not_read =
    "begins its blocks with triplets, and single-precision files of layout 100 are read without; "
    "write it in double precision or as text";

/// "grid, binary, ..." or "layout 2, unformatted, ..., sections 1-5".
[[nodiscard]] std::string describe(const Reading& reading);

/// Every option that says something of the file when it is taken so.
[[nodiscard]] std::vector<FormOption> options_of(const Reading& reading);

/// The codings that are possible of a file and have not been ruled out by what is stated.
[[nodiscard]] std::vector<Coding> codings_of(Evidence& file, std::optional<Encoding> encoding,
                                             std::optional<ByteOrder> order,
                                             std::optional<Precision> precision);

/// Every way to take the file as a grid whose header can be one.
[[nodiscard]] std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated);

/// Every way to take it as a restart file whose header can be one.
/// @param grid  extents of its grid, for layouts that hold none
[[nodiscard]] std::vector<Reading> restart_readings(Evidence& file, const StatedRestartForm& stated,
                                                    const std::optional<Extents>& grid);

}  // namespace p3dgrid
