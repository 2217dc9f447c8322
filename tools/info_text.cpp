#include <algorithm>

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

/// Counts for each block, in additional columns of the table of blocks.
struct BlockColumns {
  std::vector<std::string> titles;
  std::vector<std::vector<std::int64_t>> rows;
};

BlockColumns counts_of(const Report& report) {
  BlockColumns counts;
  if (report.counts_by_block()) {
    counts.titles = {"functions"};
    for (const std::int32_t count : report.header->variables) counts.rows.push_back({count});
  } else if (!report.header && report.found.grid().iblank) {
    counts.titles = {"blank 0", "blank 1", "blank <0", "blank >1"};
    for (const GridFindings& block : report.blocks) {
      counts.rows.emplace_back(block.blanking.begin(), block.blanking.end());
    }
  }
  return counts;
}

/// With a row for all blocks of a grid.
void print_extents(const Report& report) {
  const Extents& extents = report.extents;
  if (report.shown.empty() && report.header) return;
  const BlockColumns more = counts_of(report);
  std::vector<std::string> header = {"block", "i", "j", "k", "points"};
  header.insert(header.end(), more.titles.begin(), more.titles.end());
  Table table(header);
  for (const std::int32_t block : report.shown) {
    const auto b = static_cast<std::size_t>(block);
    std::vector<std::string> row = {std::to_string(b + 1)};
    append(row, {extents.i[b], extents.j[b], extents.k[b], extents.points_of(b)});
    if (!more.rows.empty()) append(row, more.rows[b]);
    table.add(row);
  }
  if (!report.header) {
    std::vector<std::int64_t> totals(more.titles.size());
    for (const std::vector<std::int64_t>& row : more.rows) {
      for (std::size_t n = 0; n < totals.size(); ++n) totals[n] += row[n];
    }
    std::vector<std::string> row = {"all", "", "", "", std::to_string(extents.points())};
    append(row, totals);
    table.add(row);
  }
  print_below_blank(table);
}

void print_boxes(const Report& report) {
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

void print_header_values(const Report& report) {
  const std::vector<HeaderValue> values = report.header_values();
  if (!values.empty()) print_line("");
  for (const HeaderValue& value : values) {
    constexpr std::size_t width = 24;
    std::string label = value.label;
    label.resize(std::max(width, label.size() + 1), ' ');
    print_line(label + value.text(report.header->form));
  }
}

void print_flow_parameters(const Report& report) {
  const std::vector<std::vector<double>>& parameters = report.parameters;
  if (parameters.empty()) return;
  const auto count = static_cast<std::int32_t>(parameters.front().size());
  std::vector<std::string> header = parameter_names(count, report.header->run.species);
  header.insert(header.begin(), "block");
  Table table(header);
  const auto add = [&](const std::string& label, const std::vector<double>& block) {
    std::vector<std::string> row = {label};
    for (const double value : block) row.push_back(digits_in(report.header->form, value));
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

std::string contents_of(const Report& report) {
  if (!report.header) return counted(report.extents);
  const bool is_read = report.surveys.has_value();
  std::string text = counted(report.header->blocks, "block");
  if (is_read) text += ", " + counted(report.extents.points(), "point");
  const std::optional<Sections> sections = report.sections();
  if (sections && (is_read || !report.counts_by_block())) {
    text += ", " + counted(variables_in(*sections), "variable") + " in the sections " +
            describe(*sections) + (is_read ? "" : " as stated");
  }
  return text;
}

/// Prints what is missing from a restart file.
void print_gaps(const Report& report) {
  if (report.extents.i.empty()) {
    print_line("extents not in the file; --grid GRID shows them, and the ranges of its variables");
  } else if (!report.found.reading.own_extents) {
    print_line("extents those of the grid; the file gives none");
  }
  if (!report.surveys) return;
  for (const Section& gap : report.header->missing()) {
    print_line("skips   the variables " + describe(Sections{gap}));
  }
}

}  // namespace

std::vector<std::int32_t> shown_blocks(const std::string& list, const std::string& path,
                                       std::int32_t count) {
  if (list.empty() && count > most_blocks_shown) return {};
  return blocks_in(list == "all" ? "" : list, path, count);
}

void print_info(const std::string& path, const Report& report) {
  const std::string meaning =
      report.header ? std::string(" (") + traits_of(report.header->form.layout).meaning + ")" : "";
  print_line("file    " + path);
  print_line("read as " + report.form() + meaning);
  print_line("because " + report.found.reason);
  print_line("holds   " + contents_of(report));
  print_summary_of(report.extents, !report.shown.empty());
  if (report.header) print_gaps(report);
  print_header_values(report);
  print_flow_parameters(report);
  print_extents(report);
  if (!report.header) print_boxes(report);
  if (report.surveys) print_variables(*report.surveys, report.header ? "variable" : "coordinate");
}

}  // namespace p3dgrid::tool
