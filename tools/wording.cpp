#include "wording.hpp"

#include <algorithm>

#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::size_t most_named = 4;

std::string joined(const std::vector<std::string>& parts, const char* between) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : between).append(part);
  return text;
}

/// Options of a reading that not all of its kind share; where it is alone of its kind, the first of
/// its options tells that.
std::vector<FormOption> telling_options(const Reading& reading,
                                        const std::vector<Reading>& readings) {
  const std::vector<FormOption> all = options_of(reading);
  const auto is_told = [&](const Reading& other, const FormOption& option) {
    const auto options = options_of(other);
    return other.is_grid() == reading.is_grid() &&
           std::ranges::none_of(options, [&](const FormOption& of_other) {
             return of_other.text() == option.text();
           });
  };
  std::vector<FormOption> telling;
  for (const FormOption& option : all) {
    const bool tells =
        std::ranges::any_of(readings, [&](const Reading& other) { return is_told(other, option); });
    if (tells) telling.push_back(option);
  }
  if (telling.empty()) telling.push_back(all.front());
  return telling;
}

}  // namespace

std::vector<FormOption> options_of(const Reading& reading) {
  return reading.is_grid() ? options_of(reading.grid()) : options_of(reading.restart());
}

std::string named(const std::vector<Reading>& readings) {
  std::string lines;
  for (const Reading& reading : readings) {
    std::vector<std::string> options;
    for (const FormOption& option : telling_options(reading, readings)) {
      options.push_back(option.text());
    }
    std::string text = "\n  " + describe(reading) + " (" + joined(options, " ") + ")";
    if (!reading.unreadable.empty()) text += ", which " + reading.unreadable;
    lines += text;
  }
  return lines;
}

std::string unreadable_form(const Reading& reading) {
  return (reading.is_grid() ? "a " : "") + describe(reading) + ", which " + reading.unreadable;
}

std::string departure(const std::vector<Reading>& nearest) {
  if (nearest.empty()) return "";
  std::vector<std::string> forms;
  for (const Reading& reading : nearest) {
    std::string form = describe(reading);  // that does not tell flags apart
    if (std::ranges::find(forms, form) == forms.end()) forms.push_back(std::move(form));
  }
  if (forms.size() > most_named) {
    forms.resize(most_named);
    forms.emplace_back("others");
  }
  const Fit& fit = nearest.front().fit;
  return (fit.agreement == Fit::Agreement::cut ? "is cut short: " : "") + fit.what + "; taken as " +
         joined(forms, "; or as ");
}

std::string reason(const Reading& reading, std::int64_t file_size) {
  if (!reading.checked) return "its header; without extents nothing else can be compared";
  const std::string records = counted(reading.records, "record");
  const std::string extents = reading.own_extents ? "its extents" : "the extents of the grid";
  const std::string more = reading.fit.what.empty() ? "" : "; " + reading.fit.what;
  switch (reading.coding().encoding) {
    case Encoding::unformatted:
      return "the markers of its " + records + " are the lengths that " + extents + " ask for" +
             more;
    case Encoding::binary:
      return "its " + counted(file_size, "byte") + " are what " + extents + " ask for" + more;
    case Encoding::formatted:
      break;
  }
  return "its values are as many as " + extents + " ask for, in " + records +
         " that each begin on a new line" + more;
}

}  // namespace p3dgrid::tool
