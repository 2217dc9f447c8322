#include "format/tecplot.hpp"

#include "recordio/number_text.hpp"

namespace p3dgrid::tecplot {

std::string variables_line(const std::vector<std::string>& names, bool iblank) {
  std::string line = R"( VARIABLES = "X", "Y", "Z")";
  for (const std::string& name : names) line += ", \"" + name + '"';
  return line + (iblank ? R"(,"IBLANK")" : "");
}

std::string zone_line(std::int32_t zone, const BlockExtents& extents) {
  using mod_p3dgrid::recordio::column;
  constexpr std::size_t zone_digits = 6;
  constexpr std::size_t extent_digits = 4;
  return "ZONE T=\"ZONE-" + column(zone, zone_digits, '0') +
         "\" I=" + column(extents.i, extent_digits, '0') +
         " J=" + column(extents.j, extent_digits, '0') +
         " K=" + column(extents.k, extent_digits, '0');
}

}  // namespace p3dgrid::tecplot
