#include "options.hpp"

#include <string>
#include <vector>

namespace p3dgrid {
namespace {

const std::vector<Encoding> encodings = {Encoding::unformatted, Encoding::formatted,
                                         Encoding::binary};
const std::vector<Precision> precisions = {Precision::single_precision,
                                           Precision::double_precision};
const std::vector<bool> yes_or_no = {true, false};
const std::vector<Layout> layouts = {Layout::talven,   Layout::time_step, Layout::solution,
                                     Layout::function, Layout::triplets,  Layout::single_block,
                                     Layout::bare};

const std::string grid_group = "The grid file read";
const std::string restart_group = "The restart file read";
const std::string target_group = "The file written; default as the file read";
const std::string values_group = "Header values of the file written; default as read, or 0";

/// An option that takes one of a few words. `Target` is the choice itself, or an optional of it.
template <class Target, class Choice>
CLI::Option* add_choice(CLI::App& command, const std::string& name, Target& target,
                        const std::vector<Choice>& choices, const std::string& description) {
  std::vector<std::string> words;
  std::string usage;
  for (const Choice choice : choices) {
    words.emplace_back(name_of(choice));
    usage.append(usage.empty() ? "" : "|").append(words.back());
  }
  const auto take = [&target, choices](const std::string& word) {
    for (const Choice choice : choices) {
      if (word == name_of(choice)) target = choice;
    }
  };
  return command.add_option_function<std::string>(name, take, description)
      ->check(CLI::IsMember(words).description(""))
      ->type_name(usage);
}

CLI::Validator not_empty() {
  const auto complaint = [](const std::string& text) {
    return text.empty() ? std::string("the name is empty") : std::string();
  };
  return {complaint, ""};
}

void add_sections(CLI::App& command, std::optional<Sections>& sections) {
  const auto readable = [](const std::string& text) {
    return sections_in(text) ? std::string()
                             : "'" + text +
                                   "' is no list of sections such as 1-5,6-7, with each variable "
                                   "from 1 on in one of at most 30";
  };
  const auto take = [&sections](const std::string& text) { sections = sections_in(text); };
  command
      .add_option_function<std::string>(
          "--sections", take,
          "variables that each record of a block holds; default 1-5, for layout 3 all functions")
      ->check(CLI::Validator(readable, ""))
      ->type_name("FIRST-LAST,...")
      ->group(restart_group);
}

std::string given_option(const CLI::App& command, const std::string& group) {
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_group() == group && option->count() > 0) return option->get_name();
  }
  return "";
}

}  // namespace

CLI::Option* add_path(CLI::App& command, const std::string& name, std::string& path,
                      const std::string& description) {
  return command.add_option(name, path, description)->required()->check(not_empty())->type_name("");
}

void add_grid_options(CLI::App& command, GridForm& form) {
  add_choice(command, "--grid-format", form.encoding, encodings,
             "records with length markers (default), text, or plain bytes")
      ->group(grid_group);
  add_choice(command, "--grid-precision", form.precision, precisions,
             "size of the coordinates, ignored for text; default single")
      ->group(grid_group);
  add_choice(command, "--grid-multiblock", form.multiblock, yes_or_no,
             "the file begins with its number of blocks; default yes")
      ->group(grid_group);
  add_choice(command, "--grid-iblank", form.iblank, yes_or_no,
             "each block ends with its blanking values; default no")
      ->group(grid_group);
}

void add_target_options(CLI::App& command, GridFormChange& change) {
  add_choice(command, "--to-format", change.encoding, encodings,
             "records with length markers, text, or plain bytes")
      ->group(target_group);
  add_choice(command, "--to-precision", change.precision, precisions, "size of the coordinates")
      ->group(target_group);
  add_choice(command, "--to-multiblock", change.multiblock, yes_or_no,
             "begin with the number of blocks; it can be left out for one block")
      ->group(target_group);
  add_choice(command, "--to-iblank", change.iblank, yes_or_no,
             "write blanking values: those read, or else 1 everywhere")
      ->group(target_group);
}

void add_restart_options(CLI::App& command, RestartForm& form) {
  add_choice(command, "--layout", form.layout, layouts,
             "restart layout: 2 PLOT3D solution (default), 3 PLOT3D function, 0 TALVEN, 1 and 100 "
             "to 102 time-step layouts")
      ->group(restart_group);
  add_choice(command, "--restart-format", form.encoding, encodings,
             "records with length markers (default), text, or plain bytes")
      ->group(restart_group);
  add_choice(command, "--restart-precision", form.precision, precisions,
             "size of the reals, ignored for text; default single")
      ->group(restart_group);
  add_choice(command, "--restart-multiblock", form.multiblock, yes_or_no,
             "layouts 2 and 3: the file begins with its number of blocks; default yes")
      ->group(restart_group);
  add_sections(command, form.sections);
}

void add_restart_target_options(CLI::App& command, RestartFormChange& change,
                                HeaderValues& values) {
  add_choice(command, "--to-layout", change.layout, layouts, "restart layout; not 0")
      ->group(target_group);
  add_choice(command, "--to-format", change.encoding, encodings,
             "records with length markers, text, or plain bytes")
      ->group(target_group);
  add_choice(command, "--to-precision", change.precision, precisions, "size of the reals")
      ->group(target_group);
  add_choice(command, "--to-multiblock", change.multiblock, yes_or_no,
             "layouts 2 and 3: begin with the number of blocks; it can be left out for one block")
      ->group(target_group);
  const auto add_value = [&](const char* name, auto& value, const char* description) {
    command.add_option(name, value, description)->group(values_group);
  };
  add_value("--mach", values.mach, "layout 2: free-stream Mach number");
  add_value("--alpha", values.alpha, "layout 2: angle of attack");
  add_value("--reynolds", values.reynolds, "layout 2: Reynolds number");
  add_value("--time", values.time, "layout 2: time");
  add_value("--step", values.step, "layouts 1, 100 and 101: number of time steps done");
  add_value("--step-size", values.step_size, "layouts 1, 100 and 101: time-step size");
}

void add_grid_of_restart(CLI::App& command, std::string& path) {
  command.add_option("--grid", path, "the grid that a restart file belongs to; they must agree")
      ->check(not_empty())
      ->type_name("GRID")
      ->group(restart_group);
}

std::string given_grid_option(const CLI::App& command) {
  return given_option(command, grid_group);
}

std::string given_restart_option(const CLI::App& command) {
  return given_option(command, restart_group);
}

}  // namespace p3dgrid
