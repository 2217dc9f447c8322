#include "variable_names.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <p3dgrid/layout.hpp>
#include <set>

#include "console.hpp"
#include "failure.hpp"
#include "gzip.hpp"
#include "options.hpp"
#include "primitive.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

using Names = std::vector<std::string>;

/// The text without leading and trailing blanks and line ends.
std::string trimmed(const std::string& text) {
  constexpr const char* blanks = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == text.npos) return "";
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Empty, repeated and unprintable names are refused: they would be ambiguous, or make the output
/// files invalid.
bool are_usable(const Names& names) {
  const auto is_usable = [](const std::string& name) {
    return !name.empty() && std::ranges::none_of(name, [](char c) {
      return (static_cast<unsigned char>(c) < ' ') || c == '\x7f' || c == '"';
    });
  };
  return std::ranges::all_of(names, is_usable) &&
         std::set<std::string>(names.begin(), names.end()).size() == names.size();
}

/// The names of a list with commas between them; none for any other text.
std::optional<Names> names_in(const std::string& text) {
  Names names = entries_in(text);
  std::ranges::transform(names, names.begin(), trimmed);
  return are_usable(names) ? std::optional(std::move(names)) : std::nullopt;
}

/// "flow.nam" for "flow.f" and "flow.f.gz".
std::filesystem::path name_file_of(const std::string& path) {
  std::filesystem::path file = original_path(path);
  if (file.extension() == ".gz") file.replace_extension();
  return file.replace_extension(".nam");
}

/// The lines of a name file. The text after a semicolon, the name of a vector, is removed. No lines
/// if the file is too large to be a name file.
Names lines_of(const std::filesystem::path& path) {
  constexpr std::uintmax_t largest = 1 << 20;
  constexpr std::size_t longest = 256;
  if (std::filesystem::file_size(path) > largest) return {};
  Names names;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    line = trimmed(line.substr(0, std::min(longest, line.find(';'))));
    if (!line.empty()) names.push_back(line);
  }
  return names;
}

/// The names beside a function file; empty if there are none, or if they do not fit, in which case
/// a note is printed.
Names names_beside(const std::string& path, std::size_t variables) {
  const std::filesystem::path file = name_file_of(path);
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return {};
  Names names = lines_of(file);
  if (names.size() == variables && are_usable(names)) return names;
  print_note(file.string() + ": not used, because it has no list of " +
             counted(static_cast<std::int64_t>(variables), "different name") + ", one on a line");
  return {};
}

}  // namespace

Names variable_names(const std::string& path, const SolutionHeader& header, const Names& stated) {
  const auto variables = static_cast<std::size_t>(header.most_variables());
  if (!stated.empty() && stated.size() != variables) {
    throw Unusable(path + ": holds " + counted(header.most_variables(), "variable") +
                   ", and --names gives " + counted(std::ssize(stated), "name"));
  }
  if (!stated.empty()) return stated;
  Names names;
  const LayoutTraits& layout = traits_of(header.form.layout);
  if (layout.counts_by_block()) names = names_beside(path, variables);
  if (layout.parameters > 0) names.assign(solution_names.begin(), solution_names.end());
  names.resize(variables);
  return names;
}

Option names_option(Names& names) {
  return parsed({"--names",
                 {},
                 "Names of the variables of the restart file, in its order; default those in the "
                 "file NAME.nam beside a function file NAME.*, one on a line",
                 "NAME,..."},
                names, names_in, "is no list of different names such as rho,u,v,w,p");
}

}  // namespace p3dgrid::tool
