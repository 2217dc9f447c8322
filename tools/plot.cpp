#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "plot/canvas.hpp"
#include "plot/flow.hpp"
#include "plot/picture.hpp"
#include "variable_names.hpp"

namespace p3dgrid::tool {
namespace {

struct PlotOptions {
  plot::Request request;
  std::string output;
};

void plot_files(const PlotOptions& options) {
  const plot::Request& request = options.request;
  static_cast<void>(plot::make_canvas(1, 1));  // fails before any file is read
  // Without OUT, the last argument may be the solution, which must not be overwritten.
  if (!options.output.ends_with(".png")) {
    throw Unusable(options.output + ": the picture's name, which comes last, must end in .png");
  }
  const std::string idle = !request.variable.empty() ? "--variable"
                           : !request.names.empty()  ? "--names"
                                                     : request.stated.restart_option;
  if (!request.shows_flow() && !idle.empty()) {
    throw Unusable(
        idle + " applies to a restart file, and none is given: p3dgrid plot GRID RESTART OUT.png");
  }
  if (request.shows_flow() && request.quality) {
    throw Unusable("--quality shows the grid alone, and a restart file is given");
  }
  OutputFile output(options.output, {request.grid_path, request.restart_path});
  const plot::Picture picture =
      with_failures(request.grid_path, [&] { return plot::compose(request); });
  output.write([&] { plot::draw(picture, output.temporary_path()); });
  output.commit();
  print_summary(options.output + ": " + picture.summary);
}

/// Parses the entries of a list; none if one of them is invalid.
template <class Value>
auto list_parser(std::optional<Value> (*parse)(const std::string&)) {
  return [parse](const std::string& text) -> std::optional<std::vector<Value>> {
    std::vector<Value> values;
    for (const std::string& entry : entries_in(text)) {
      const std::optional<Value> value = parse(entry);
      if (!value) return std::nullopt;
      values.push_back(*value);
    }
    return values;
  };
}

std::vector<Option> picture_options(plot::Request& request) {
  const auto take_quality = [&](const std::string& text) {
    using plot::CellQuality;
    request.quality =
        text == name_of(CellQuality::skewness) ? CellQuality::skewness : CellQuality::stretching;
  };
  const std::string names = plot::known_names();
  std::vector<Option> options = {
      {"--variable", &request.variable,
       "What to show in colour: " + names +
           " of a PLOT3D solution, a name that --names gives, or the number of a variable; default "
           "1",
       "NAME|N",
       [names](const std::string& text) {
         return text.empty() ? "'' is neither " + names + " nor the number of a variable" : "";
       }},
      names_option(request.names),
      gamma_option(request.gamma, "p and mach"),
      {"--block", &request.block, "Show this block alone, counted from 1", "B",
       in_range(1, std::numeric_limits<std::int32_t>::max())},
      parsed({"--plane",
              {},
              "Show grid planes of each block, such as k=1 or i=1,i=last; default the blocks' "
              "outer faces",
              "PLANE,..."},
             request.planes, list_parser(index_plane_in),
             "is no grid plane such as k=1, j=20 or i=last"),
      parsed({"--cut", {}, "Cut through the cells, such as x=0.5 or y=0,z=0", "PLANE,..."},
             request.cuts, list_parser(coordinate_plane_in), "is no plane such as x=0.5"),
      parsed({"--box", {}, "Show only the inside of a box", "X0:X1,Y0:Y1[,Z0:Z1]"}, request.region,
             plot::region_in, "is no box such as -1:2,0:0.5 or -1:2,0:0.5,0:1"),
      {.name = "--quality",
       .target = take_quality,
       .meaning = "Show the quality of the cells in colour",
       .choices = {name_of(plot::CellQuality::skewness), name_of(plot::CellQuality::stretching)}},
      {"--view", &request.view,
       "Look from this azimuth (degrees from x toward y) and elevation; default straight at what "
       "is flat, else -60 25",
       "AZIMUTH ELEVATION", in_range(-360.0, 360.0)},
      {"--width", &request.width, "Pixels, 600 to 4000; default 1600", "N", in_range(600, 4000)}};
  for (Option& option : options) option.group = "The picture";
  return options;
}

}  // namespace

Command plot_command() {
  const auto options = std::make_shared<PlotOptions>();
  plot::Request& request = options->request;
  Command command{
      .name = "plot",
      .meaning = "Draw mesh lines or a flow variable into a picture (PNG)",
      .footer =
          "Examples:\n"
          "  p3dgrid plot grid.p3d mesh.png --plane k=1\n"
          "  p3dgrid plot grid.p3d blocks.png\n"
          "  p3dgrid plot grid.p3d skewness.png --plane k=1 --quality skewness --box -1:1,0:1\n"
          "  p3dgrid plot grid.p3d flow.q cut.png --variable mach --cut x=0.5,z=0.25\n"
          "  p3dgrid plot grid.p3d flow.q pressure.png --variable p --plane k=1\n"
          "  p3dgrid plot grid.p3d flow.q block-2.png --variable mach --block 2 --plane j=last",
      .arguments = {{"GRID", &request.grid_path, "Grid file"},
                    {"RESTART", &request.restart_path,
                     "Restart file to show in colour; without it mesh lines are drawn",
                     Argument::Use::input, Argument::Presence::optional},
                    {"OUT.png", &options->output, "Picture to write; replaced whole or not at all",
                     Argument::Use::output, Argument::Presence::last}},
      .options = picture_options(request),
      .run = [options] { plot_files(*options); }};
  add_input_options(command, request.stated);
  return command;
}

}  // namespace p3dgrid::tool
