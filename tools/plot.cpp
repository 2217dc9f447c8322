#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "commands.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "plot/canvas.hpp"
#include "plot/flow.hpp"
#include "plot/picture.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

constexpr const char* picture_suffix = ".png";
constexpr const char* output_name = "OUT.png";
constexpr const char* picture_group = "The picture";

struct PlotOptions {
  plot::Request request;
  std::string output;
  std::string restart_option;  ///< the first one given
};

// The picture must not replace a solution if the output was forgotten.
void require_valid(const PlotOptions& options) {
  if (!options.output.ends_with(picture_suffix)) {
    throw Failure(ExitStatus::unusable,
                  options.output + ": the picture's name, which comes last, must end in .png");
  }
  require_different_files(options.request.grid_path, options.output);
  if (options.request.shows_flow()) {
    return require_different_files(options.request.restart_path, options.output);
  }
  const std::string unused =
      !options.request.variable.empty() ? "--variable" : options.restart_option;
  if (!unused.empty()) {
    throw Failure(ExitStatus::unusable, unused +
                                            " is about a restart file, and none is given: "
                                            "p3dgrid plot GRID RESTART OUT.png");
  }
}

void plot_files(const PlotOptions& options) {
  static_cast<void>(plot::make_canvas(1, 1));  // fails before any file is read
  require_valid(options);
  // Reserved before reading, so that a folder without write permission is reported at once.
  OutputFile output(options.output);
  const plot::Picture picture = plot::compose(options.request);
  try {
    plot::draw(picture, output.temporary_path());
  } catch (const Failure& failure) {
    throw Failure(failure.status(), options.output + ": not written: " + failure.what());
  }
  output.commit();
  print_summary(options.output + ": " + picture.summary);
}

/// Shows the output as required in the usage line, although an optional file precedes it.
class PlotFormatter : public CLI::Formatter {
 public:
  std::string make_option_usage(const CLI::Option* option) const override {
    return option->get_name() == output_name ? output_name : Formatter::make_option_usage(option);
  }
};

/// The last of the given files is the output.
void assign_files(PlotOptions& options) {
  if (options.output.empty()) std::swap(options.output, options.request.restart_path);
  if (options.output.empty()) throw CLI::RequiredError(output_name);
}

CLI::Validator checked(const std::string& problem, bool (*is_valid)(const std::string&)) {
  const auto check = [problem, is_valid](const std::string& text) {
    return is_valid(text) ? std::string() : "'" + text + "' " + problem;
  };
  return {check, ""};
}

void add_place_options(CLI::App& line, PlotOptions& options) {
  line.add_option("--block", options.request.block, "Show this block alone, counted from 1")
      ->check(CLI::Range(1, std::numeric_limits<integer>::max()).description(""))
      ->type_name("B")
      ->group(picture_group);
  line.add_option_function<std::string>(
          "--plane", [&](const std::string& text) { options.request.plane = plot::plane_in(text); },
          "Show one grid plane of each block, such as k=1 or i=last; default the blocks' outer "
          "faces")
      ->check(checked("is no grid plane such as k=1, j=20 or i=last",
                      [](const std::string& text) { return plot::plane_in(text).has_value(); }))
      ->type_name("PLANE")
      ->group(picture_group);
  line.add_option("--view", options.request.view,
                  "Look from this azimuth (degrees from x toward y) and elevation; default "
                  "straight at what is flat, else -60 25")
      ->expected(2)
      ->check(CLI::Range(-360.0, 360.0).description(""))
      ->type_name("AZIMUTH ELEVATION")
      ->group(picture_group);
}

void add_picture_options(CLI::App& line, PlotOptions& options) {
  line.add_option("--variable", options.request.variable,
                  "What to show in colour: " + plot::known_names() +
                      " of a PLOT3D solution, or the number of a variable; default 1")
      ->check(checked("is neither " + plot::known_names() + " nor the number of a variable",
                      plot::may_be_variable))
      ->type_name("NAME|N")
      ->group(picture_group);
  add_gamma(line, options.request.gamma, "p and mach")->group(picture_group);
  add_place_options(line, options);
  line.add_option("--width", options.request.width, "Pixels, 600 to 4000; default 1600")
      ->check(CLI::Range(600, 4000).description(""))
      ->type_name("N")
      ->group(picture_group);
}

}  // namespace

Command add_plot(CLI::App& program) {
  CLI::App* line =
      program.add_subcommand("plot", "Draw mesh lines or a flow variable into a picture (PNG)");
  const auto options = std::make_shared<PlotOptions>();
  add_path(*line, "GRID", options->request.grid_path, "Grid file");
  add_path(*line, "RESTART", options->request.restart_path,
           "Restart file to show in colour; without it mesh lines are drawn")
      ->required(false);
  add_path(*line, output_name, options->output, "Picture to write; replaced whole or not at all")
      ->required(false);
  line->formatter(std::make_shared<PlotFormatter>());
  add_picture_options(*line, *options);
  add_grid_options(*line, options->request.grid);
  add_restart_options(*line, options->request.restart);
  line->footer(
      "Examples:\n"
      "  p3dgrid plot grid.p3d mesh.png --plane k=1\n"
      "  p3dgrid plot grid.p3d blocks.png\n"
      "  p3dgrid plot grid.p3d flow.q pressure.png --variable p --plane k=1\n"
      "  p3dgrid plot grid.p3d flow.q block-2.png --variable mach --block 2 --plane j=last");
  // The command line no longer exists when the command runs.
  line->callback([options, line] {
    options->restart_option = given_restart_option(*line);
    assign_files(*options);
  });
  return {line, [options] { plot_files(*options); }};
}

}  // namespace p3dgrid::tool
