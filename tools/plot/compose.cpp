#include <algorithm>
#include <filesystem>
#include <locale>

#include "console.hpp"
#include "failure.hpp"
#include "gzip.hpp"
#include "input_files.hpp"
#include "plot/flow.hpp"
#include "plot/picture.hpp"
#include "plot/scale.hpp"
#include "table.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr double default_azimuth = -60;
constexpr double default_elevation = 25;

constexpr Usage usage = {.command_line = "p3dgrid plot GRID RESTART OUT.png",
                         .grid_alone = "'p3dgrid plot GRID OUT.png' draws it",
                         .restart_alone = "'p3dgrid plot GRID FILE OUT.png' draws it"};

/// The text that `coordinate_plane_in` parses.
std::string describe(const CoordinatePlane& cut) {
  return std::string(1, "xyz"[cut.axis]) + "=" + digits(cut.value);
}

/// A list such as "k=1,i=last".
template <class Planes>
std::string list_of(const Planes& planes) {
  std::string text;
  for (const auto& plane : planes) text += (text.empty() ? "" : ",") + describe(plane);
  return text;
}

[[noreturn]] void fail_without_surface(const Request& request) {
  std::string at = list_of(request.planes);
  if (!request.cuts.empty()) at += (at.empty() ? "" : ",") + list_of(request.cuts);
  if (!at.empty()) at.insert(0, " ");
  throw Unusable(request.grid_path + ": there is no surface" + at +
                 " to show; 'p3dgrid info' shows " +
                 (request.cuts.empty() ? "the extents" : "where the blocks are"));
}

/// The requested grid surfaces, without their points.
std::vector<Surface> surfaces_wanted(const Request& request, const Extents& extents) {
  const std::string& path = request.grid_path;
  if (request.block > extents.blocks()) {
    throw Unusable(path + ": holds " + counted(extents.blocks(), "block") +
                   "; there is no --block " + std::to_string(request.block));
  }
  std::vector<Surface> surfaces;
  std::int32_t without = 0;
  for (std::size_t block = 0; block < extents.i.size(); ++block) {
    if (request.block != 0 && request.block != static_cast<std::int32_t>(block + 1)) continue;
    const std::size_t before = surfaces.size();
    if (request.shows_faces()) {
      for (auto& face : faces_of(extents, block)) surfaces.push_back(std::move(face));
    }
    for (const IndexPlane& asked : request.planes) {
      if (auto plane = plane_of(extents, block, asked)) surfaces.push_back(std::move(*plane));
    }
    if (!request.planes.empty() && surfaces.size() == before) ++without;
  }
  if (surfaces.empty() && request.cuts.empty()) fail_without_surface(request);
  if (without > 0) {
    print_note(path + ": " + counted(without, "block") + " of " + std::to_string(extents.blocks()) +
               " without a surface " + list_of(request.planes));
  }
  return surfaces;
}

/// Adds the cuts through a block, and copies the points of its other surfaces.
void take_block(const Request& request, const Block& block, std::size_t number, Picture& picture) {
  for (Surface& surface : picture.surfaces) {
    if (surface.block == number) take_points(surface, block);
  }
  for (const CoordinatePlane& cut : request.cuts) {
    if (auto surface = cut_through(block, number, cut)) {
      picture.surfaces.push_back(std::move(*surface));
    }
  }
  for (Surface& surface : picture.surfaces) {
    if (surface.block != number) continue;
    if (request.region) confine(surface, *request.region);
    if (request.quality) take_quality(surface, block, *request.quality);
  }
}

/// Copies the surfaces from the grid, which is read block by block.
void take_surfaces(const Request& request, GridInput& input, Picture& picture) {
  const Extents& extents = input.extents();
  picture.surfaces = surfaces_wanted(request, extents);
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    if (request.block != 0 && static_cast<std::size_t>(request.block) != b + 1) continue;
    take_block(request, input.read(b), b, picture);
  }
  input.require_form();
  if (picture.surfaces.empty()) fail_without_surface(request);
  // In the legend, blocks are listed once.
  std::ranges::stable_sort(picture.surfaces, {}, &Surface::block);
  picture.remarks = {counted(extents.blocks(), "block") + ", " +
                     counted(extents.points(), "point")};
}

void orient(const Request& request, Picture& picture) {
  const auto box = box_of(picture.surfaces);
  if (!box || box->diagonal() == 0) {
    throw Mismatch(request.grid_path + (box ? ": all points to show are at one place"
                                            : ": all points to show are blanked, not finite or "
                                              "outside the box"));
  }
  picture.box = *box;
  picture.is_part = request.region.has_value();
  for (std::size_t c = 0; request.region && c < 3; ++c) {
    picture.box.low[c] = std::max(box->low[c], request.region->low[c]);
    picture.box.high[c] = std::min(box->high[c], request.region->high[c]);
  }
  const bool are_several = request.planes.size() + request.cuts.size() > 1;
  const auto flat = flat_view_of(picture.surfaces, picture.box, are_several);
  if (!request.view.empty()) {
    picture.view = view_from(request.view[0], request.view[1]);
  } else {
    picture.view = flat ? *flat : view_from(default_azimuth, default_elevation);
  }
  if (const auto c = picture.view.left_out) {
    picture.difference = std::string("drawn without ") + "xyz"[*c] + ", from " +
                         rounded(picture.box.low[*c], 3) + " to " +
                         rounded(picture.box.high[*c], 3);
  }
  enlarge_thin(picture.surfaces, picture.box);
}

/// The file name without its folder. Control characters and invalid UTF-8, which cannot be drawn,
/// are replaced.
std::string short_name(const std::string& path) {
  using Utf8 = std::codecvt<char32_t, char8_t, std::mbstate_t>;
  const auto& utf8 = std::use_facet<Utf8>(std::locale::classic());
  const std::string name = std::filesystem::path(original_path(path)).filename().string();
  const std::u8string bytes(name.begin(), name.end());
  std::string drawable;
  for (std::size_t at = 0, end = 0; at < name.size(); at = end) {
    std::mbstate_t state{};
    char32_t character = 0;
    char32_t* decoded = nullptr;
    const char8_t* next = nullptr;
    utf8.in(state, &bytes[at], bytes.data() + bytes.size(), next, &character, &character + 1,
            decoded);
    const bool valid = decoded != &character && character >= U' ' && character != U'\x7f' &&
                       (character < 0xd800 || character > 0xdfff);
    end = valid ? static_cast<std::size_t>(next - bytes.data()) : at + 1;
    drawable += valid ? name.substr(at, end - at) : "?";
  }
  return drawable;
}

/// ", plane k=1, block 2", or the parts that were requested.
std::string place_of(const Request& request) {
  std::string place;
  if (!request.planes.empty()) place += ", plane " + list_of(request.planes);
  if (!request.cuts.empty()) place += ", cut " + list_of(request.cuts);
  if (request.block != 0) place += ", block " + std::to_string(request.block);
  return place;
}

/// The range of values with few digits, or with as many as distinguish the two ends.
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

void add_flow(const Request& request, RestartInput& input, Picture& picture) {
  const FlowVariable variable = take_values(picture.surfaces, request, input);
  picture.levels = levels_of(picture.surfaces);
  if (!picture.levels) {
    throw Mismatch(request.restart_path + ": " + variable.name +
                   " is infinite or no number at all points to show");
  }
  const std::string range = range_of(*picture.levels);
  const bool all_finite = picture.levels->all_finite;
  picture.title = variable.title + place_of(request);
  picture.bar_label = variable.label;
  picture.remarks = {short_name(request.restart_path) + " on " + short_name(request.grid_path),
                     with_minus_sign(range)};
  if (variable.by_gamma) picture.remarks.push_back("\u03b3 = " + digits(request.gamma));
  if (!all_finite) picture.remarks.emplace_back("grey: infinite or no number");
  picture.summary = variable.name + place_of(request) + ", " + range +
                    (all_finite ? "" : ", infinite or no number in places");
}

void add_quality(const Request& request, Picture& picture) {
  const std::string name = name_of(*request.quality);
  picture.levels = levels_of(picture.surfaces);
  if (!picture.levels) {
    throw Mismatch(request.grid_path + ": no cell to show has a finite " + name);
  }
  const std::string range = range_of(*picture.levels);
  picture.title = "Grid " + short_name(request.grid_path) + ", " + name + place_of(request);
  picture.bar_label = name;
  picture.remarks.push_back(range);
  picture.summary = name + place_of(request) + ", " + range;
  if (picture.levels->all_finite) return;
  picture.remarks.emplace_back("grey: cells with an edge of length 0");
  picture.summary += ", cells with an edge of length 0 in grey";
}

/// "y and z enlarged 500 times"; empty if nothing is enlarged.
std::string enlargement_of(const Box& box) {
  std::string names;
  double times = 1;
  for (std::size_t c = 0; c < 3; ++c) {
    if (box.enlarged[c] == 1 || box.high[c] == box.low[c]) continue;
    names += std::string(names.empty() ? "" : " and ") + "xyz"[c];
    times = box.enlarged[c];
  }
  constexpr int round_factor_digits = 6;
  return names.empty() ? "" : names + " enlarged " + rounded(times, round_factor_digits) + " times";
}

/// Adds where the picture differs from the files.
void add_differences(Picture& picture) {
  const auto add = [&](const std::string& difference) {
    picture.remarks.push_back(difference);
    picture.summary += ", " + difference;
  };
  if (!picture.difference.empty()) add(picture.difference);
  const std::string enlargement = enlargement_of(picture.box);
  if (!enlargement.empty()) add(enlargement);
  if (std::ranges::any_of(picture.surfaces, &Surface::has_invalid_points)) {
    add("cells left out where a point is infinite or no number");
  }
}

}  // namespace

Picture compose(const Request& request) {
  const CaseInput input(request.grid_path, request.restart_path, request.stated, usage);
  Picture picture;
  picture.width = request.width;
  picture.title = "Grid " + short_name(request.grid_path) + place_of(request);
  picture.summary = "mesh" + place_of(request);
  take_surfaces(request, input.grid(), picture);
  orient(request, picture);
  if (request.shows_flow()) add_flow(request, input.restart(), picture);
  if (request.quality) add_quality(request, picture);
  add_differences(picture);
  return picture;
}

}  // namespace p3dgrid::tool::plot
