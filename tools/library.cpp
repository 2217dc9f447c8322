#include "library.hpp"

#include <map>

#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::FileName;

struct NamedFile {
  std::string path;
  Coding coding;
};

std::map<std::string, NamedFile, std::less<>>& files_by_name() {
  static std::map<std::string, NamedFile, std::less<>> files;
  return files;
}

StatedCoding coding_of(std::string_view name) {
  const auto found = files_by_name().find(name);
  return found == files_by_name().end() ? StatedCoding() : stated_as(found->second.coding);
}

// Trailing blanks are padding in a library name, so a path that ends in one is not its own name.
bool can_be_a_name(const std::string& path) {
  return !path.empty() && path.size() <= FileName::length && path.back() != ' ';
}

bool claim(const std::string& name, const std::string& path) {
  if (!can_be_a_name(name)) return false;
  return files_by_name().try_emplace(name, NamedFile{path, {}}).first->second.path == path;
}

}  // namespace

FileName name_for(const std::string& path, const Coding& coding) {
  mod_p3dgrid::p3dsetpaths(path_behind);
  mod_p3dgrid::p3dsetcoding(coding_of);
  std::string name = path;
  for (int number = 1; !claim(name, path); ++number) name = "file-" + std::to_string(number);
  files_by_name()[name].coding = coding;
  return name;
}

std::string path_behind(std::string_view name) {
  const auto found = files_by_name().find(name);
  return found == files_by_name().end() ? std::string(name) : found->second.path;
}

}  // namespace p3dgrid::tool

// What the library requires of its host: see mod_gridvars.hpp.
namespace mod_gridvars {
namespace {

using p3dgrid::tool::Unusable;

// A failed allocation is reported without a file name; `dispreadwrite` has named it before.
std::string& file_at_work() {
  static std::string path;
  return path;
}

}  // namespace

integer nfilesect = 0;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer&, const integer&, const integer&, const FileName& filename,
                   const integer&, const logical&, const std::optional<integer>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&) {
  file_at_work() = p3dgrid::tool::path_behind(filename.view());
}

void checkallocationerror(const integer& status) {
  // An array that is already allocated is used as it is.
  if (status == mod_p3dgrid::allocation_done || status == mod_p3dgrid::already_allocated) return;
  throw Unusable(file_at_work() + ": not enough memory for this file");
}

void dispfilereaderror() {
  throw p3dgrid::tool::Unreadable(mod_p3dgrid::p3dlastfailure().describe());
}

}  // namespace mod_gridvars
