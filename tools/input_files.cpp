#include "input_files.hpp"

#include <algorithm>
#include <initializer_list>
#include <p3dgrid/check.hpp>
#include <string_view>
#include <utility>

#include "console.hpp"
#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

/// The reading that a search finds, if it is the only one and agrees with the whole file.
template <class Find>
std::optional<Reading> certain(const Find& find) {
  try {
    Reading reading = with_failures(find).reading;
    if (reading.checked && reading.fit.whole() && !reading.free_count) return reading;
  } catch (const Failure&) {
    // No reading fits, or several do.
  }
  return std::nullopt;
}

std::optional<Reading> known(const std::string& path) {
  return certain([&] { return find_any(path); });
}

/// The same with a grid, by whose extents layouts without extents of their own are recognised.
std::optional<Reading> known_beside(const std::string& path,
                                    const std::shared_ptr<const Extents>& grid) {
  if (auto reading = known(path)) return reading;
  auto reading = certain([&] { return find_restart(path, {}, grid); });
  // A grid can look like a solution of fewer variables than five.
  const bool solution = reading && !reading->own_extents && reading->restart().sections &&
                        variables_in(*reading->restart().sections) >= solution_variables;
  return solution ? reading : std::nullopt;
}

enum class Kind { grid, restart };

/// Throws a Failure if the reading of the file is of this kind.
/// @param meant  what the user may have meant, as part of a sentence
void refuse_if(Kind kind, const std::string& path, const std::optional<Reading>& reading,
               const std::string& meant) {
  if (!reading || reading->is_grid() != (kind == Kind::grid)) return;
  const std::string what =
      reading->is_grid()
          ? "is a grid, not a restart (flow-solution) file: " + describe(reading->grid())
          : "is a restart (flow-solution) file, not a grid: " + describe(*reading);
  throw Mismatch(path + ": " + what + "; " + meant);
}

/// The text with files in place of the words that stand for them.
using Files = std::initializer_list<std::pair<std::string_view, std::string_view>>;
std::string filled_in(std::string_view text, Files files) {
  std::string result;
  while (!text.empty()) {
    const auto* const file = std::ranges::find_if(
        files, [&](const auto& candidate) { return text.starts_with(candidate.first); });
    const bool is_word = file != files.end();
    result += is_word ? file->second : text.substr(0, 1);
    text.remove_prefix(is_word ? file->first.size() : 1);
  }
  return result;
}

/// The command line with these two files, in quotation marks.
std::string line_for(const Usage& usage, const std::string& grid, const std::string& restart) {
  return "'" + filled_in(usage.command_line, {{"GRID", grid}, {"RESTART", restart}}) + "'";
}

/// @param restart_path  of the command, which may be the grid; empty for a grid alone
void refuse_if_restart(const std::string& path, const std::string& restart_path,
                       const Usage& usage) {
  if (restart_path.empty()) {
    return refuse_if(Kind::restart, path, known(path),
                     usage.restart_alone != nullptr
                         ? filled_in(usage.restart_alone, {{"FILE", path}})
                         : line_for(usage, "GRID", path) + " takes it");
  }
  const auto other = known(restart_path);
  if (!other || !other->is_grid()) {
    return refuse_if(Kind::restart, path, known(path),
                     line_for(usage, "GRID", path) + " takes it with its grid");
  }
  const std::string& grid = restart_path;
  refuse_if(Kind::restart, path, known_beside(path, other->extents),
            grid + " is the grid: " + line_for(usage, grid, path));
}

void refuse_if_grid(const std::string& path, const std::string& grid_path, const Usage& usage) {
  refuse_if(Kind::grid, path, known(path),
            usage.grid_alone != nullptr
                ? filled_in(usage.grid_alone, {{"GRID", path}})
                : line_for(usage, grid_path, "RESTART") + " takes a restart file there");
}

/// Runs `find`. If the file is not what was stated, `explain` may throw a Failure that says more.
template <class Find, class Explain>
Found find_or_explain(const Find& find, const Explain& explain) {
  try {
    return with_failures(find);
  } catch (const Mismatch&) {
    explain();
    throw;
  }
}

}  // namespace

Found find_file(const std::string& path, const StatedForms& stated, Look look) {
  const std::string& grid_option = stated.grid_option;
  const std::string& restart_option = stated.restart_option;
  if (!grid_option.empty() && !restart_option.empty()) {
    throw Unusable(grid_option + " describes a grid, and " + restart_option + " makes " + path +
                   " a restart file; --grid names its grid");
  }
  if (!grid_option.empty()) {
    return find_or_explain(
        [&] { return find_grid(path, stated.grid, look); },
        [&] { refuse_if(Kind::restart, path, known(path), grid_option + " describes a grid"); });
  }
  if (!restart_option.empty()) {
    return find_or_explain([&] { return find_restart(path, stated.restart, {}, look); },
                           [&] {
                             refuse_if(Kind::grid, path, known(path),
                                       restart_option + " describes a restart file");
                           });
  }
  return find_any(path);
}

CaseInput::CaseInput(std::string path, std::string restart_path, const StatedForms& stated,
                     const Usage& usage, Look look)
    : path_(std::move(path)), restart_path_(std::move(restart_path)) {
  if (!restart_path_.empty()) require_regular_file(restart_path_);
  found_grid_ = find_or_explain([&] { return find_grid(path_, stated.grid, look); },
                                [&] { refuse_if_restart(path_, restart_path_, usage); });
  if (restart_path_.empty()) return;
  const auto grid = std::make_shared<const Extents>(extents());
  found_restart_ =
      find_or_explain([&] { return find_restart(restart_path_, stated.restart, grid, look); },
                      [&] { refuse_if_grid(restart_path_, path_, usage); });
  require_same_extents(usage);
}

void CaseInput::require_same_extents(const Usage& usage) const {
  const Reading& reading = found_restart_.reading;
  if (reading.extents == nullptr) {
    // A layout without extents, or an invalid header, whose place the reader reports.
    static_cast<void>(restart());
    return;
  }
  if (*reading.extents == extents()) return;
  if (reading.free_count) refuse_if_grid(restart_path_, path_, usage);
  for (const std::string& line : mismatch_report(extents(), *reading.extents)) print_line(line);
  throw Mismatch(
      differing_blocks(restart_path_, *reading.extents, extents(), path_).front().what());
}

const Extents& CaseInput::extents() const {
  const auto& detected = found_grid_.reading.extents;
  return detected != nullptr && !restart_path_.empty() ? *detected : grid().extents();
}

GridInput& CaseInput::grid() const {
  if (!grid_) grid_.emplace(path_, found_grid_);
  return *grid_;
}

RestartInput& CaseInput::restart() const {
  if (!restart_) restart_.emplace(restart_path_, found_restart_);
  return *restart_;
}

}  // namespace p3dgrid::tool
