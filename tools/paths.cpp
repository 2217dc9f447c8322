#include "paths.hpp"

#include <map>

namespace p3dgrid {
namespace {

using mod_p3dgrid::FileName;

std::map<std::string, std::string, std::less<>>& paths_by_name() {
  static std::map<std::string, std::string, std::less<>> paths;
  return paths;
}

// Trailing blanks are padding in a library name, so a path that ends in one is not its own name.
bool can_be_a_name(const std::string& path) {
  return !path.empty() && path.size() <= FileName::length && path.back() != ' ';
}

bool claim(const std::string& name, const std::string& path) {
  return paths_by_name().try_emplace(name, path).first->second == path;
}

}  // namespace

FileName name_for(const std::string& path) {
  mod_p3dgrid::p3dsetpaths(path_behind);
  if (can_be_a_name(path) && claim(path, path)) return path;
  for (int number = 1;; ++number) {
    const std::string name = "file-" + std::to_string(number);
    if (claim(name, path)) return name;
  }
}

std::string path_behind(std::string_view name) {
  const auto found = paths_by_name().find(name);
  return found == paths_by_name().end() ? std::string(name) : found->second;
}

}  // namespace p3dgrid
