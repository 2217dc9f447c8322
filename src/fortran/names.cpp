#include "fortran/names.hpp"

#include <algorithm>
#include <vector>

#include "fortran/host.hpp"
#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid::fortran {
namespace {

struct LongName {
  FileName name;
  std::string whole;
};

/// The long names of the operation, in the order of its arguments. A name of 40 characters is among
/// them, because it may be the beginning of another.
std::vector<LongName> long_names;

bool host_finds_paths = false;

/// The beginning of a long name, different from those of the other long names. It does not end with
/// a blank: names of fewer than 40 characters are not among the long names.
FileName short_name(std::string_view whole) {
  std::string cut(whole.substr(0, FileName::length));
  const auto is_taken = [&] {
    return cut.back() == ' ' ||
           std::ranges::any_of(long_names, [&](const auto& n) { return n.name == FileName(cut); });
  };
  for (char mark = '1'; is_taken(); ++mark) cut.back() = mark;
  return FileName(cut);
}

std::string path_of_host(std::string_view name) {
  std::string whole = whole_name(name);
  if (!host_finds_paths) return whole;
  std::string path;
  procedures.find_path(whole.data(), whole.size(), &path);
  return path;
}

/// Installs a handler only if it is necessary, because an operation may call it often.
void update_path_handler() {
  const bool needed = host_finds_paths || !long_names.empty();
  p3dsetpaths(needed ? path_of_host : std::function<std::string(std::string_view)>());
}

}  // namespace

HostName::HostName(const char* name, std::size_t length) {
  std::string_view whole(name, length);
  whole = whole.substr(0, whole.find_last_not_of(' ') + 1);
  if (whole.size() < FileName::length) {
    name_ = FileName(whole);
    return;
  }
  name_ = short_name(whole);
  long_names.push_back({name_, std::string(whole)});
  update_path_handler();
}

HostName::~HostName() {
  const auto is_own = [&](const LongName& n) { return n.name == name_; };
  if (std::erase_if(long_names, is_own) > 0) update_path_handler();
}

std::string whole_name(std::string_view name) {
  for (const LongName& n : long_names) {
    if (n.name.view() == name) return n.whole;
  }
  return std::string(name);
}

void set_host_finds_paths(bool finds) {
  host_finds_paths = finds;
  update_path_handler();
}

}  // namespace mod_p3dgrid::fortran
