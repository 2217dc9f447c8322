#include "detect/section_search.hpp"

#include <algorithm>

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

// What stands where a marker would be can be any number; one that no second marker bears out is
// taken for a length only where it asks for as many variables as solutions have.
constexpr std::uint64_t most_of_unproven_record = 1000;

/// The table of sections with so many variables, one after another.
Sections in_order(const std::vector<std::int64_t>& counts) {
  Sections sections;
  integer last = 0;
  for (const std::int64_t count : counts) {
    sections.push_back({last + 1, last + static_cast<integer>(count)});
    last += static_cast<integer>(count);
  }
  return sections;
}

Sections usual_sections(const RestartForm& form, const std::vector<integer>& functions) {
  if (form.layout != Layout::function) return {{1, solution_variables}};
  return {{1, std::max(1, std::ranges::max(functions))}};
}

/// First block that has points; none where no block has.
std::optional<std::size_t> first_with_points(const Extents& extents) {
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    if (extents.points_of(b) > 0) return b;
  }
  return std::nullopt;
}

/// What is to be found out of the records of an unformatted file.
struct RecordSearch {
  RecordList& records;
  std::uint64_t real_bytes;
  std::size_t header;    ///< records before the first block
  std::size_t leading;   ///< records of a block before its sections
  std::size_t trailing;  ///< and behind them
  bool triplets;         ///< the first section stands with the triplets in one record
  std::size_t block;     ///< first block that has points
  std::int64_t points;   ///< of that block
};

/// The table of `count` sections that the records of one block show, if they can hold it.
std::optional<Sections> sections_shown(const RecordSearch& search, std::size_t count) {
  const std::size_t per_block = search.leading + count + search.trailing;
  const std::size_t first = search.header + search.block * per_block + search.leading;
  std::vector<std::int64_t> counts;
  for (std::size_t n = 0; n < count; ++n) {
    const Record* record = search.records.at(first + n);
    if (record == nullptr) return std::nullopt;
    const auto variable = static_cast<std::uint64_t>(search.points) * search.real_bytes;
    std::uint64_t variables = record->length / variable;
    const bool sound = record->state == Record::State::sound;
    const std::uint64_t most = sound ? most_variables : most_of_unproven_record;
    if (record->length % variable != 0 || variables < 1 || variables > most) {
      return std::nullopt;
    }
    if (n == 0 && search.triplets) {
      if (variables != 3 + solution_variables) return std::nullopt;
      variables = solution_variables;
    }
    counts.push_back(static_cast<std::int64_t>(variables));
  }
  return in_order(counts);
}

std::vector<Sections> shown_by_records(const RecordSearch& search) {
  std::vector<Sections> tables;
  for (std::size_t count = 1; count <= most_sections; ++count) {
    const auto sections = sections_shown(search, count);
    if (!sections) break;
    tables.push_back(*sections);
  }
  return tables;
}

/// Variables of one section that fill what the rest of the plan leaves of the file.
std::optional<Sections> shown_by_size(Evidence& file, const Coding& coding, const RestartForm& form,
                                      RestartShape shape) {
  const std::int64_t copies = 1 + shape.older_levels;
  shape.older_levels = 0;
  shape.sections.clear();
  const bool text = coding.encoding == Encoding::formatted;
  std::int64_t rest = text ? file.lines().values : static_cast<std::int64_t>(file.size());
  for (const RecordPlan& record : plan_of(form, shape)) {
    rest -= text ? record.values() : static_cast<std::int64_t>(record.bytes(coding.real_bytes()));
  }
  const std::int64_t variable =
      shape.extents.points() * (text ? 1 : static_cast<std::int64_t>(coding.real_bytes())) * copies;
  // Of text each line that begins with a comma may hold a value more than has been counted.
  const std::int64_t most = rest + (text ? file.lines().commas : 0);
  if (variable == 0 || most < 0) return std::nullopt;
  const std::int64_t variables = most / variable;
  if (variables * variable < rest) return std::nullopt;
  if (variables > most_variables) return std::nullopt;
  if (!shape.triplets) return variables < 1 ? std::nullopt : std::optional(in_order({variables}));
  return variables < 1 ? in_order({solution_variables}) : in_order({solution_variables, variables});
}

bool can_be_stated(const RestartForm& form, const RestartShape& shape,
                   const std::vector<integer>& functions) {
  if (shape.triplets && form.sections->front() != Section{1, solution_variables}) return false;
  if (form.layout != Layout::function) return true;
  return shape.functions.empty() && variables_in(*form.sections) == functions.front();
}

/// Records of a body that come behind its blocks.
std::size_t flags_in(const RestartForm& form, const RestartShape& shape) {
  if (form.layout != Layout::single_block) return 0;
  std::size_t count = 1;
  for (const integer flag : shape.flags) {
    if (flag == end_of_extensions) break;
    ++count;
  }
  return count;
}

/// Records before the first block: the plan of a file without blocks is its header and flags.
std::size_t header_records(const RestartForm& form, const RestartShape& shape) {
  RestartShape empty = shape;
  empty.sections.clear();
  empty.extents = {};
  const bool one_for_each_block = form.layout == Layout::talven || form.layout == Layout::time_step;
  return plan_of(form, empty).size() - flags_in(form, shape) +
         (one_for_each_block ? shape.extents.i.size() : 0);
}

std::vector<Sections> found_in_records(Evidence& file, const Coding& coding,
                                       const RestartForm& form, const RestartShape& shape,
                                       const std::vector<integer>& functions) {
  const auto block = first_with_points(shape.extents);
  if (!block || !shape.functions.empty()) return {};
  auto tables = shown_by_records({.records = file.records(coding.order),
                                  .real_bytes = coding.real_bytes(),
                                  .header = header_records(form, shape),
                                  .leading = holds_parameters(form.layout) ? std::size_t{1} : 0,
                                  .trailing = static_cast<std::size_t>(shape.older_levels),
                                  .triplets = shape.triplets,
                                  .block = *block,
                                  .points = shape.extents.points_of(*block)});
  if (form.layout != Layout::function) return tables;
  std::erase_if(tables, [&](const Sections& sections) {
    return variables_in(sections) != functions.front();
  });
  return tables;
}

}  // namespace

std::vector<Sections> possible_sections(Evidence& file, const Coding& coding,
                                        const RestartForm& form, const RestartShape& shape,
                                        const std::vector<integer>& functions) {
  if (form.sections) {
    if (!can_be_stated(form, shape, functions)) return {};
    return {*form.sections};
  }
  std::vector<Sections> tables;
  if (coding.encoding == Encoding::unformatted) {
    tables = found_in_records(file, coding, form, shape, functions);
  } else if (form.layout != Layout::function) {
    if (const auto sections = shown_by_size(file, coding, form, shape)) tables = {*sections};
  }
  const Sections usual = usual_sections(form, functions);
  if (std::ranges::find(tables, usual) == tables.end()) tables.push_back(usual);
  return tables;
}

}  // namespace p3dgrid
