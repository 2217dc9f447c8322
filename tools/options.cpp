#include "options.hpp"

#include <string>
#include <vector>

namespace p3dgrid::tool {
namespace {

const std::string grid_group = "The grid file read; auto, the default, finds it out";
const std::string restart_group = "The restart file read; auto, the default, finds it out";
const std::string target_group = "The file written; default as the file read";
const std::string values_group = "Header values of the file written; default as read, or 0";

/// What an input option says when the file is to say it itself.
const std::string automatic = "auto";

/// Adds an option for each member of the form of one file.
class FileOptions {
 public:
  /// @param first  a word for no choice, or none
  FileOptions(CLI::App& command, std::string prefix, std::string group, std::string first = "")
      : command_(command),
        prefix_(std::move(prefix)),
        group_(std::move(group)),
        first_(std::move(first)) {}

  template <class Value>
  void operator()(const Member<Value>& member, std::optional<Value>& choice) const {
    std::vector<std::string> all;
    if (!first_.empty()) all.push_back(first_);
    for (const Value value : member.choices) all.emplace_back(name_of(value));
    const auto take = [&choice, &member](const std::string& word) {
      choice.reset();
      for (const Value value : member.choices) {
        if (word == name_of(value)) choice = value;
      }
    };
    add(member, take, CLI::IsMember(all).description(""), CLI::detail::join(all, "|"));
  }

  void operator()(const Member<std::optional<Sections>>& member,
                  std::optional<Sections>& sections) const {
    if (first_.empty()) return;  // a file that is written has those of the file read
    const auto readable = [](const std::string& text) {
      return text == automatic || sections_in(text)
                 ? std::string()
                 : "'" + text +
                       "' is no list of sections such as 1-5,6-7, with each variable "
                       "from 1 on in one of at most 30";
    };
    const auto take = [&sections](const std::string& text) { sections = sections_in(text); };
    add(member, take, CLI::Validator(readable, ""), first_ + "|FIRST-LAST,...");
  }

 private:
  template <class Value, class Take>
  void add(const Member<Value>& member, const Take& take, const CLI::Validator& valid,
           const std::string& usage) const {
    command_.add_option_function<std::string>(option_name(prefix_, member), take, member.meaning)
        ->check(valid)
        ->type_name(usage)
        ->group(group_);
  }

  CLI::App& command_;
  std::string prefix_;
  std::string group_;
  std::string first_;
};

CLI::Validator not_empty() {
  const auto complaint = [](const std::string& text) {
    return text.empty() ? std::string("the name is empty") : std::string();
  };
  return {complaint, ""};
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
  StatedGridForm::for_each_member(FileOptions(command, "--grid", grid_group, automatic), stated);
}

void add_target_options(CLI::App& command, StatedGridForm& change) {
  StatedGridForm::for_each_member(FileOptions(command, "--to", target_group), change);
}

void add_restart_options(CLI::App& command, StatedRestartForm& stated) {
  StatedRestartForm::for_each_member(FileOptions(command, "--restart", restart_group, automatic),
                                     stated);
}

void add_restart_target_options(CLI::App& command, StatedRestartForm& change,
                                HeaderValues& values) {
  StatedRestartForm::for_each_member(FileOptions(command, "--to", target_group), change);
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

}  // namespace p3dgrid::tool
