#pragma once

#include <optional>
#include <string>

#include "file_input.hpp"

/// Detects the forms of the files that a command is given, and whether they are of the kinds that
/// it takes.
namespace p3dgrid::tool {

/// Detects the form of a file that may be a grid or a restart file. An option for one kind of file
/// says that it is of that kind; options for both are wrong usage.
[[nodiscard]] Found find_file(const std::string& path, const StatedForms& stated,
                              Look look = Look::where_needed);

/// Usage of a command that takes a grid and a restart file, for messages. GRID and RESTART stand
/// for the files given.
struct Usage {
  const char* command_line;  ///< "p3dgrid check GRID RESTART"
  /// What takes a GRID alone, as part of a sentence; null for nothing.
  const char* grid_alone = nullptr;
  /// What takes a FILE that is a restart file, given as a grid alone, as part of a sentence; null
  /// for the command line.
  const char* restart_alone = nullptr;
};

/// A grid, and its solution if there is one, that a command reads.
class CaseInput {
 public:
  /// Detects the forms of the files, and checks that they belong together as far as their headers
  /// and lengths tell. If they do not, `mismatch_report` goes to standard output, and a Failure
  /// with the first difference is thrown. The Failure for a file of the other kind says how the
  /// command is written.
  /// @param restart_path  empty for a grid alone
  CaseInput(std::string path, std::string restart_path, const StatedForms& stated,
            const Usage& usage, Look look = Look::where_needed);
  CaseInput(const CaseInput&) = delete;
  CaseInput& operator=(const CaseInput&) = delete;
  ~CaseInput() = default;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& restart_path() const { return restart_path_; }
  [[nodiscard]] const Found& found_grid() const { return found_grid_; }
  [[nodiscard]] const Found& found_restart() const { return found_restart_; }
  [[nodiscard]] const GridForm& form() const { return found_grid_.grid(); }
  [[nodiscard]] const RestartForm& restart_form() const { return found_restart_.restart(); }
  [[nodiscard]] const Extents& extents() const;
  [[nodiscard]] GridInput& grid() const;
  [[nodiscard]] RestartInput& restart() const;

 private:
  void require_same_extents(const Usage& usage) const;

  std::string path_;
  std::string restart_path_;
  Found found_grid_;
  Found found_restart_;
  // Opened when they are needed: `restart` does not read the grid.
  mutable std::optional<GridInput> grid_;
  mutable std::optional<RestartInput> restart_;
};

}  // namespace p3dgrid::tool
