/// The test programs' own `mod_gridvars`: failed reads are counted, failed allocations are thrown.

#include "support/host_gridvars.hpp"

#include <new>

#include "MOD_P3DReader.hpp"

namespace {

int failures = 0;

}  // namespace

namespace interop {

int failed_reads() {
  return failures;
}

}  // namespace interop

namespace mod_gridvars {

integer nfilesect = 0;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer&, const integer&, const integer&, const FileName&, const integer&,
                   const logical&, const std::optional<integer>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&) {}

void checkallocationerror(const integer& status) {
  if (status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

void dispfilereaderror() {
  ++failures;
}

}  // namespace mod_gridvars
