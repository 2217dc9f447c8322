#include "faults/operations.hpp"

#include <cstdint>
#include <cstring>
#include <filesystem>

#include "MOD_P3DReader.hpp"
#include "support/scratch_folder.hpp"

namespace faults {

std::vector<OperationGroup> reading_groups() {
  return {{"readp3dgrid", grid_reads},
          {"readp3dgridheader", grid_header_reads},
          {"readrestartheader", restart_header_reads},
          {"checkp3drstrtheader", restart_checks},
          {"readp3drestart", restart_reads},
          {"readnextp3dvar", variable_reads},
          {"combinep3dvarfiles", combinations}};
}

std::vector<OperationGroup> writing_groups() {
  return {{"writep3dgrid", grid_writes},
          {"writerestartheader", restart_header_writes},
          {"writep3drestart", restart_writes},
          {"writenextp3dvar", variable_writes},
          {"combinep3dvarfiles", combination_writes},
          {"writetecplotfile_p3d", tecplot_writes}};
}

std::vector<OperationGroup> all_groups() {
  std::vector<OperationGroup> all = reading_groups();
  all.pop_back();  // it writes too
  for (const OperationGroup& group : writing_groups()) all.push_back(group);
  return all;
}

bool same_flow(const std::string& result, const std::string& undamaged) {
  struct Extents {
    std::int64_t rows;
    std::int64_t points;
  };
  Extents read;
  Extents expected;
  std::memcpy(&read, result.data(), sizeof read);
  std::memcpy(&expected, undamaged.data(), sizeof expected);
  // A header that counts more variables makes room for them, and the sections leave it unset.
  if (read.rows < expected.rows || read.points > expected.points) return false;
  const auto at = [](const Extents& extents, std::int64_t point) {
    return sizeof(Extents) + static_cast<std::size_t>(point * extents.rows) * sizeof(float);
  };
  const auto point_bytes = static_cast<std::size_t>(expected.rows) * sizeof(float);
  for (std::int64_t point = 0; point < read.points; ++point) {
    if (result.compare(at(read, point), point_bytes, undamaged, at(expected, point), point_bytes) !=
        0) {
      return false;
    }
  }
  return true;
}

bool units_stay_open = false;

void close_for_host(int unit) {
  if (!units_stay_open) mod_p3dgrid::p3dcloseunit(unit);
}

void place_files(const Operation& operation) {
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    std::filesystem::remove(entry);
  }
  for (const auto& [name, content] : operation.files) test_support::write_file(name, content);
}

}  // namespace faults
