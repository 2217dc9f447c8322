#include "variable_files.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "failure.hpp"
#include "paths.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

constexpr mode_t nobody_else = 0077;

// As the library completes a prefix to a name.
std::string path_of_variable(const std::string& stem, integer variable) {
  std::array<char, 24> end{};
  std::snprintf(end.data(), end.size(), "%06d.tmp", static_cast<int>(variable));
  return stem + end.data();
}

}  // namespace

VariableFiles::VariableFiles(const std::string& stem, integer variables)
    : prefix_(prefix_for(stem)), mask_before_(::umask(nobody_else)) {
  // Listed before they exist: a signal may come while the library is writing one.
  for (integer v = 1; v <= variables; ++v) files_.emplace_back(path_of_variable(stem, v));
}

VariableFiles::~VariableFiles() {
  ::umask(mask_before_);
}

void VariableFiles::require_own(integer variable) const {
  const std::string& expected = files_[static_cast<std::size_t>(variable) - 1].path();
  const std::string written = path_behind(mod_p3dgrid::tmpfile(variable).view());
  if (written == expected) return;
  ::unlink(written.c_str());
  throw Failure(ExitStatus::unusable, expected + ": is there already");
}

}  // namespace p3dgrid::tool
