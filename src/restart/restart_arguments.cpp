#include "restart/restart_arguments.hpp"

#include <numeric>
#include <optional>
#include <string>

#include "restart/body.hpp"
#include "state/host.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {

void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const LayoutTraits& layout, logical multiblock,
                      std::optional<integer> variable) {
  host::dispreadwrite(mode, layout.iparm1, layout.iparm2, filename, iformat, dblprec, variable,
                      std::nullopt, multiblock);
}

std::string restart_file(const FileName& filename) {
  return "restart file " + path_of(filename);
}

void refuse_restart(const FileName& filename, const std::string& reason) {
  fail_run(restart_file(filename) + ": " + reason);
}

void check_layout(const FileName& filename, const LayoutTraits& layout, integer rsttype) {
  if (layout.known) return;
  refuse_restart(filename, std::to_string(rsttype) + " is no restart layout");
}

void check_dimensions(const FileName& filename, const LayoutTraits& layout,
                      const p3dgrid::Coding& coding) {
  if (has_files_of(layout, coding)) return;
  refuse_restart(filename, "layouts other than 2 and 3 have no files of two dimensions");
}

std::int64_t sum(array_view<const integer, 1> blockpoints) {
  return std::accumulate(blockpoints.data(), blockpoints.data() + blockpoints.extent(1),
                         std::int64_t{0});
}

void check_variables(const FileName& filename, integer highest, std::int64_t rows) {
  if (highest <= rows) return;
  refuse_restart(filename, "the section table names variable " + std::to_string(highest) +
                               ", the flow array has " + std::to_string(rows));
}

void check_points(const FileName& filename, const char* name, std::int64_t points_held,
                  const PointNumbering& points) {
  if (points_held >= points.total) return;
  refuse_restart(filename, std::string(name) + " holds " + std::to_string(points_held) +
                               " points, " + std::to_string(points.total) + " are needed");
}

void check_triplets(const FileName& filename, const char* name, array_view<const float, 2> triplets,
                    const PointNumbering& points) {
  check_points(filename, name, triplets.extent(2), points);
  if (triplets.extent(1) >= triplet || points.total == 0) return;
  refuse_restart(filename, std::string(name) + " holds no three values per point");
}

void check_state_to_write(const FileName& filename, const LayoutTraits& layout, integer nblocks) {
  if (layout.counted_variables && nfvar.allocated() && nfvar.size() < nblocks) {
    refuse_restart(filename, "nfvar holds " + std::to_string(nfvar.size()) + " blocks, " +
                                 std::to_string(nblocks) + " are to be written");
  }
  if (layout.extensions && !extension_chain_ends()) {
    refuse_restart(filename, "iflag holds no flag 999 to end its chain");
  }
}

}  // namespace mod_p3dgrid
