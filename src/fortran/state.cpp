/// Between the library and the module for hosts in Fortran: the module variables, the arguments of
/// the contract, the handlers of the host and the last failed read.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <tuple>

#include "MOD_P3DReader.hpp"
#include "fortran/host.hpp"
#include "fortran/names.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid::fortran {
namespace {

/// A module variable of the library, and where the module has its own.
struct SharedVariable {
  void* ours;
  std::size_t bytes;
  void* theirs = nullptr;
};

template <class T>
SharedVariable shared(T& variable) {
  return {&variable, sizeof(variable)};
}

/// In the order of `connect` in the module.
std::array shared_variables{shared(iflag),       shared(eqid),
                            shared(fileversion), shared(nstep),
                            shared(dtau),        shared(itimeint),
                            shared(isgsmodel),   shared(ibeta),
                            shared(talnvar),     shared(talalfa),
                            shared(talbeta),     shared(talgam),
                            shared(talpr),       shared(talprt),
                            shared(talre),       shared(tals1),
                            shared(talxm1),      shared(p3dxm1),
                            shared(p3dalfa),     shared(p3dre),
                            shared(p3dtau),      shared(mod_p3dgrid::tmpfile)};

template <class T, std::size_t Rank>
void take(allocatable<T, Rank>& array, const void* values, const std::int64_t* extents) {
  std::array<std::int64_t, Rank> shape;
  std::copy_n(extents, Rank, shape.begin());
  const bool fits = array.allocated() && array_view<T, Rank>(array).extents() == shape;
  if (values == nullptr || !fits) array.deallocate();
  if (values == nullptr) return;
  const auto allocate = [&](auto... extent) { return array.allocate(extent...); };
  if (!fits && std::apply(allocate, shape) != allocation_done) fail_run(out_of_memory_message);
  std::copy_n(static_cast<const T*>(values), array.size(), array.data());
}

template <class T, std::size_t Rank>
void* give(allocatable<T, Rank>& array, std::int64_t* extents) {
  for (std::size_t d = 1; d <= Rank; ++d) extents[d - 1] = array.extent(d);
  return array.data();
}

/// Calls `act` with the array of that number in the module.
template <class Act>
void with_array(integer number, Act act) {
  if (number == 1) return act(nfvar);
  if (number == 2) return act(sqvar);
  act(dqvar);
}

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

void mod_p3dgrid_connect(const Procedures* given, void* const* variables, integer count) {
  procedures = *given;
  if (count != static_cast<integer>(shared_variables.size())) {
    fail_run("the module mod_p3dgrid is from another version than the library");
  }
  for (std::size_t n = 0; n < shared_variables.size(); ++n) {
    shared_variables[n].theirs = variables[n];
  }
  p3dsetmessages([](std::string_view line) { procedures.print_line(line.data(), line.size()); });
}

void mod_p3dgrid_take_variables(integer debug) {
  debugprint = debug != 0;
  for (const SharedVariable& v : shared_variables) std::memcpy(v.ours, v.theirs, v.bytes);
}

void mod_p3dgrid_give_variables() {
  for (const SharedVariable& v : shared_variables) std::memcpy(v.theirs, v.ours, v.bytes);
}

void mod_p3dgrid_take_array(integer number, const void* values, const std::int64_t* extents) {
  with_array(number, [&](auto& array) { take(array, values, extents); });
}

void* mod_p3dgrid_give_array(integer number, std::int64_t* extents) {
  void* values = nullptr;
  with_array(number, [&](auto& array) { values = give(array, extents); });
  return values;
}

integer mod_p3dgrid_optional_integer(const std::optional<integer>* argument, integer* number) {
  if (argument->has_value()) *number = **argument;
  return argument->has_value() ? 1 : 0;
}

integer mod_p3dgrid_optional_logical(const std::optional<logical>* argument, integer* flag) {
  if (argument->has_value()) *flag = **argument ? 1 : 0;
  return argument->has_value() ? 1 : 0;
}

void mod_p3dgrid_use_handlers(integer paths, integer coding, integer run_end) {
  set_host_finds_paths(paths != 0);
  p3dsetcoding(coding != 0 ? coding_of_host
                           : std::function<p3dgrid::StatedCoding(std::string_view)>());
  p3dsetrunend(run_end != 0 ? end_run_of_host : std::function<void(const RunEnd&)>());
}

void mod_p3dgrid_set_path(void* path, const char* text, std::size_t length) {
  static_cast<std::string*>(path)->assign(text, length);
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

const char* mod_p3dgrid_version(std::size_t* length) {
  const std::string_view version = p3dversion();
  *length = version.size();
  return version.data();
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

}  // extern "C"

#pragma GCC visibility pop

}  // namespace mod_p3dgrid::fortran
