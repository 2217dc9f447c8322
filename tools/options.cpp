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
const std::vector<ByteOrder> byte_orders = {ByteOrder::little, ByteOrder::big};
const std::vector<Layout> layouts = {Layout::talven,   Layout::time_step, Layout::solution,
                                     Layout::function, Layout::triplets,  Layout::single_block,
                                     Layout::bare};

const std::string grid_group = "The grid file read; auto, the default, finds it out";
const std::string restart_group = "The restart file read; auto, the default, finds it out";
const std::string target_group = "The file written; default as the file read";
const std::string values_group = "Header values of the file written; default as read, or 0";

/// What an input option says when the file is to say it itself.
const std::string automatic = "auto";

/// An option that takes one of a few words, `first` among them: a word for no choice, or none.
template <class Choice>
CLI::Option* add_choice(CLI::App& command, const std::string& name, std::optional<Choice>& target,
                        const std::vector<Choice>& choices, const std::string& description,
                        const std::string& first = "") {
  std::vector<std::string> words;
  if (!first.empty()) words.push_back(first);
  for (const Choice choice : choices) words.emplace_back(name_of(choice));
  std::string usage;
  for (const std::string& word : words) usage.append(usage.empty() ? "" : "|").append(word);
  const auto take = [&target, choices](const std::string& word) {
    target.reset();
    for (const Choice choice : choices) {
      if (word == name_of(choice)) target = choice;
    }
  };
  return command.add_option_function<std::string>(name, take, description)
      ->check(CLI::IsMember(words).description(""))
      ->type_name(usage);
}

/// Adds options that describe one file.
class FileOptions {
 public:
  /// @param first  a word for no choice, or none
  FileOptions(CLI::App& command, std::string group, std::string first = "")
      : command_(command), group_(std::move(group)), first_(std::move(first)) {}

  template <class Choice>
  void add(const std::string& name, std::optional<Choice>& target,
           const std::vector<Choice>& choices, const std::string& description) {
    add_choice(command_, name, target, choices, description, first_)->group(group_);
  }

  /// What grids and restart files have in common.
  void add_coding(const std::string& prefix, auto& form, const std::string& reals) {
    add(prefix + "-format", form.encoding, encodings,
        "records with length markers, text, or plain bytes");
    add(prefix + "-precision", form.precision, precisions,
        "size of the " + reals + ", ignored for text");
    add(prefix + "-byte-order", form.byte_order, byte_orders,
        "order of the bytes of each number, ignored for text");
  }

 private:
  CLI::App& command_;
  std::string group_;
  std::string first_;
};

CLI::Validator not_empty() {
  const auto complaint = [](const std::string& text) {
    return text.empty() ? std::string("the name is empty") : std::string();
  };
  return {complaint, ""};
}

void add_sections(CLI::App& command, std::optional<Sections>& sections) {
  const auto readable = [](const std::string& text) {
    return text == automatic || sections_in(text)
               ? std::string()
               : "'" + text +
                     "' is no list of sections such as 1-5,6-7, with each variable "
                     "from 1 on in one of at most 30";
  };
  const auto take = [&sections](const std::string& text) { sections = sections_in(text); };
  command
      .add_option_function<std::string>(
          "--sections", take, "variables that each record of a block holds, such as 1-5,6-7")
      ->check(CLI::Validator(readable, ""))
      ->type_name("auto|FIRST-LAST,...")
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

void add_grid_options(CLI::App& command, StatedGridForm& stated) {
  FileOptions options(command, grid_group, automatic);
  options.add_coding("--grid", stated, "coordinates");
  options.add("--grid-multiblock", stated.multiblock, yes_or_no,
              "the file begins with its number of blocks");
  options.add("--grid-iblank", stated.iblank, yes_or_no,
              "each block ends with its blanking values");
}

void add_target_options(CLI::App& command, StatedGridForm& change) {
  FileOptions options(command, target_group);
  options.add_coding("--to", change, "coordinates");
  options.add("--to-multiblock", change.multiblock, yes_or_no,
              "begin with the number of blocks; it can be left out for one block");
  options.add("--to-iblank", change.iblank, yes_or_no,
              "write blanking values: those read, or else 1 everywhere");
}

void add_restart_options(CLI::App& command, StatedRestartForm& stated) {
  FileOptions options(command, restart_group, automatic);
  options.add("--layout", stated.layout, layouts,
              "restart layout: 2 PLOT3D solution, 3 PLOT3D function, 0 TALVEN, 1 and 100 to 102 "
              "time-step layouts");
  options.add_coding("--restart", stated, "reals");
  options.add("--restart-multiblock", stated.multiblock, yes_or_no,
              "layouts 2 and 3: the file begins with its number of blocks");
  add_sections(command, stated.sections);
}

void add_restart_target_options(CLI::App& command, StatedRestartForm& change,
                                HeaderValues& values) {
  FileOptions options(command, target_group);
  options.add("--to-layout", change.layout, layouts, "restart layout; not 0");
  options.add_coding("--to", change, "reals");
  options.add("--to-multiblock", change.multiblock, yes_or_no,
              "layouts 2 and 3: begin with the number of blocks; it can be left out for one block");
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

CLI::Option* add_gamma(CLI::App& command, double& gamma, const std::string& purpose) {
  // CLI::Range lets NaN pass.
  const auto complaint = [](const std::string& text) {
    double value = 0;
    const bool fits = CLI::detail::lexical_cast(text, value) && value >= 1 && value <= 3;
    return fits ? std::string() : "'" + text + "' is no ratio of specific heats from 1 to 3";
  };
  return command
      .add_option("--gamma", gamma, "Ratio of specific heats, for " + purpose + "; default 1.4")
      ->check(CLI::Validator(complaint, ""))
      ->type_name("G");
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
