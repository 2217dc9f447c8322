#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "info.hpp"
#include "options.hpp"
#include "parts.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr Usage merge_usage = {
    .command_line = "p3dgrid merge GRID ... OUT --restart RESTART ... OUT",
    .grid_alone = "'p3dgrid merge GRID ... OUT' without --restart takes grids alone",
    .restart_alone = "'p3dgrid merge GRID ... OUT --restart RESTART ... OUT' takes it"};

/// Prints a note if the first input and another differ.
struct Comparison {
  const std::string& first;  ///< path
  const std::string& other;  ///< path

  void operator()(const std::string& what, const std::string& of_first, const std::string& of_other,
                  const std::string& result) const {
    if (of_first == of_other) return;
    print_note(other + ": " + what + " " + of_other + ", in " + first + " " + of_first + "; " +
               result);
  }
};

std::string precision_text(const Coding& coding) {
  return is_text(coding) ? "of text" : name_of(coding.precision);
}

void compare_grids(const PartOptions& options, const CaseInput& first, const CaseInput& other) {
  const std::string& out = options.grids.back();
  const Comparison note{first.path(), other.path()};
  if (!options.change.coding.precision) {
    note("precision", precision_text(first.form().coding), precision_text(other.form().coding),
         out + " has the higher");
  }
  if (!options.change.iblank) {
    note("blanking", name_of(first.form().iblank), name_of(other.form().iblank),
         out + " holds 1 where there is none");
  }
  note("dimensions", name_of(first.form().coding.dimensions),
       name_of(other.form().coding.dimensions), out + " has those of the first file");
}

void compare_solutions(const PartOptions& options, const CaseInput& first, const CaseInput& other) {
  const Comparison note{first.restart_path(), other.restart_path()};
  const std::string& out = options.solutions.back();
  const SolutionHeader& one = first.restart().header();
  const SolutionHeader& two = other.restart().header();
  if (one.form.layout != two.form.layout) return;  // refused later
  if (!options.change.coding.precision) {
    note("precision", precision_text(one.form.coding), precision_text(two.form.coding),
         out + " has the higher");
  }
  note("variables", std::to_string(one.most_variables()), std::to_string(two.most_variables()),
       out + " holds those of each block");
  const auto values = header_values(one.form, one.run);
  const auto others = header_values(two.form, two.run);
  for (std::size_t n = 0; n < values.size() && n < others.size(); ++n) {
    note(values[n].label, values[n].text(one.form), others[n].text(two.form),
         out + " holds that of the first file");
  }
  const auto parameters = first.restart().parameters(0);
  const auto other_parameters = other.restart().parameters(0);
  const auto names = parameter_names(static_cast<std::int32_t>(parameters.size()), one.run.species);
  for (std::size_t n = 0; n < parameters.size() && n < other_parameters.size(); ++n) {
    note(names[n], digits(parameters[n]), digits(other_parameters[n]),
         out + " holds that of each block");
  }
}

void merge(const PartOptions& options) {
  if (options.grids.size() < 3) {
    throw Unusable("merge takes at least two grids and the file to write");
  }
  const std::string wrong = wrong_output_name(options.grids.back());
  if (!wrong.empty()) throw Unusable(wrong);
  write_parts(options, merge_usage, [&](std::deque<CaseInput>& inputs) {
    for (std::size_t n = 1; n < inputs.size(); ++n) {
      compare_grids(options, inputs.front(), inputs[n]);
      if (options.has_solution()) compare_solutions(options, inputs.front(), inputs[n]);
    }
    return Parts{inputs, whole_blocks(inputs)};
  });
}

}  // namespace

Command merge_command() {
  const auto options = std::make_shared<PartOptions>();
  Command command{
      .name = "merge",
      .meaning = "Write the blocks of several grids, and of their solutions, into one file",
      .footer =
          "Examples:\n"
          "  p3dgrid merge grid.p3d upper.p3d all.p3d\n"
          "  p3dgrid merge grid.p3d grid.p3d all.p3d --restart flow.q flow.q all.q",
      .arguments = {{"GRID... OUT", &options->grids,
                     "Grid files to read, then the one to write; replaced whole or not at all",
                     Argument::Use::inputs_and_output}},
      .run = [options] { merge(*options); }};
  add_part_options(command, *options, Option::any_count);
  return command;
}

}  // namespace p3dgrid::tool
