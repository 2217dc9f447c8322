#include "options.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "failure.hpp"
#include "file_names.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr const char* grid_group = "The grid file read; auto, the default, finds it out";
constexpr const char* restart_group = "The restart file read; auto, the default, finds it out";
constexpr const char* target_group = "The file written; default as the file read";
constexpr const char* values_group = "Header values of the file written; default as read, or 0";

/// The value of an option that leaves a member to detection.
constexpr const char* automatic = "auto";

/// The words that select a value, its name first.
std::vector<std::string> words_for(Encoding encoding) {
  if (encoding == Encoding::formatted) return {name_of(encoding), "text", "ascii"};
  return {name_of(encoding)};
}
std::vector<std::string> words_for(auto value) {
  return {name_of(value)};
}

/// Adds an option for each member of the form of a file that is read or written.
struct MemberOptions {
  Command& command;
  std::string prefix;
  const char* group;
  bool read = false;
  std::string* given = nullptr;

  template <class Value>
  void operator()(const Member<Value>& member, std::optional<Value>& choice) const {
    const auto take = [&choice, &member](const std::string& word) {
      choice.reset();
      for (const Value value : member.choices) {
        if (std::ranges::count(words_for(value), word) > 0) choice = value;
      }
    };
    Option& option = add(member, take);
    if (read) option.choices.emplace_back(automatic);
    for (const Value value : member.choices) {
      std::ranges::copy(words_for(value), std::back_inserter(option.choices));
    }
  }

  void operator()(const Member<std::optional<Sections>>& member,
                  std::optional<Sections>& sections) const {
    if (!read) return;  // a file that is written has those of the file read
    Option& option =
        add(member, [&sections](const std::string& text) { sections = sections_in(text); });
    option.check = checked(
        "is no list of sections such as 1-5,6-7, with each variable from 1 on in one of at most 30",
        [](const std::string& text) { return text == automatic || sections_in(text); });
    option.value_name = "auto|FIRST-LAST,...";
  }

 private:
  template <class Value, class Take>
  Option& add(const Member<Value>& member, Take take) const {
    const std::string name = option_name(prefix, member);
    const auto note_and_take = [take, name, first = given](const std::string& text) {
      if (first != nullptr && first->empty()) *first = name;
      take(text);
    };
    command.options.push_back(
        {.name = name, .target = note_and_take, .meaning = member.meaning, .group = group});
    return command.options.back();
  }
};

}  // namespace

void add_grid_options(Command& command, StatedForms& stated) {
  StatedGridForm::for_each_member(
      MemberOptions{command, "--grid", grid_group, true, &stated.grid_option}, stated.grid);
}

void add_input_options(Command& command, StatedForms& stated) {
  add_grid_options(command, stated);
  StatedRestartForm::for_each_member(
      MemberOptions{command, "--restart", restart_group, true, &stated.restart_option},
      stated.restart);
}

void add_grid_of_restart(Command& command, std::string& path) {
  command.options.push_back({.name = "--grid",
                             .target = &path,
                             .meaning = "the grid that a restart file belongs to; they must agree",
                             .value_name = "GRID",
                             .check = wrong_name,
                             .group = restart_group,
                             .is_input = true});
}

void add_target_options(Command& command, StatedCoding& change) {
  StatedCoding::for_each_member(MemberOptions{command, "--to", target_group}, change);
  const std::string dimensions = option_name("--to", dimensions_member);
  std::erase_if(command.options, [&](const Option& option) { return option.name == dimensions; });
}

void add_target_options(Command& command, StatedGridForm& change) {
  StatedGridForm::for_each_member(MemberOptions{command, "--to", target_group}, change);
}

void add_target_options(Command& command, StatedRestartForm& change, HeaderValues& values) {
  StatedRestartForm::for_each_member(MemberOptions{command, "--to", target_group}, change);
  const auto add = [&](const char* name, auto& value, const char* meaning) {
    command.options.push_back(
        {.name = name, .target = &value, .meaning = meaning, .group = values_group});
  };
  add("--mach", values.mach, "layout 2: free-stream Mach number");
  add("--alpha", values.alpha, "layout 2: angle of attack");
  add("--reynolds", values.reynolds, "layout 2: Reynolds number");
  add("--time", values.time, "layout 2: time");
  add("--step", values.step, "layouts 1, 100 and 101: number of time steps done");
  add("--step-size", values.step_size, "layouts 1, 100 and 101: time-step size");
}

std::string PartOptions::solution_output() const {
  if (!has_solution()) return "";
  const std::string wrong = wrong_output_name(solutions.back());
  if (!wrong.empty()) throw Unusable("--restart: " + wrong);
  return solutions.back();
}

std::vector<Argument> grid_and_output(PartOptions& options, const std::string& meaning) {
  options.grids.resize(2);
  return {{"GRID", &options.grids.front(), "Grid file to read"},
          {"OUT", &options.grids.back(), meaning + "; replaced whole or not at all",
           Argument::Use::output}};
}

void add_part_options(Command& command, PartOptions& options, int values) {
  command.options.push_back(
      {.name = "--restart",
       .target = &options.solutions,
       .meaning = values == 2 ? "Process its solution RESTART in the same way and write it to OUT"
                              : "Process their solutions in the same way, one RESTART for each "
                                "grid, and write them to OUT",
       .value_name = values == 2 ? "RESTART OUT" : "RESTART... OUT",
       .check = wrong_name,
       .is_input = true,
       .values = values});
  add_input_options(command, options.stated);
  add_target_options(command, options.change);
  MemberOptions{command, "--to", target_group}(layout_member, options.layout);
}

std::optional<double> real_in(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  const bool whole = !text.empty() && end == text.c_str() + text.size();
  return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::vector<std::string> entries_in(const std::string& text) {
  std::vector<std::string> entries;
  for (std::size_t from = 0;;) {
    const std::size_t comma = text.find(',', from);
    entries.push_back(text.substr(from, comma - from));
    if (comma == text.npos) return entries;
    from = comma + 1;
  }
}

std::string wrong_block_list(const std::string& text) {
  return numbers_in(text) ? "" : "'" + text + "' is no list of blocks such as 1,3-5";
}

std::vector<std::int32_t> blocks_in(const std::string& text, const std::string& path,
                                    std::int32_t count) {
  std::vector<std::int32_t> blocks;
  const auto ranges = numbers_in(text);
  for (const Section& range : ranges.value_or(std::vector<Section>{{1, count}})) {
    if (range.last > count) {
      throw Unusable(path + ": holds " + counted(count, "block") + ", and there is no block " +
                     std::to_string(range.last));
    }
    for (std::int32_t n = range.first; n <= range.last; ++n) blocks.push_back(n - 1);
  }
  return blocks;
}

std::optional<CoordinatePlane> coordinate_plane_in(const std::string& text) {
  if (text.size() < 3 || text[0] < 'x' || text[0] > 'z' || text[1] != '=') return std::nullopt;
  const auto value = real_in(text.substr(2));
  if (!value) return std::nullopt;
  return CoordinatePlane{static_cast<std::size_t>(text[0] - 'x'), *value};
}

std::optional<IndexPlane> index_plane_in(const std::string& text) {
  const auto direction = direction_in(text.substr(0, 1));
  if (!direction || text.size() < 3 || text[1] != '=') return std::nullopt;
  const auto indices = indices_in(text.substr(2));
  const bool is_one = indices && text.find(':') == text.npos;
  return is_one ? std::optional(IndexPlane{*direction, indices->first}) : std::nullopt;
}

std::string describe(const IndexPlane& plane) {
  const std::string direction(1, name_of(plane.direction));
  if (plane.index == Indices::all_points) return direction + "=last";
  return direction + "=" + std::to_string(std::int64_t{plane.index} + 1);
}

Option gamma_option(double& gamma, const std::string& purpose) {
  const auto is_ratio = [](const std::string& text) {
    const double value = real_in(text).value_or(0);
    return value >= 1 && value <= 3;
  };
  return {.name = "--gamma",
          .target = &gamma,
          .meaning = "Ratio of specific heats, for " + purpose + "; default 1.4",
          .value_name = "G",
          .check = checked("is no ratio of specific heats from 1 to 3", is_ratio)};
}

}  // namespace p3dgrid::tool
