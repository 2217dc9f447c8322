#include <algorithm>

#include "console.hpp"
#include "gzip.hpp"
#include "info.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

/// A property of a file that may differ in the next file.
struct Fact {
  enum class Column { never, if_changed, always };

  std::string name;
  std::string text;
  Column column = Column::never;  ///< of the table of files
};
using Facts = std::vector<Fact>;

std::string range_text(const Findings& findings) {
  return text_of(findings.low) + " " + text_of(findings.high) + " " + std::to_string(findings.nan) +
         " " + std::to_string(findings.infinite);
}

void add_extents(Facts& facts, const Extents& extents) {
  std::string all;
  for (std::size_t b = 0; b < extents.i.size(); ++b) all += extents.of(b).text() + " ";
  facts.push_back({"blocks", std::to_string(extents.blocks()), Fact::Column::always});
  facts.push_back({"points", std::to_string(extents.points()), Fact::Column::always});
  facts.push_back({"extents", all});
}

std::string name_of(const Survey& survey, const Report& report) {
  if (!survey.name.empty()) return survey.name;
  return report.header ? "variable " + survey.label : survey.label;
}

/// Adds each flow parameter; its values in all blocks form one text.
void add_parameters(Facts& facts, const Report& report) {
  const auto& parameters = report.parameters;
  if (parameters.empty()) return;
  const auto count = static_cast<std::int32_t>(parameters.front().size());
  const auto names = parameter_names(count, report.header->run.species);
  for (std::size_t n = 0; n < names.size(); ++n) {
    const auto is_first = [&](const auto& block) { return block[n] == parameters.front()[n]; };
    std::string text = digits_in(report.header->form, parameters.front()[n]);
    for (std::size_t b = 1; !std::ranges::all_of(parameters, is_first) && b < parameters.size();
         ++b) {
      text += "," + digits_in(report.header->form, parameters[b][n]);
    }
    facts.push_back({names[n], text, Fact::Column::if_changed});
  }
}

Facts facts_of(const Report& report) {
  Facts facts = {{"kind", report.kind()}, {"form", report.form()}};
  if (!report.extents.i.empty()) add_extents(facts, report.extents);
  for (const HeaderValue& value : report.header_values()) {
    facts.push_back({value.label, value.text(report.header->form), Fact::Column::if_changed});
  }
  add_parameters(facts, report);
  for (const Survey& survey : report.surveys.value_or(std::vector<Survey>())) {
    facts.push_back({name_of(survey, report), range_text(survey)});
  }
  if (report.header || !report.found.grid().iblank) return facts;
  std::string counts;
  for (const GridFindings& block : report.blocks) {
    for (const std::int64_t count : block.blanking) counts += std::to_string(count) + " ";
  }
  facts.push_back({"blanking", counts});
  return facts;
}

/// The fact of this name; null if there is none.
const Fact* find_fact(const Facts& facts, const std::string& name) {
  const auto found = std::ranges::find(facts, name, &Fact::name);
  return found == facts.end() ? nullptr : &*found;
}

bool is_same(const Fact& fact, const Facts& others) {
  const Fact* const other = find_fact(others, fact.name);
  return other != nullptr && other->text == fact.text;
}

/// The names of the facts that differ; only the kind for a grid and a restart file.
std::string changes_between(const Facts& before, const Facts& after) {
  if (before.front().text != after.front().text) return after.front().name;
  std::string names;
  const auto add = [&](const Fact& fact) { names += (names.empty() ? "" : ", ") + fact.name; };
  for (const Fact& fact : after) {
    if (!is_same(fact, before)) add(fact);
  }
  for (const Fact& fact : before) {
    if (find_fact(after, fact.name) == nullptr) add(fact);
  }
  return names.empty() ? "nothing" : names;
}

/// The columns of the table between the file and the changes. A fact that changes has a column if
/// all files have it.
std::vector<std::string> columns_of(const std::vector<Facts>& files) {
  std::vector<std::string> columns;
  for (const Facts& facts : files) {
    for (const Fact& fact : facts) {
      if (fact.column == Fact::Column::never || std::ranges::count(columns, fact.name) > 0)
        continue;
      const auto has_it = [&](const Facts& other) {
        return find_fact(other, fact.name) != nullptr;
      };
      const auto has_same = [&](const Facts& other) { return is_same(fact, other); };
      const bool changes =
          std::ranges::all_of(files, has_it) && !std::ranges::all_of(files, has_same);
      if (changes || fact.column == Fact::Column::always) columns.push_back(fact.name);
    }
  }
  return columns;
}

}  // namespace

void print_series(const std::vector<std::string>& paths,
                  const std::function<Report(const std::string& path)>& report_on) {
  std::vector<Facts> files;
  for (const std::string& path : paths) files.push_back(facts_of(report_on(path)));
  const std::vector<std::string> columns = columns_of(files);
  std::vector<std::string> header = {"file"};
  header.insert(header.end(), columns.begin(), columns.end());
  header.emplace_back("changes");
  Table table(header);
  for (std::size_t n = 0; n < files.size(); ++n) {
    std::vector<std::string> row = {original_path(paths[n])};
    for (const std::string& column : columns) {
      const Fact* const fact = find_fact(files[n], column);
      row.push_back(fact != nullptr ? fact->text : "-");
    }
    row.push_back(n > 0 ? changes_between(files[n - 1], files[n]) : "-");
    table.add(row);
  }
  table.print();
}

}  // namespace p3dgrid::tool
