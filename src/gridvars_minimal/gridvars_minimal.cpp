/// A minimal `mod_gridvars` for stand-alone programs: it announces nothing, reports failed reads
/// on standard error and goes on, and ends the run when an allocation fails. The section table
/// starts with one section of the five flow variables.

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "MOD_P3DReader.hpp"

namespace mod_gridvars {
namespace {

constexpr integer flow_variables = 5;
constexpr int status_error = 2;

}  // namespace

integer nfilesect = 1;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct = [] {
  mod_p3dgrid::fixed_array<integer, 30, 2> sections;
  sections(1, 1) = 1;
  sections(1, 2) = flow_variables;
  return sections;
}();
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar = [] {
  mod_p3dgrid::fixed_array<integer, 30> counts;
  counts(1) = flow_variables;
  return counts;
}();
logical readallvars = true;

void dispreadwrite(const integer&, const integer&, const integer&, const FileName&, const integer&,
                   const logical&, const std::optional<integer>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&) {}

void checkallocationerror(const integer& status) {
  if (status == mod_p3dgrid::allocation_done) return;
  std::fprintf(
      stderr, "mod_gridvars: %s\n",
      status == mod_p3dgrid::already_allocated ? "an array is allocated already" : "out of memory");
  std::exit(status_error);
}

void dispfilereaderror() {
  const mod_p3dgrid::ReadFailure& failure = mod_p3dgrid::p3dlastfailure();
  try {
    std::fprintf(stderr, "mod_gridvars: %s\n", failure.describe().c_str());
  } catch (const std::bad_alloc&) {
    std::fputs("mod_gridvars: cannot read ", stderr);
    for (const char c : failure.file) {
      std::fputc(std::iscntrl(static_cast<unsigned char>(c)) != 0 ? '?' : c, stderr);
    }
    std::fputc('\n', stderr);
  }
}

}  // namespace mod_gridvars
