// What the library requires of its host: see mod_gridvars.hpp.

#include <MOD_P3DReader.hpp>
#include <string>

#include "failure.hpp"
#include "paths.hpp"

namespace mod_gridvars {
namespace {

using p3dgrid::tool::ExitStatus;
using p3dgrid::tool::Failure;

// An allocation that fails is reported without a file; the announcement before it names one.
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
  // An array that exists already is used as it is; only missing memory stops the work.
  if (status == mod_p3dgrid::allocation_done || status == mod_p3dgrid::already_allocated) return;
  throw Failure(ExitStatus::unusable, file_at_work() + ": not enough memory for this file");
}

void dispfilereaderror() {
  throw p3dgrid::tool::Unreadable(mod_p3dgrid::p3dlastfailure().describe());
}

}  // namespace mod_gridvars
