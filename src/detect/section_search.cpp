#include <algorithm>
#include <array>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// Most variables of a record without a matching second marker, whose first one may be wrong.
constexpr std::int64_t most_of_unproven_record = 1000;

/// Most records that are scanned for a block with points.
constexpr std::size_t most_records = 4096;

/// Adjacent sections with these numbers of variables in the file.
Sections in_order(const SectionSearch& search, const std::vector<std::int64_t>& counts) {
  const std::int32_t absent = absent_variable(traits_of(search.form.layout), search.form.coding);
  Sections sections;
  std::int32_t last = 0;
  for (const std::int64_t count : counts) {
    const std::int32_t first = last + 1;
    last += static_cast<std::int32_t>(count);
    if (first <= absent && absent <= last) ++last;
    sections.push_back({first, last});
  }
  return sections;
}

bool differ(const std::vector<std::int32_t>& counts) {
  return std::ranges::adjacent_find(counts, std::ranges::not_equal_to()) != counts.end();
}

/// The sections that the records of one block can hold.
std::optional<Sections> sections_shown(const SectionSearch& search,
                                       std::span<const recordio::ScannedRecord> records,
                                       std::int64_t points) {
  const std::int64_t variable = points * real_bytes(search.form.coding);
  std::vector<std::int64_t> counts;
  for (const recordio::ScannedRecord& record : records) {
    std::int64_t variables = record.length / variable;
    const std::int64_t most = record.sound() ? most_variables : most_of_unproven_record;
    if (record.length % variable != 0 || variables < 1 || variables > most) return std::nullopt;
    if (counts.empty() && search.leading) {
      if (variables != triplet + solution_variables) return std::nullopt;
      variables = solution_variables;
    }
    counts.push_back(variables);
  }
  return in_order(search, counts);
}

/// Chains of flags that announce different records; 0 is a flag without meaning.
std::vector<std::array<std::int32_t, most_flags>> possible_flags(const LayoutTraits& layout) {
  std::vector<std::array<std::int32_t, most_flags>> chains = {{end_of_extensions}};
  if (!layout.extensions) return chains;
  for (const std::int32_t first : {1, 41, 0}) {
    chains.push_back({first, end_of_extensions});
    for (const std::int32_t second : {1, 41, 0}) {
      chains.push_back({first, second, end_of_extensions});
    }
  }
  return chains;
}

}  // namespace

FilePlan SectionSearch::plan(const Sections& sections) const {
  const BlockShape shape = shape_of(sections, leading, outline.older_levels, outline.parameters);
  const bool by_block = differ(outline.functions);
  return {outline.sizes, extents, form, shape,
          by_block ? outline.functions : std::vector<std::int32_t>()};
}

Sections usual_sections(const SectionSearch& search) {
  const auto& functions = search.outline.functions;
  if (functions.empty()) return {{1, solution_variables}};
  return {{1, std::max(1, std::ranges::max(functions))}};
}

bool can_have_stated_sections(const SectionSearch& search) {
  const Sections& sections = *search.form.sections;
  std::int64_t variables = 0;
  for (const Section& section : sections) {
    variables += section.variables();
    if (section.first < 1 || variables > most_variables) return false;
  }
  const Section leading{1, solution_variables};
  if (search.leading && (sections.empty() || sections.front() != leading)) return false;
  const auto& functions = search.outline.functions;
  if (functions.empty()) return true;
  // Blocks with different numbers of variables have one record each.
  return variables_in(sections) == std::ranges::max(functions) &&
         (sections.size() == 1 || !differ(functions));
}

std::vector<Sections> sections_in_records(const SectionSearch& search) {
  const Extents& extents = *search.extents;
  std::size_t block = 0;
  while (block < extents.i.size() && extents.points_of(block) == 0) ++block;
  const auto& functions = search.outline.functions;
  if (block == extents.i.size() || differ(functions)) return {};
  std::vector<recordio::ScannedRecord> records;
  recordio::RecordScanner scanner = search.file.records(search.form.coding);
  std::vector<Sections> tables;
  for (std::size_t count = 1; count <= most_sections; ++count) {
    const std::size_t leading = traits_of(search.form.layout).parameters > 0 ? 1 : 0;
    const std::size_t per_block =
        leading + count + static_cast<std::size_t>(search.outline.older_levels);
    const std::size_t first =
        static_cast<std::size_t>(search.outline.sizes.records()) + block * per_block + leading;
    while (records.size() < std::min(first + count, most_records)) {
      auto record = scanner.next();
      if (!record) return tables;
      records.push_back(std::move(*record));
    }
    if (records.size() < first + count) return tables;
    auto sections =
        sections_shown(search, std::span(records).subspan(first, count), extents.points_of(block));
    if (!sections) return tables;
    if (functions.empty() || variables_in(*sections) == functions.front()) {
      tables.push_back(std::move(*sections));
    }
  }
  return tables;
}

std::vector<Sections> sections_by_size(const SectionSearch& search) {
  const Coding& coding = search.form.coding;
  const bool text = is_text(coding);
  const TextCount& counts = search.file.text_count();
  if (text && !counts.whole) return {};
  const std::int64_t found = text ? counts.values : search.file.size();
  const std::int64_t copies = 1 + search.outline.older_levels;
  const std::int64_t variable = search.extents->points() * (text ? 1 : real_bytes(coding)) * copies;
  if (variable == 0) return {};
  std::vector<Sections> tables;
  for (const auto& flags : possible_flags(traits_of(search.form.layout))) {
    const std::int64_t rest = found - search.plan({}).amount(coding, flags);
    // A line of text that begins with a comma can hold one more value than counted.
    const std::int64_t most = rest + (text ? counts.commas : 0);
    const std::int64_t variables = most / variable;
    if (most < 0 || variables * variable < rest || variables > most_variables) continue;
    if (search.leading && variables < 1) tables.push_back(in_order(search, {solution_variables}));
    if (variables < 1) continue;
    tables.push_back(search.leading ? in_order(search, {solution_variables, variables})
                                    : in_order(search, {variables}));
  }
  return tables;
}

}  // namespace p3dgrid
