/// Combines the temporary files of variables. An input holds them one after another, all of one
/// length; what is left over belongs to the last.

#include <algorithm>
#include <string>

#include "target.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;

const auto most_files = static_cast<int>(mod_p3dgrid::tmpfile.size());

std::string name_of(int variable) {
  return "v" + std::to_string(variable);
}

bool any_file_left(int count) {
  for (int m = 1; m <= count; ++m) {
    if (file_there(name_of(m))) return true;
  }
  return false;
}

}  // namespace

void place_files(const Options& options, Content content) {
  const std::size_t length = split_length(options, content);
  for (int m = 1; m <= most_files; ++m) {
    mod_p3dgrid::tmpfile(m) = name_of(m);
    remove_file(name_of(m));
    if (content.empty()) continue;
    const bool last = m == most_files || length == 0 || content.size() < 2 * length;
    const Content part = last ? content : content.first(length);
    put_file(name_of(m), part);
    content = content.subspan(part.size());
  }
}

void run_operation(const Options& options) {
  const Blocks blocks(options);
  allocatable<float, 2> leadvalues;
  const std::int64_t points = has(options, short_values) ? blocks.total - 1 : blocks.total;
  require(leadvalues.allocate(3, points) == 0, "memory suffices");
  std::ranges::fill(leadvalues.span(), 0.5F);
  const integer format = format_of(options.format);
  const Outcome outcome = attempt([&] {
    combinep3dvarfiles(leadvalues, "out", format, has(options, double_precision),
                       options.nparamrows, blocks.nblocks, blocks.idim, blocks.jdim, blocks.kdim,
                       layout_code(options), has(options, multiblock));
  });
  if (outcome == Outcome::run_ended) return;
  const auto& counts = mod_gridvars::numrstrtvar.span();
  int variables = 0;
  for (const integer count : counts) variables += count;
  require(!any_file_left(variables), "the temporary files are gone");
  if (outcome == Outcome::done) expect_all_closed();
}

}  // namespace fuzz
