#include <MOD_P3DReader.hpp>
#include <algorithm>
#include <array>

#include "failure.hpp"
#include "restart_steps.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

/// Calls `take` for the variables that the extensions of layout 101 bring.
template <class Take>
void for_each_extension(const std::array<integer, 3>& flags, Take take) {
  for (std::size_t m = 0; m < flags.size() && flags[m] != end_of_extensions; ++m) {
    const Extension* const extension = extension_of(flags[m], static_cast<integer>(m + 1));
    if (extension != nullptr) take(extension->variables);
  }
}

bool extends(const std::array<integer, 3>& flags) {
  bool any = false;
  for_each_extension(flags, [&](const Section&) { any = true; });
  return any;
}

}  // namespace

void clear_variables(Restart& restart, integer first, integer last) {
  for (std::int64_t p = 1; p <= restart.flow.extent(2); ++p) {
    for (integer v = first; v <= last; ++v) restart.flow(v, p) = 0;
  }
}

// Variables that the chain of flags leaves out have no value in the file, and none in memory
// either.
void take_extensions(const std::string& path, Restart& restart) {
  std::copy_n(mod_p3dgrid::iflag.data(), restart.flags.size(), restart.flags.begin());
  integer held = restart.variables();
  for_each_extension(restart.flags, [&](const Section& extension) {
    if (restart.sections.size() > 1) {
      throw Unreadable(path + ": holds variable extensions besides the sections " +
                       describe(restart.sections) +
                       "; --sections 1-5 reads it, if those are not there");
    }
    if (extension.first > held + 1) restart.missing.push_back({held + 1, extension.first - 1});
    held = std::max(held, extension.last);
  });
  for (const Section& gap : restart.missing) clear_variables(restart, gap.first, gap.last);
  if (held > restart.variables()) restart.sections.push_back({solution_variables + 1, held});
}

Sections sections_in_blocks(const Restart& restart, Layout layout) {
  if (layout != Layout::single_block || !extends(restart.flags)) return restart.sections;
  return {restart.sections.front()};
}

}  // namespace p3dgrid::tool
