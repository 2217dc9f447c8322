#include "host.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "scratch.hpp"
#include "state/unit.hpp"
#include "support/module_state.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;

/// Thrown where the module ends the run.
struct RunEnded {
  RunEnd end;
};
/// Thrown where the host ends it.
struct HostEnded {};

constexpr std::endian other_order =
    std::endian::native == std::endian::little ? std::endian::big : std::endian::little;

bool returns_from_failed_allocation = false;
bool throws_at_read_error = false;
bool opens_files = true;
int read_errors = 0;
std::size_t message_lines = 0;
Tally so_far;

/// The lowest free descriptor: it changes when a file stays open.
int free_descriptor() {
  const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(descriptor);
  return descriptor;
}

/// Where standard output goes, so that nothing written to it escapes notice.
int standard_output() {
  static const int target = [] {
    const int memory = ::memfd_create("stdout", MFD_CLOEXEC);
    require(memory >= 0 && ::dup2(memory, STDOUT_FILENO) >= 0, "standard output is redirected");
    return memory;
  }();
  return target;
}

bool is_one_line(const std::string& text) {
  return !text.empty() && text.find('\n') == text.npos;
}

void check_end(const RunEnd& end) {
  if (end.status == 0) {
    require(end.message.empty() && message_lines > 0, "a halt has said why");
    return;
  }
  require(end.status == 2, "a run ends with 0 or 2");
  require(is_one_line(end.message), "a fatal error is one line");
}

void check_failure(const ReadFailure& failure) {
  require(failure.status != 0, "a failed read has a status");
  require(!failure.found.empty() && !failure.expected.empty(), "a failed read says what was found");
  // With an unknown format no file is open, but arrays may be missing all the same.
  require(failure.file.starts_with(scratch_folder()) || (!opens_files && failure.unit > 0),
          "a failed read names the file");
  require(failure.offset >= 0 && failure.record >= 0 && failure.line >= 0, "a place is counted");
  const std::string text = failure.describe();
  require(is_one_line(text), "a failed read is described in a line");
  const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
  require(std::ranges::all_of(text, printable), "a description is printable");
}

void close_units() {
  const auto close = [](integer unit) {
    try {
      p3dcloseunit(unit);
    } catch (const RunEnded& ended) {
      check_end(ended.end);
    }
  };
  for (const integer unit : {unit_number::grid, unit_number::grid_header, unit_number::spare,
                             unit_number::restart_read, unit_number::restart_write}) {
    close(unit);
  }
  for (integer m = 1; m <= mod_p3dgrid::tmpfile.size(); ++m) close(unit_number::temporary(m));
}

template <class Real>
void allocate_before(allocatable<Real, 2>& parameters, int rows) {
  if (rows == 0) return;
  require(parameters.allocate(rows, rows == 3 ? 2 : 4) == allocation_done, "memory suffices");
  std::ranges::fill(parameters.span(), Real{0.5});
}

void set_module(const Options& options) {
  p3dsetdebug(!has(options, quiet));
  for (int m = 1; m <= iflag.size(); ++m) iflag(m) = flag_of(options, m);
  allocate_before(sqvar, options.allocated % 4);
  allocate_before(dqvar, options.allocated / 4 % 4);
  if (const int entries = options.allocated / 16 % 4; entries > 0) {
    require(nfvar.allocate(entries) == allocation_done, "memory suffices");
    std::ranges::fill(nfvar.span(), options.nfvar);
  }
  mod_gridvars::readallvars = !has(options, header_only);
  mod_gridvars::nfilesect = sections_in_use(options);
  mod_gridvars::rstrtvarsct.fill(0);
  mod_gridvars::numrstrtvar.fill(0);
  for (int k = 1; k <= 3; ++k) {
    mod_gridvars::rstrtvarsct(k, 1) = options.sections[k - 1][0];
    mod_gridvars::rstrtvarsct(k, 2) = options.sections[k - 1][1];
    mod_gridvars::numrstrtvar(k) = options.numrstrtvar[k - 1];
  }
}

/// The descriptor that is free while no file is open.
int descriptor_at_rest = -1;

}  // namespace

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "It does not hold that %s.\n", what);
  std::abort();
}

void begin_run(const Options& options) {
  standard_output();
  descriptor_at_rest = free_descriptor();
  returns_from_failed_allocation = has(options, returns_from_status);
  throws_at_read_error = has(options, ends_at_read_error);
  opens_files = is_format(options.format);
  p3dsetrunend([](const RunEnd& end) { throw RunEnded{end}; });
  p3dsetpaths([](std::string_view name) { return scratch_path(name); });
  p3dgrid::StatedCoding coding{.byte_order = has(options, other_byte_order) ? other_order
                                                                            : std::endian::native};
  if (has_rare_traits(options.format)) {
    coding.marker_bytes = p3dgrid::MarkerBytes::eight;
    coding.dimensions = p3dgrid::Dimensions::two;
  }
  p3dsetcoding([coding](std::string_view) { return coding; });
  p3dsetmessages([](std::string_view line) {
    ++message_lines;
    require(line.empty() || line.front() == ' ', "a message begins with a blank");
    require(line.find('\n') == line.npos, "a message is one line");
  });
  set_module(options);
}

const Tally& tally() {
  return so_far;
}

Outcome attempt(const std::function<void()>& call) {
  read_errors = 0;
  message_lines = 0;
  p3dclearfailure();
  try {
    call();
  } catch (const RunEnded& ended) {
    check_end(ended.end);
    ++so_far.run_ends;
    return Outcome::run_ended;
  } catch (const HostEnded&) {
    ++so_far.run_ends;
    return Outcome::run_ended;
  }
  if (read_errors == 0) {
    ++so_far.done;
    return Outcome::done;
  }
  ++so_far.failed_reads;
  return Outcome::failed_read;
}

void expect_all_closed() {
  require(free_descriptor() == descriptor_at_rest, "a call closes the files it opens");
}

void end_run() {
  close_units();
  test_support::reset_module_state();
  expect_all_closed();
  std::fflush(stdout);
  struct stat status;
  require(::fstat(standard_output(), &status) == 0 && status.st_size == 0,
          "messages go to their sink alone");
}

}  // namespace fuzz

namespace mod_gridvars {

integer nfilesect = 1;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer& mode, const integer&, const integer&, const FileName&,
                   const integer&, const logical&, const std::optional<integer>&,
                   const std::optional<logical>&, const std::optional<logical>&,
                   const std::optional<logical>&, const std::optional<logical>&) {
  fuzz::require(mode == 1 || mode == 2, "a file is announced for reading or writing");
}

void checkallocationerror(const integer& status) {
  fuzz::require(status >= 0 && status <= mod_p3dgrid::out_of_memory, "a status is a known one");
  if (status == 0 || fuzz::returns_from_failed_allocation) return;
  throw fuzz::HostEnded{};
}

void dispfilereaderror() {
  fuzz::require(++fuzz::read_errors == 1, "a failed read is told once");
  fuzz::check_failure(mod_p3dgrid::p3dlastfailure());
  if (fuzz::throws_at_read_error) throw fuzz::HostEnded{};
}

}  // namespace mod_gridvars
