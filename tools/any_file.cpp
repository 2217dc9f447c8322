#include "any_file.hpp"

#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

void require_one_kind(const AnyFile& file) {
  if (file.grid_option.empty() || file.restart_option.empty()) return;
  throw Failure(ExitStatus::unusable, file.grid_option + " describes a grid, and " +
                                          file.restart_option + " makes " + file.path +
                                          " a restart file; --grid names its grid");
}

}  // namespace

Found find_file(const AnyFile& file) {
  require_one_kind(file);
  if (!file.grid_option.empty()) return find_grid(file.path, file.grid);
  if (!file.restart_option.empty()) return find_restart(file.path, file.restart, std::nullopt);
  return find_any(file.path);
}

Found prove_file(const AnyFile& file) {
  require_one_kind(file);
  if (!file.grid_option.empty()) return prove_grid(file.path, file.grid);
  if (!file.restart_option.empty()) return prove_restart(file.path, file.restart, std::nullopt);
  return find_any(file.path);
}

}  // namespace p3dgrid::tool
