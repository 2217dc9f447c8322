#include "format/mismatch_report.hpp"

#include "recordio/number_text.hpp"

namespace p3dgrid {
namespace {

std::string columns(const BlockExtents& extents) {
  using mod_p3dgrid::recordio::column;
  return column(extents.i, 6) + column(extents.j, 6) + column(extents.k, 6);
}

}  // namespace

std::vector<std::string> report_of_counts(std::int32_t grid, std::int32_t restart) {
  return {"", " Number of blocks in Grid do not match the Restart file",
          " Number of Grid blocks   : " + std::to_string(grid),
          " Number of Restart blocks: " + std::to_string(restart)};
}

std::vector<std::string> report_of_block(std::int32_t block, const BlockExtents& grid,
                                         const BlockExtents& restart) {
  return {
      "",
      " Indecies for block " + std::to_string(block) + " in grid and restart file do not match.",
      "               i     j     k  ", " Grid   : " + columns(grid),
      " Restart: " + columns(restart)};
}

std::vector<std::string> end_of_report() {
  return {"", "   --- CODE HALTED ---"};
}

}  // namespace p3dgrid
