#include "restart_report.hpp"

#include <algorithm>

#include "console.hpp"

namespace p3dgrid::tool {
namespace {

bool counts_differ(const RestartHeader& header) {
  return std::ranges::adjacent_find(header.functions, std::ranges::not_equal_to()) !=
         header.functions.end();
}

}  // namespace

RestartReport report_on_restart(const std::string& path, const Found& found) {
  RestartReport report{.found = found, .header = header_with_advice(path, found.restart())};
  if (counts_differ(report.header)) {
    print_note(path +
               ": its values are not shown; only files with as many functions in every "
               "block can be read whole");
  } else if (found.reading.extents != nullptr) {
    report.body = read_restart(path, found, std::nullopt);
  }
  return report;
}

RestartReport report_on_restart(const std::string& path, const Case& found) {
  return {.found = found.restart,
          .header = header_with_advice(path, found.restart.restart()),
          .body = read_restart_of_grid(path, found)};
}

}  // namespace p3dgrid::tool
