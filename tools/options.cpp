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

}  // namespace

void add_path(CLI::App& command, const std::string& name, std::string& path,
              const std::string& description) {
  const auto not_empty = [](const std::string& text) {
    return text.empty() ? std::string("the name is empty") : std::string();
  };
  command.add_option(name, path, description)
      ->required()
      ->check(CLI::Validator(not_empty, ""))
      ->type_name("");
}

void add_grid_options(CLI::App& command, GridForm& form) {
  const std::string group = "The grid file read";
  add_choice(command, "--grid-format", form.encoding, encodings,
             "records with length markers (default), text, or plain bytes")
      ->group(group);
  add_choice(command, "--grid-precision", form.precision, precisions,
             "size of the coordinates, ignored for text; default single")
      ->group(group);
  add_choice(command, "--grid-multiblock", form.multiblock, yes_or_no,
             "the file begins with its number of blocks; default yes")
      ->group(group);
  add_choice(command, "--grid-iblank", form.iblank, yes_or_no,
             "each block ends with its blanking values; default no")
      ->group(group);
}

void add_target_options(CLI::App& command, GridFormChange& change) {
  const std::string group = "The file written; default as the file read";
  add_choice(command, "--to-format", change.encoding, encodings,
             "records with length markers, text, or plain bytes")
      ->group(group);
  add_choice(command, "--to-precision", change.precision, precisions, "size of the coordinates")
      ->group(group);
  add_choice(command, "--to-multiblock", change.multiblock, yes_or_no,
             "begin with the number of blocks; it can be left out for one block")
      ->group(group);
  add_choice(command, "--to-iblank", change.iblank, yes_or_no,
             "write blanking values: those read, or else 1 everywhere")
      ->group(group);
}

}  // namespace p3dgrid
