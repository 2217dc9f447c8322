#include <algorithm>
#include <array>

#include "console.hpp"
#include "info.hpp"
#include "options.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr const char* none = "-";

/// For files with more blocks a summary is printed, and only the blocks that `--blocks` selects.
constexpr std::int32_t most_blocks_shown = 20;

void print_below_blank(const Table& table) {
  print_line("");
  table.print();
}

void append(std::vector<std::string>& row, const std::vector<std::int64_t>& numbers) {
  for (const std::int64_t number : numbers) row.push_back(std::to_string(number));
}

void append_place(std::vector<std::string>& row, const std::optional<Extreme>& extreme) {
  if (extreme) return append(row, {extreme->block, extreme->i, extreme->j, extreme->k});
  row.insert(row.end(), 4, none);
}

/// Prints ranges with NaN and infinity counts, and the points of the smallest and largest values.
void print_variables(const std::vector<Survey>& surveys, const std::string& what) {
  Table ranges({what, "", "min", "max", "NaN", "infinite"});
  Table places({what, "min in block", "i", "j", "k", "max in block", "i", "j", "k"});
  for (const Survey& survey : surveys) {
    ranges.add({survey.label, survey.name, text_of(survey.low), text_of(survey.high),
                std::to_string(survey.nan), std::to_string(survey.infinite)});
    std::vector<std::string> row = {survey.label};
    append_place(row, survey.low);
    append_place(row, survey.high);
    places.add(row);
  }
  print_below_blank(ranges);
  print_below_blank(places);
}

void print_beginning(const std::string& path, const Found& found, const std::string& form,
                     const std::string& contents) {
  print_line("file    " + path);
  print_line("read as " + form);
  print_line("because " + found.reason);
  print_line("holds   " + contents);
}

/// Prints the smallest and the largest of many blocks.
void print_summary_of(const Extents& extents, bool shows_blocks) {
  if (extents.blocks() <= most_blocks_shown) return;
  const auto line = [&](const char* label, std::size_t block) {
    print_line(label + counted(extents.points_of(block), "point") + " in block " +
               std::to_string(block + 1) + ", " + extents.of(block).text());
  };
  std::size_t smallest = 0;
  std::size_t largest = 0;
  for (std::size_t b = 1; b < extents.i.size(); ++b) {
    if (extents.points_of(b) < extents.points_of(smallest)) smallest = b;
    if (extents.points_of(b) > extents.points_of(largest)) largest = b;
  }
  line("fewest  ", smallest);
  line("most    ", largest);
  if (!shows_blocks) print_line("blocks  --blocks all shows all of them, --blocks 1,3-5 some");
}

/// Additional columns of the table of blocks.
struct BlockColumns {
  std::vector<std::string> titles;
  std::vector<std::vector<std::int64_t>> rows;
};

/// @param shown       blocks, from 0
/// @param with_total  append a row for all blocks
void print_extents(const Extents& extents, const std::vector<std::int32_t>& shown,
                   const BlockColumns& more, bool with_total) {
  if (shown.empty() && !with_total) return;
  std::vector<std::string> header = {"block", "i", "j", "k", "points"};
  header.insert(header.end(), more.titles.begin(), more.titles.end());
  Table table(header);
  std::vector<std::int64_t> totals(more.titles.size());
  for (const std::int32_t block : shown) {
    const auto b = static_cast<std::size_t>(block);
    std::vector<std::string> row = {std::to_string(b + 1)};
    append(row, {extents.i[b], extents.j[b], extents.k[b], extents.points_of(b)});
    if (!more.rows.empty()) append(row, more.rows[b]);
    table.add(row);
  }
  for (const std::vector<std::int64_t>& row : more.rows) {
    for (std::size_t n = 0; n < totals.size(); ++n) totals[n] += row[n];
  }
  if (with_total) {
    std::vector<std::string> row = {"all", "", "", "", std::to_string(extents.points())};
    append(row, totals);
    table.add(row);
  }
  print_below_blank(table);
}

void print_boxes(const GridReport& report) {
  Box all;
  for (const GridFindings& block : report.blocks) all.include(block.box);
  const Precision precision = precision_in_memory(report.found.grid().coding);
  std::vector<std::string> header = {"block", "x min", "x max", "y min", "y max", "z min", "z max"};
  if (all.not_finite > 0) header.emplace_back("not finite");
  Table table(header);
  const auto add = [&](const std::string& label, const Box& box) {
    std::vector<std::string> row = {label};
    for (const Range& range : box.ranges) {
      row.push_back(range.empty() ? none : digits(range.low, precision));
      row.push_back(range.empty() ? none : digits(range.high, precision));
    }
    if (all.not_finite > 0) row.push_back(std::to_string(box.not_finite));
    table.add(row);
  };
  for (const std::int32_t block : report.shown) {
    add(std::to_string(block + 1), report.blocks[static_cast<std::size_t>(block)].box);
  }
  add("all", all);
  print_below_blank(table);
}

void print_header_values(const RestartForm& form, const RunData& run) {
  const std::vector<HeaderValue> values = header_values(form, run);
  if (!values.empty()) print_line("");
  for (const HeaderValue& value : values) {
    constexpr std::size_t width = 24;
    std::string label = value.label;
    label.resize(std::max(width, label.size() + 1), ' ');
    print_line(label + value.text(form));
  }
}

void print_flow_parameters(const RestartReport& report) {
  const std::vector<std::vector<double>>& parameters = report.body->parameters;
  const auto count = static_cast<std::int32_t>(parameters.front().size());
  std::vector<std::string> header = parameter_names(count, report.header.run.species);
  header.insert(header.begin(), "block");
  Table table(header);
  const auto add = [&](const std::string& label, const std::vector<double>& block) {
    std::vector<std::string> row = {label};
    for (const double value : block) row.push_back(digits_in(report.header.form, value));
    table.add(row);
  };
  for (const std::int32_t block : report.shown) {
    add(std::to_string(block + 1), parameters[static_cast<std::size_t>(block)]);
  }
  if (report.shown.empty()) {
    const auto is_first = [&](const auto& block) { return block == parameters.front(); };
    if (!std::ranges::all_of(parameters, is_first)) return;
    add("all", parameters.front());
  }
  print_below_blank(table);
}

std::string contents_of(const RestartReport& report) {
  std::string text = counted(report.header.blocks, "block");
  if (report.body) text += ", " + counted(report.header.extents.points(), "point");
  const std::optional<Sections> sections = report.sections();
  if (sections && (report.body || !report.counted_variables())) {
    text += ", " + counted(variables_in(*sections), "variable") + " in the sections " +
            describe(*sections) + (report.body ? "" : " as stated");
  }
  return text;
}

}  // namespace

std::vector<std::int32_t> shown_blocks(const std::string& list, const std::string& path,
                                       std::int32_t count) {
  if (list.empty() && count > most_blocks_shown) return {};
  return blocks_in(list == "all" ? "" : list, path, count);
}

void print_info(const std::string& path, const GridReport& report) {
  const GridForm& form = report.found.grid();
  print_beginning(path, report.found, describe(form), counted(report.extents));
  print_summary_of(report.extents, !report.shown.empty());
  BlockColumns blanking;
  if (form.iblank) blanking.titles = {"blank 0", "blank 1", "blank <0", "blank >1"};
  for (const GridFindings& block : report.blocks) {
    if (form.iblank) blanking.rows.emplace_back(block.blanking.begin(), block.blanking.end());
  }
  print_extents(report.extents, report.shown, blanking, true);
  print_boxes(report);
  print_variables(report.coordinates(), "coordinate");
}

void print_info(const std::string& path, const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  const LayoutTraits& layout = traits_of(form.layout);
  print_beginning(path, report.found, describe(form) + " (" + layout.meaning + ")",
                  contents_of(report));
  print_summary_of(report.header.extents, !report.shown.empty());
  if (!report.body && report.header.extents.i.empty()) {
    print_line("extents not in the file; --grid GRID shows them, and the ranges of its variables");
  } else if (!report.found.reading.own_extents) {
    print_line("extents those of the grid; the file gives none");
  }
  if (report.body) {
    for (const Section& gap : report.header.missing()) {
      print_line("skips   the variables " + describe(Sections{gap}));
    }
  }
  print_header_values(form, report.header.run);
  if (report.body && layout.parameters > 0) print_flow_parameters(report);
  BlockColumns functions;
  if (report.counted_variables()) {
    functions.titles = {"functions"};
    for (const std::int32_t count : report.header.variables) functions.rows.push_back({count});
  }
  const Extents& extents = report.header.extents;
  if (!extents.i.empty()) print_extents(extents, report.shown, functions, false);
  if (report.body) print_variables(report.surveys(), "variable");
}

}  // namespace p3dgrid::tool
