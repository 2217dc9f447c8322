#include <string>

#include "MOD_P3DReader.hpp"
#include "format/tecplot.hpp"
#include "p3dgrid/tecplot.hpp"
#include "state/messages.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

namespace mod_p3dgrid {
namespace {

namespace tecplot = p3dgrid::tecplot;
using recordio::OutputFile;
using recordio::WriteList;

constexpr integer formatted = 1;
constexpr const char* kind = "Tecplot file ";

/// All rows of an array at the points of a block.
template <class T>
auto columns(array_view<const T, 2> array, const PointNumbering& points, integer block) {
  const std::int64_t rows = array.extent(1);
  return recordio::lines(array.data() + points.before(block) * rows, rows, rows,
                         points.npts(block));
}

}  // namespace

void writetecplotfile_p3d(const FileName& filename, integer nblocks,
                          array_view<const double, 2> xyz, array_view<const double, 2> qvar,
                          array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                          array_view<const integer, 1> kdim, array_view<const integer, 1> iblank,
                          logical useiblank) try {
  message("Writing to Tecplot file ", left_adjusted(filename), "...");
  const ExtentViews extents{idim, jdim, kdim};
  const PointNumbering points = checked_numbering(kind + path_of(filename), nblocks, extents);
  check_points(kind, filename, "xyz", xyz.extent(2), points);
  check_points(kind, filename, "qvar", qvar.extent(2), points);
  if (useiblank) check_points(kind, filename, "iblank", iblank.extent(1), points);

  const Unit unit(unit_number::tecplot, formatted);
  unit.open(filename, OpenStatus::unknown);
  constexpr auto& names = p3dgrid::TecplotWriter::flow_names;
  unit.write_text([&](OutputFile& file) {
    write_line(file,
               tecplot::variables_line({names.begin(), names.end()}, static_cast<bool>(useiblank)));
  });
  for (integer b = 1; b <= nblocks; ++b) {
    WriteList list{columns(xyz, points, b), columns(qvar, points, b)};
    if (useiblank) {
      list.push_back(recordio::values(iblank.data() + points.before(b), points.npts(b)));
    }
    unit.write_text([&](OutputFile& file) {
      write_line(file, tecplot::zone_line(b, extents.of(b)));
      write_points(file, list, points.npts(b));
    });
  }
} catch (...) {
  end_operation("write Tecplot file", filename);
}

}  // namespace mod_p3dgrid
