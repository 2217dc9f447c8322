#include "plot/compose.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "console.hpp"
#include "failure.hpp"
#include "grid_file.hpp"
#include "input_files.hpp"
#include "plot/flow_values.hpp"
#include "plot/levels.hpp"
#include "plot/ticks.hpp"
#include "plot/words.hpp"
#include "table.hpp"

namespace p3dgrid::tool::plot {
namespace {

using mod_p3dgrid::integer;

constexpr double default_azimuth = -60;
constexpr double default_elevation = 25;

constexpr Usage usage = {.command_line = "p3dgrid plot GRID RESTART OUT.png",
                         .grid_alone = "'p3dgrid plot GRID OUT.png' draws it"};

void require_block(const Request& request, const Extents& extents) {
  if (request.block <= extents.blocks()) return;
  throw Failure(ExitStatus::unusable, request.grid_path + ": holds " +
                                          counted(extents.blocks(), "block") +
                                          "; there is no --block " + std::to_string(request.block));
}

std::vector<Surface> surfaces_wanted(const Request& request, const Extents& extents) {
  std::vector<Surface> surfaces;
  integer without = 0;
  for (std::size_t block = 0; block < extents.i.size(); ++block) {
    if (request.block != 0 && request.block != static_cast<integer>(block + 1)) continue;
    if (!request.plane) {
      for (auto& face : faces_of(extents, block)) surfaces.push_back(std::move(face));
    } else if (auto plane = plane_of(extents, block, *request.plane)) {
      surfaces.push_back(std::move(*plane));
    } else {
      ++without;
    }
  }
  const std::string at = request.plane ? " " + describe(*request.plane) : "";
  if (surfaces.empty()) {
    throw Failure(ExitStatus::unusable, request.grid_path + ": there is no surface" + at +
                                            " to show; 'p3dgrid info' shows the extents");
  }
  if (without > 0) {
    print_note(request.grid_path + ": " + counted(without, "block") + " of " +
               std::to_string(extents.blocks()) + " without a surface" + at);
  }
  return surfaces;
}

/// What the files are; a solution that is none of the grid is refused.
Case find_files(const Request& request) {
  const std::string& grid = request.grid_path;
  if (!request.shows_flow()) {
    return {find_grid(grid, request.grid, "'" + usage.pair("GRID", grid) + "' draws it")};
  }
  return find_case(grid, request.grid, request.restart_path, request.restart, usage);
}

/// Takes from the grid what is shown of it; the grid itself is not kept.
void take_surfaces(const Request& request, const Found& found, Picture& picture) {
  const Grid grid = read_grid(request.grid_path, found);
  const Extents extents = extents_of(grid);
  require_block(request, extents);
  picture.surfaces = surfaces_wanted(request, extents);
  for (Surface& surface : picture.surfaces) take_points(surface, grid);
  if (request.shows_flow()) return;
  picture.remarks.push_back(counted(extents.blocks(), "block") + ", " +
                            counted(extents.points(), "point"));
}

/// Says of what is shown that it is not all there is.
void add_remark(Picture& picture, const std::string& remark) {
  picture.remarks.push_back(remark);
  picture.summary += ", " + remark;
}

FlowVariable read_values(const Request& request, const Case& found,
                         std::vector<Surface>& surfaces) {
  const std::optional<Extents> extents = found.extents;
  const std::string first = "1";
  return take_values(surfaces,
                     {request.restart_path, found.restart, extents,
                      request.variable.empty() ? first : request.variable, request.gamma});
}

/// The file's own name, as far as it can be drawn.
std::string short_name(const std::string& path) {
  return drawable(std::filesystem::path(path).filename().string());
}

/// ", plane k=1, block 2", or less.
std::string place_of(const Request& request) {
  std::string place;
  if (request.plane) place += ", plane " + describe(*request.plane);
  if (request.block != 0) place += ", block " + std::to_string(request.block);
  return place;
}

std::string rounded(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

/// As many digits as one reads off a picture, or as tell the two ends apart.
std::string range_of(const Levels& levels) {
  constexpr int usual_digits = 5;
  constexpr int single_precision_digits = 9;
  if (levels.colours.size() == 1) return rounded(levels.smallest, usual_digits) + " everywhere";
  int digits = usual_digits;
  while (rounded(levels.smallest, digits) == rounded(levels.largest, digits) &&
         digits < single_precision_digits) {
    ++digits;
  }
  return "from " + rounded(levels.smallest, digits) + " to " + rounded(levels.largest, digits);
}

void describe_values(const Request& request, const FlowVariable& variable, Picture& picture) {
  const auto levels = levels_of(picture.surfaces);
  if (!levels) {
    throw Failure(ExitStatus::mismatch, request.restart_path + ": " + variable.name +
                                            " is infinite or no number at all points to show");
  }
  const bool lacking = lacks_values(picture.surfaces);
  picture.remarks.push_back(with_minus_sign(range_of(*levels)));
  if (variable.by_gamma) picture.remarks.push_back("\u03b3 = " + digits(request.gamma));
  if (lacking) picture.remarks.emplace_back("grey: infinite or no number");
  picture.summary = variable.name + place_of(request) + ", " + range_of(*levels) +
                    (lacking ? ", infinite or no number in places" : "");
}

/// "y and z enlarged 500 times"; empty where proportions are true.
std::string enlargement_of(const Box& box) {
  std::string names;
  double times = 1;
  for (std::size_t c = 0; c < 3; ++c) {
    const double extent = box.high[c] - box.low[c];
    if (box.enlarged[c] == 1 || extent == 0) continue;
    names += std::string(names.empty() ? "" : " and ") + "xyz"[c];
    times = box.enlarged[c];
  }
  constexpr int plenty = 6;  // the factor is round
  return names.empty() ? "" : names + " enlarged " + rounded(times, plenty) + " times";
}

void describe_surfaces(Picture& picture) {
  const std::string enlargement = enlargement_of(picture.box);
  if (!enlargement.empty()) add_remark(picture, enlargement);
  if (std::ranges::any_of(picture.surfaces, &Surface::has_lost)) {
    add_remark(picture, "cells left out where a point is infinite or no number");
  }
}

Box box_to_show(const Request& request, const std::vector<Surface>& surfaces) {
  const auto box = box_of(surfaces);
  if (box && box->diagonal() > 0) return *box;
  throw Failure(ExitStatus::mismatch,
                request.grid_path + (box ? ": all points to show are at one place"
                                         : ": all points to show are blanked or not finite"));
}

View view_of(const Request& request, const Picture& picture) {
  if (!request.view.empty()) return view_from(request.view[0], request.view[1]);
  const auto flat = flat_view_of(picture.surfaces, picture.box);
  return flat ? *flat : view_from(default_azimuth, default_elevation);
}

}  // namespace

Picture compose(const Request& request) {
  Picture picture;
  picture.width = request.width;
  const Case found = find_files(request);
  take_surfaces(request, found.grid, picture);
  picture.box = box_to_show(request, picture.surfaces);
  picture.view = view_of(request, picture);
  enlarge_thin(picture.surfaces, picture.box);
  if (!request.shows_flow()) {
    picture.title = "Grid " + short_name(request.grid_path) + place_of(request);
    picture.summary = "mesh" + place_of(request);
    describe_surfaces(picture);
    return picture;
  }
  const FlowVariable variable = read_values(request, found, picture.surfaces);
  picture.title = variable.title + place_of(request);
  picture.bar_label = variable.label;
  picture.remarks.push_back(short_name(request.restart_path) + " on " +
                            short_name(request.grid_path));
  describe_values(request, variable, picture);
  describe_surfaces(picture);
  return picture;
}

}  // namespace p3dgrid::tool::plot
