/// The switches of a run, for hosts in Fortran.

#include "mod_p3dgrid/run.hpp"

#include <cstdio>
#include <string>

#include "fortran/host.hpp"
#include "fortran/names.hpp"
#include "mod_p3dgrid/version.hpp"

namespace mod_p3dgrid::fortran {
namespace {

/// The result of the host's procedure; 0 for a property that is not stated.
p3dgrid::StatedCoding coding_of_host(std::string_view name) {
  const std::string whole = whole_name(name);
  integer byte_order = 0;
  integer marker_bytes = 0;
  integer dimensions = 0;
  procedures.choose_coding(whole.data(), whole.size(), &byte_order, &marker_bytes, &dimensions);
  p3dgrid::StatedCoding coding;
  if (byte_order == 1) coding.byte_order = p3dgrid::ByteOrder::little;
  if (byte_order == 2) coding.byte_order = p3dgrid::ByteOrder::big;
  if (marker_bytes == 4) coding.marker_bytes = p3dgrid::MarkerBytes::four;
  if (marker_bytes == 8) coding.marker_bytes = p3dgrid::MarkerBytes::eight;
  if (dimensions == 2) coding.dimensions = p3dgrid::Dimensions::two;
  if (dimensions == 3) coding.dimensions = p3dgrid::Dimensions::three;
  return coding;
}

void end_run_of_host(const RunEnd& end) {
  procedures.end_run(end.status, end.message.data(), end.message.size());
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

void mod_p3dgrid_use_handlers(integer paths, integer coding, integer run_end) {
  set_host_finds_paths(paths != 0);
  p3dsetcoding(coding != 0 ? coding_of_host
                           : std::function<p3dgrid::StatedCoding(std::string_view)>());
  p3dsetrunend(run_end != 0 ? end_run_of_host : std::function<void(const RunEnd&)>());
}

void mod_p3dgrid_closeunit(integer unit) {
  p3dcloseunit(unit);
}

void mod_p3dgrid_sethugepages(integer wanted) {
  p3dsethugepages(wanted != 0);
}

void mod_p3dgrid_setwholerecords(integer wanted) {
  p3dsetwholerecords(wanted != 0);
}

void mod_p3dgrid_clearfailure() {
  p3dclearfailure();
}

void mod_p3dgrid_failure_place(std::int64_t* place) {
  const ReadFailure& failure = p3dlastfailure();
  place[0] = failure.unit;
  place[1] = failure.status;
  place[2] = failure.record;
  place[3] = failure.offset;
  place[4] = failure.line;
}

const char* mod_p3dgrid_failure_text(integer which, std::size_t* length) {
  static std::string text;
  const ReadFailure& failure = p3dlastfailure();
  text = which == 1   ? failure.file
         : which == 2 ? failure.found
         : which == 3 ? failure.expected
                      : failure.describe();
  *length = text.size();
  return text.data();
}

void mod_p3dgrid_print_failure() {
  std::fprintf(stderr, "mod_gridvars: %s\n", p3dlastfailure().describe().c_str());
}

const char* mod_p3dgrid_version(std::size_t* length) {
  const std::string_view version = p3dversion();
  *length = version.size();
  return version.data();
}

}  // extern "C"

#pragma GCC visibility pop

}  // namespace mod_p3dgrid::fortran
