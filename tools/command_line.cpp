#include <CLI/CLI.hpp>
#include <memory>
#include <mod_p3dgrid/version.hpp>
#include <span>
#include <sstream>
#include <utility>
#include <vector>

#include "command.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "gzip.hpp"

namespace p3dgrid::tool {
namespace {

/// Shows the last argument without brackets in the usage line.
class UsageFormatter : public CLI::Formatter {
 public:
  explicit UsageFormatter(std::string last) : last_(std::move(last)) {}
  std::string make_option_usage(const CLI::Option* option) const override {
    return option->get_name() == last_ ? last_ : Formatter::make_option_usage(option);
  }

 private:
  std::string last_;
};

/// Moves the last word to the argument that takes it, if an optional one before it was left out.
void take_last(CLI::App& line, const Argument& last, std::string& before) {
  line.formatter(std::make_shared<UsageFormatter>(last.name));
  std::string& text = *std::get<std::string*>(last.target);
  line.callback([&before, &text, name = last.name] {
    if (text.empty()) std::swap(text, before);
    if (text.empty()) throw CLI::RequiredError(name);
  });
}

void add_arguments(CLI::App& line, const std::vector<Argument>& arguments) {
  std::string* before = nullptr;
  for (const Argument& argument : arguments) {
    std::visit(
        [&](auto* target) { return line.add_option(argument.name, *target, argument.meaning); },
        argument.target)
        ->required(argument.presence == Argument::Presence::required)
        ->check(argument.use == Argument::Use::output ? wrong_output_name : wrong_name)
        ->type_name("");
    if (argument.presence == Argument::Presence::last) take_last(line, argument, *before);
    if (auto* const* target = std::get_if<std::string*>(&argument.target)) before = *target;
  }
}

void add_option(CLI::App& line, const Option& option) {
  CLI::Option* const added = std::visit(
      [&](const auto& target) {
        using Chosen = std::decay_t<decltype(target)>;
        if constexpr (std::is_same_v<Chosen, bool*>) {
          return line.add_flag(option.name, *target, option.meaning);
        } else if constexpr (std::is_pointer_v<Chosen>) {
          return line.add_option(option.name, *target, option.meaning);
        } else {
          return line.add_option_function<std::string>(option.name, target, option.meaning);
        }
      },
      option.target);
  const bool is_vector = added->get_expected_max() > 1;
  if (is_vector) added->expected(option.values);
  if (!option.value_name.empty()) added->type_name(option.value_name);
  if (option.check) added->check(option.check);
  if (!option.choices.empty()) {
    added->check(CLI::IsMember(option.choices).description(""))
        ->type_name(CLI::detail::join(option.choices, "|"));
  }
  if (!option.group.empty()) added->group(option.group);
  if (!option.excludes.empty()) added->excludes(option.excludes);
}

void add_common_options(CLI::App& line, Request& request) {
  line.add_flag("--quiet", request.quiet, "Leave out notes and the line that says what was done");
  line.add_flag("--verbose", request.verbose,
                "Accepted for older scripts: nothing more is printed");
  line.add_flag("--no-progress", request.no_progress,
                "Do not show on a terminal how far long reading and writing is");
}

void add_command(CLI::App& program, const Command& command, Request& request) {
  CLI::App& line = *program.add_subcommand(command.name, command.meaning);
  add_arguments(line, command.arguments);
  for (const Option& option : command.options) add_option(line, option);
  add_common_options(line, request);
  line.footer(command.footer);
}

void describe_program(CLI::App& line, const Program& program) {
  line.name(program.name);
  line.set_version_flag("--version", program.name + " " MOD_P3DGRID_VERSION,
                        "Print the version and exit");
  line.require_subcommand(0, 1);  // the message for none at all is our own
  line.footer(program.footer);
}

std::string without_last_line_end(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

Unusable usage_failure(const Program& program, const std::string& what,
                       const std::string& command = "") {
  return Unusable(without_last_line_end(what) + "; '" + program.name + " " + command +
                  "--help' shows the usage");
}

/// The variables of a target that holds names.
std::span<std::string> names_in(const auto& target) {
  if (auto* const* name = std::get_if<std::string*>(&target)) return {*name, 1};
  if (auto* const* names = std::get_if<std::vector<std::string>*>(&target)) return **names;
  return {};
}

/// Replaces the names of compressed inputs by those of unpacked copies.
void unpack_inputs(const Command& command) {
  std::string output;
  const auto unpack = [&](std::span<std::string> names, bool writes_last) {
    if (writes_last && !names.empty()) {
      output = names.back();
      names = names.first(names.size() - 1);
    }
    for (std::string& name : names) name = path_to_read(name, output);
  };
  for (const Argument& argument : command.arguments) {
    if (argument.use == Argument::Use::output) output = names_in(argument.target).front();
  }
  for (const Argument& argument : command.arguments) {
    const bool writes_last = argument.use == Argument::Use::inputs_and_output;
    const bool reads = argument.use == Argument::Use::input ||
                       argument.use == Argument::Use::inputs || writes_last;
    if (reads) unpack(names_in(argument.target), writes_last);
  }
  for (const Option& option : command.options) {
    const bool is_one = std::holds_alternative<std::string*>(option.target);
    if (option.is_input) unpack(names_in(option.target), !is_one);
  }
}

}  // namespace

Check in_range(std::int32_t low, std::int32_t high) {
  return CLI::Range(low, high);
}

Check in_range(double low, double high) {
  return CLI::Range(low, high);
}

Request read_command_line(const Program& program, int argc, const char* const* argv) {
  CLI::App line(program.meaning);
  Request request;
  describe_program(line, program);
  add_common_options(line, request);
  for (const Command& command : program.commands) add_command(line, command, request);
  try {
    line.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      const auto parsed = line.get_subcommands();
      throw usage_failure(program, error.what(),
                          parsed.empty() ? "" : parsed.front()->get_name() + " ");
    }
    std::ostringstream text;
    line.exit(error, text, text);
    return {.text = without_last_line_end(text.str())};
  }
  if (request.quiet && request.verbose) {
    throw usage_failure(program, "--quiet and --verbose exclude each other");
  }
  for (const Command& command : program.commands) {
    if (!line.got_subcommand(command.name)) continue;
    request.run = [command] {
      unpack_inputs(command);
      command.run();
    };
  }
  if (!request.run) throw Unusable("no command; '" + program.name + " --help' shows them");
  return request;
}

}  // namespace p3dgrid::tool
