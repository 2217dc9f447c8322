#include "detect/outline.hpp"

#include "restart_plan.hpp"
#include "sections.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

// Sums and products of lengths stay far from the limits of 64 bits.
constexpr std::int64_t most_points = std::int64_t{1} << 36;

bool take(HeaderReader& header, integer& value) {
  const auto found = header.integer();
  value = found.value_or(0);
  return found.has_value();
}

bool take_count(HeaderReader& header, Outline& outline) {
  return take(header, outline.blocks) && outline.blocks >= 1 &&
         static_cast<std::uint64_t>(outline.blocks) <= header.most_blocks();
}

bool take_block(HeaderReader& header, Outline& outline, std::int64_t& points) {
  integer i = 0;
  integer j = 0;
  integer k = 0;
  if (!take(header, i) || !take(header, j) || !take(header, k)) return false;
  if (i < 0 || j < 0 || k < 0) return false;
  const std::int64_t plane = std::int64_t{i} * j;  // 31 bits times 31 bits
  if (plane > most_points || (plane > 0 && k > most_points / plane)) return false;
  points += plane * k;
  outline.extents.i.push_back(i);
  outline.extents.j.push_back(j);
  outline.extents.k.push_back(k);
  return points <= most_points;
}

/// The extents of all blocks in one record, with `counts` the number of functions behind each.
bool take_blocks_in_one(HeaderReader& header, Outline& outline, bool counts) {
  std::int64_t points = 0;
  header.begin_record();
  for (integer b = 0; b < outline.blocks; ++b) {
    if (!take_block(header, outline, points)) return false;
    if (!counts) continue;
    integer count = 0;
    if (!take(header, count) || count < 0 || count > most_variables) return false;
    outline.functions.push_back(count);
  }
  return true;
}

bool take_block_records(HeaderReader& header, Outline& outline) {
  std::int64_t points = 0;
  for (integer b = 0; b < outline.blocks; ++b) {
    header.begin_record();
    if (!take_block(header, outline, points)) return false;
  }
  return true;
}

bool take_talven(HeaderReader& header, const RestartForm& form, Outline& outline) {
  integer version = 0;
  integer equations = 0;
  integer variables = 0;
  integer integration = 0;
  integer skipped = 0;
  header.begin_record();
  if (!take(header, version) || !take(header, equations)) return false;
  header.begin_record();
  if (!take_count(header, outline) || !take(header, variables) || !take(header, integration) ||
      !take(header, skipped) || !take(header, skipped) || !header.skip_real(form.precision)) {
    return false;
  }
  outline.flow_parameters = equations == equations_with_parameters;
  outline.older_levels = older_levels(form.encoding, integration);
  if (outline.flow_parameters) {
    header.begin_record();
    if (!take(header, skipped)) return false;
    for (int n = 0; n < 8; ++n) {
      if (!header.skip_real(Precision::double_precision)) return false;
    }
  }
  return take_block_records(header, outline);
}

bool take_step_and_count(HeaderReader& header, Outline& outline, Precision precision) {
  integer step = 0;
  header.begin_record();
  return take(header, step) && header.skip_real(precision) && take_count(header, outline);
}

bool take_single_block(HeaderReader& header, Outline& outline, Precision precision) {
  std::int64_t points = 0;
  integer step = 0;
  header.begin_record();
  return take_block(header, outline, points) && take(header, step) && header.skip_real(precision);
}

bool take_count_if(bool multiblock, HeaderReader& header, Outline& outline) {
  if (!multiblock) return true;
  header.begin_record();
  return take_count(header, outline);
}

bool take_header(HeaderReader& header, const RestartForm& form, Outline& outline) {
  switch (form.layout) {
    case Layout::talven:
      return take_talven(header, form, outline);
    case Layout::time_step:
      return take_step_and_count(header, outline, form.precision) &&
             take_block_records(header, outline);
    case Layout::triplets:
      return take_step_and_count(header, outline, form.precision);
    case Layout::single_block:
      return take_single_block(header, outline, form.precision);
    case Layout::solution:
    case Layout::function:
      return take_count_if(form.multiblock, header, outline) &&
             take_blocks_in_one(header, outline, form.layout == Layout::function);
    case Layout::bare:
      break;
  }
  return true;
}

}  // namespace

std::optional<Outline> grid_outline(HeaderReader& header, bool multiblock) {
  Outline outline;
  const bool taken =
      take_count_if(multiblock, header, outline) && take_blocks_in_one(header, outline, false);
  return taken ? std::optional(outline) : std::nullopt;
}

std::optional<Outline> restart_outline(HeaderReader& header, const RestartForm& form) {
  Outline outline;
  return take_header(header, form, outline) ? std::optional(outline) : std::nullopt;
}

}  // namespace p3dgrid
