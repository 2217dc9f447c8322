#include "paths.hpp"

#include <map>
#include <utility>

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::FileName;

std::map<std::string, std::string, std::less<>>& paths_by_name() {
  static std::map<std::string, std::string, std::less<>> paths;
  return paths;
}

/// Path stems by the prefixes that stand for them.
std::map<std::string, std::string, std::less<>>& stems_by_prefix() {
  static std::map<std::string, std::string, std::less<>> stems;
  return stems;
}

/// The prefix with which the name begins, and its stem; null for none.
const std::pair<const std::string, std::string>* prefix_of(std::string_view name) {
  for (const auto& entry : stems_by_prefix()) {
    if (name.starts_with(entry.first)) return &entry;
  }
  return nullptr;
}

std::map<std::string, ByteOrder, std::less<>>& orders_by_name() {
  static std::map<std::string, ByteOrder, std::less<>> orders;
  return orders;
}

ByteOrder order_of(std::string_view name) {
  const auto found = orders_by_name().find(name);
  return found == orders_by_name().end() ? ByteOrder::native : found->second;
}

bool begins_a_name(const std::string& prefix) {
  const auto next = paths_by_name().lower_bound(prefix);
  return next != paths_by_name().end() && next->first.starts_with(prefix);
}

// Trailing blanks are padding in a library name, so a path that ends in one is not its own name.
bool can_be_a_name(const std::string& path) {
  return !path.empty() && path.size() <= FileName::length && path.back() != ' ';
}

bool claim(const std::string& name, const std::string& path) {
  if (prefix_of(name) != nullptr) return false;
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

FileName name_for(const std::string& path, ByteOrder order) {
  mod_p3dgrid::p3dsetbyteorder(order_of);
  FileName name = name_for(path);
  orders_by_name().insert_or_assign(std::string(name.view()), order);
  return name;
}

FileName prefix_for(const std::string& path_stem) {
  mod_p3dgrid::p3dsetpaths(path_behind);
  for (int number = 1;; ++number) {
    const std::string prefix = "v" + std::to_string(number) + "-";
    if (begins_a_name(prefix) || prefix_of(prefix) != nullptr) continue;
    stems_by_prefix().emplace(prefix, path_stem);
    return prefix;
  }
}

std::string path_behind(std::string_view name) {
  const auto found = paths_by_name().find(name);
  if (found != paths_by_name().end()) return found->second;
  const auto* const prefix = prefix_of(name);
  if (prefix == nullptr) return std::string(name);
  return prefix->second + std::string(name.substr(prefix->first.size()));
}

}  // namespace p3dgrid::tool
