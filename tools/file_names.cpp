#include "file_names.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>

#include "console.hpp"

namespace p3dgrid::tool {
namespace {

// Files with these endings are opened by programs that expect a certain format, none of ours.
constexpr std::array<std::string_view, 10> endings_of_others = {
    ".vts", ".vtk", ".cgns", ".plt", ".szplt", ".hdf5", ".h5", ".stl", ".su2", ".msh"};

std::string in_lower_case(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

/// The ending without that of compression: ".txt" of "grid.TXT.gz".
std::string ending_of(std::filesystem::path path) {
  if (is_compressed_name(path.string())) path.replace_extension();
  return in_lower_case(path.extension().string());
}

}  // namespace

bool is_compressed_name(const std::string& path) {
  return in_lower_case(path).ends_with(".gz");
}

std::string wrong_name(const std::string& text) {
  if (text.empty()) return "the name is empty";
  if (text != "-") return "";
  return "'-' stands for standard input or output, which cannot be used; './-' is a file of that "
         "name";
}

std::string wrong_output_name(const std::string& text) {
  const std::string ending = ending_of(text);
  if (std::ranges::find(endings_of_others, ending) == endings_of_others.end()) {
    return wrong_name(text);
  }
  return "'" + text + "' ends in " + ending + ", the ending of a format that is not written";
}

std::string numbered_path(const std::string& path, std::size_t number, std::size_t count) {
  std::filesystem::path name = path;
  std::string ending;
  if (is_compressed_name(path)) {
    ending = name.extension().string();
    name.replace_extension();
  }
  ending = name.extension().string() + ending;
  name.replace_extension();
  std::string digits = std::to_string(number);
  digits.insert(0, std::to_string(count).size() - digits.size(), '0');
  return name.string() + "-" + digits + ending;
}

void note_contradiction(const std::string& path, const Coding& written) {
  if (is_text(written) || ending_of(path) != ".txt") return;
  print_note(path + ": is " + describe(written) +
             ", not the text that its name promises; --to-format text writes it");
}

}  // namespace p3dgrid::tool
