#include "wording.hpp"

#include <algorithm>

namespace p3dgrid::tool {
namespace {

constexpr std::size_t most_named = 4;

/// The options by which a reading differs from the others of its kind; without any, its first
/// option, which tells its kind.
std::vector<FormOption> distinguishing_options(const Reading& reading,
                                               const std::vector<Reading>& readings) {
  std::vector<FormOption> options = options_of(reading);
  const FormOption first = options.front();
  std::erase_if(options, [&](const FormOption& option) {
    return std::ranges::all_of(readings, [&](const Reading& other) {
      return other.is_grid() != reading.is_grid() ||
             std::ranges::count(options_of(other), option) > 0;
    });
  });
  return options.empty() ? std::vector{first} : options;
}

}  // namespace

std::vector<FormOption> options_of(const Reading& reading) {
  return reading.is_grid() ? options_of(reading.grid()) : options_of(reading.restart());
}

std::string named(const std::vector<Reading>& readings) {
  std::string lines;
  for (const Reading& reading : readings) {
    lines += "\n  " + describe(reading) + " (" +
             text_of(distinguishing_options(reading, readings)) + ")";
  }
  return lines;
}

std::string departure(const std::vector<Reading>& nearest) {
  if (nearest.empty()) return "";
  std::vector<std::string> forms;
  for (const Reading& reading : nearest) {
    std::string form = describe(reading);  // the same for readings that differ in flags
    if (std::ranges::find(forms, form) == forms.end()) forms.push_back(std::move(form));
  }
  if (forms.size() > most_named) {
    forms.resize(most_named);
    forms.emplace_back("others");
  }
  std::string text = forms.front();
  for (std::size_t n = 1; n < forms.size(); ++n) text += "; or as " + forms[n];
  const Fit& fit = nearest.front().fit;
  return (fit.agreement == Fit::Agreement::cut ? "is cut short: " : "") + fit.what + "; taken as " +
         text;
}

}  // namespace p3dgrid::tool
