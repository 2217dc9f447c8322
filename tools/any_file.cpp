#include "any_file.hpp"

#include "failure.hpp"
#include "wrong_place.hpp"

namespace p3dgrid::tool {
namespace {

void require_one_kind(const AnyFile& file) {
  if (file.grid_option.empty() || file.restart_option.empty()) return;
  throw Failure(ExitStatus::unusable, file.grid_option + " describes a grid, and " +
                                          file.restart_option + " makes " + file.path +
                                          " a restart file; --grid names its grid");
}

/// @param prove  whether what the options say is compared with the file
Found found(const AnyFile& file, bool prove) {
  require_one_kind(file);
  const auto& [path, grid, restart, grid_option, restart_option] = file;
  if (!grid_option.empty()) {
    try {
      return prove ? prove_grid(path, grid) : find_grid(path, grid);
    } catch (const Unreadable&) {
      refuse_if_restart(path, grid_option + " describes a grid");
      throw;
    }
  }
  if (!restart_option.empty()) {
    try {
      return prove ? prove_restart(path, restart, std::nullopt)
                   : find_restart(path, restart, std::nullopt);
    } catch (const Unreadable&) {
      refuse_if_grid(path, restart_option + " describes a restart file");
      throw;
    }
  }
  return find_any(path);
}

}  // namespace

Found find_file(const AnyFile& file) {
  return found(file, false);
}

Found prove_file(const AnyFile& file) {
  return found(file, true);
}

}  // namespace p3dgrid::tool
