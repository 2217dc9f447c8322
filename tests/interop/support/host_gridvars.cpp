/// The test programs' own `mod_gridvars`: failed reads are counted, failed allocations are thrown.

#include "support/host_gridvars.hpp"

#include <new>
#include <stdexcept>
#include <string_view>

#include "MOD_P3DReader.hpp"

namespace {

int failures = 0;
int tolerated = 0;

}  // namespace

namespace interop {

int failed_reads() {
  return failures;
}

void tolerate_repeated_allocations(int times) {
  tolerated = times;
}

int repeated_allocations_to_come() {
  return tolerated;
}

p3dgrid::MarkerBytes& marker_bytes() {
  static auto bytes = p3dgrid::MarkerBytes::four;
  return bytes;
}

void become_host_for(const std::string& path, bool planar) {
  using p3dgrid::Dimensions;
  mod_p3dgrid::p3dsetcoding([planar](std::string_view) {
    return p3dgrid::StatedCoding{.marker_bytes = marker_bytes(),
                                 .dimensions = planar ? Dimensions::two : Dimensions::three};
  });
  mod_p3dgrid::p3dsetpaths([path](std::string_view) { return path; });
  mod_p3dgrid::p3dsetmessages([](std::string_view) {});
  mod_p3dgrid::p3dsetrunend(
      [](const mod_p3dgrid::RunEnd& end) { throw std::runtime_error(end.message); });
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
  if (status == mod_p3dgrid::allocation_done) return;
  if (status != mod_p3dgrid::already_allocated || tolerated == 0) throw std::bad_alloc();
  --tolerated;
}

void dispfilereaderror() {
  ++failures;
}

}  // namespace mod_gridvars
