#include "plot/picture.hpp"

#include "plot/axes.hpp"
#include "plot/canvas.hpp"
#include "plot/page.hpp"
#include "plot/raster.hpp"

namespace p3dgrid::tool::plot {
namespace {

void draw_words(Canvas& canvas, const Page& page) {
  double y = page.margin;
  canvas.text(page.margin, y, page.title, page.title_font, {0, 1});
  y += 1.45 * page.title_font.size;
  for (const std::string& line : page.remarks) {
    canvas.text(page.margin, y, line, page.remark_font, {0, 1});
    y += page.line_distance;
  }
}

void draw_surfaces(Canvas& canvas, const Picture& picture, const Page& page) {
  const Area& area = page.area;
  Raster raster(area.width, area.height);
  render(picture.surfaces, page.projection, page.style, raster);
  const bool flat = picture.view.plane.has_value();
  if (!flat) draw_box_behind(canvas, page.projection, area, picture.box, page.text);
  canvas.image(area.x, area.y, area.width, area.height, raster.reduced());
  if (flat) {
    draw_flat_axes(canvas, page.projection, area, picture.box, page.text);
  } else {
    draw_box_axes(canvas, page.projection, area, picture.box, page.text);
  }
}

}  // namespace

void draw(const Picture& picture, const std::string& path) {
  const Page page = lay_out(picture);
  Canvas canvas(page.width, page.height);
  draw_words(canvas, page);
  draw_surfaces(canvas, picture, page);
  page.panel.draw(canvas, page.panel_x, page.area.y, page.panel_height, page.text);
  canvas.write(path);
}

}  // namespace p3dgrid::tool::plot
