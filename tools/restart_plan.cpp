#include "restart_plan.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "restart_header.hpp"
#include "table.hpp"
#include "text_values.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

constexpr std::int64_t parameters_per_block = 4;
constexpr std::int64_t triplet = 3;

void plan_header(std::vector<RecordPlan>& plan, const RestartForm& form,
                 const RestartShape& shape) {
  const auto blocks = static_cast<std::int64_t>(shape.extents.blocks());
  switch (form.layout) {
    case Layout::talven:
      plan.push_back({.integers = 2});
      plan.push_back({.integers = 5, .reals = 1});
      if (shape.flow_parameters) plan.push_back({.integers = 1, .doubles = 8});
      break;
    case Layout::time_step:
    case Layout::triplets:
      plan.push_back({.integers = 2, .reals = 1});
      break;
    case Layout::single_block:
      plan.push_back({.integers = 4, .reals = 1});
      break;
    case Layout::solution:
    case Layout::function:
      if (form.multiblock) plan.push_back({.integers = 1});
      plan.push_back({.integers = (form.layout == Layout::function ? 4 : 3) * blocks});
      return;
    case Layout::bare:
      return;
  }
  if (!holds_extents(form.layout)) return;
  plan.insert(plan.end(), static_cast<std::size_t>(blocks), {.integers = 3});
}

void plan_block(std::vector<RecordPlan>& plan, const RestartForm& form, const RestartShape& shape,
                std::int64_t points) {
  if (holds_parameters(form.layout)) plan.push_back({.reals = parameters_per_block});
  if (shape.triplets) plan.push_back({.reals = (triplet + solution_variables) * points});
  for (std::size_t n = shape.triplets ? 1 : 0; n < shape.sections.size(); ++n) {
    plan.push_back({.reals = shape.sections[n].variables() * points});
  }
  for (int level = 0; level < shape.older_levels; ++level) {
    plan.push_back({.reals = shape.sections.front().variables() * points});
  }
}

/// Variables that a flag announces, by its position in the chain from 0.
std::int64_t variables_announced(integer flag, std::size_t position) {
  if (flag == 1) return 5;
  return flag == 41 && position <= 1 ? 3 : 0;
}

void plan_extensions(std::vector<RecordPlan>& plan, const RestartShape& shape) {
  for (std::size_t m = 0; m < shape.flags.size(); ++m) {
    plan.push_back({.integers = 1});
    if (shape.flags[m] == end_of_extensions) return;
    const std::int64_t variables = variables_announced(shape.flags[m], m);
    if (variables == 0) continue;
    for (std::size_t b = 0; b < shape.extents.i.size(); ++b) {
      plan.push_back({.reals = variables * shape.extents.points_of(b)});
    }
  }
}

/// Steps over the records of an unformatted file by their markers.
class RecordWalk {
 public:
  explicit RecordWalk(const std::string& path) : stream_(path, std::ios::binary) {}

  /// Steps over the next record, which may be stored in pieces. Its length; none if its markers
  /// are no pair.
  std::optional<std::uint64_t> next_length() {
    std::uint64_t total = 0;
    for (;;) {
      const auto head = marker();
      if (!head) return std::nullopt;
      const auto piece = static_cast<std::uint64_t>(std::abs(std::int64_t{*head}));
      stream_.seekg(static_cast<std::streamoff>(piece), std::ios::cur);
      const auto tail = marker();
      if (!tail || std::abs(std::int64_t{*tail}) != std::abs(std::int64_t{*head})) {
        return std::nullopt;
      }
      total += piece;
      if (*head >= 0) return total;
    }
  }

  [[nodiscard]] bool at_end() { return stream_.peek() == std::ifstream::traits_type::eof(); }

 private:
  std::optional<std::int32_t> marker() {
    std::array<char, 4> bytes{};
    if (!stream_.read(bytes.data(), bytes.size())) return std::nullopt;
    return std::bit_cast<std::int32_t>(bytes);
  }

  std::ifstream stream_;
};

Misfit misfit_of_records(const std::string& path, const std::vector<RecordPlan>& plan,
                         std::uint64_t real_bytes) {
  RecordWalk walk(path);
  for (std::size_t n = 0; n < plan.size(); ++n) {
    const auto length = walk.next_length();
    const std::uint64_t expected = plan[n].bytes(real_bytes);
    if (length == expected) continue;
    const std::string found =
        length ? "holds " + counted(static_cast<std::int64_t>(*length), "byte") : "is damaged";
    return {"record " + std::to_string(n + 1) + " " + found + " where " + std::to_string(expected) +
            " are expected"};
  }
  return {"", !walk.at_end()};
}

Misfit misfit_of_bytes(std::uint64_t length, const std::vector<RecordPlan>& plan,
                       std::uint64_t real_bytes) {
  std::uint64_t expected = 0;
  for (const RecordPlan& record : plan) expected += record.bytes(real_bytes);
  if (length == expected) return {};
  return {"the file holds " + std::to_string(length) + " bytes where " + std::to_string(expected) +
          " are expected"};
}

Misfit misfit_of_text(const std::string& path, const std::vector<RecordPlan>& plan) {
  const auto found = count_values(path);
  std::int64_t expected = 0;
  for (const RecordPlan& record : plan) expected += record.values();
  if (!found || *found == expected) return {};
  return {"the file holds " + counted(*found, "value") + " where " + std::to_string(expected) +
          " are expected"};
}

}  // namespace

std::uint64_t RecordPlan::bytes(std::uint64_t real_bytes) const {
  return static_cast<std::uint64_t>(integers) * 4 + static_cast<std::uint64_t>(reals) * real_bytes +
         static_cast<std::uint64_t>(doubles) * 8;
}

RestartShape shape_of(const RestartForm& form, const Sections& sections, const Extents& extents) {
  RestartShape shape{.extents = extents, .sections = sections, .triplets = reads_triplets(form)};
  if (form.layout == Layout::talven) {
    shape.flow_parameters = talven_parameters_read();
    const integer scheme = mod_p3dgrid::itimeint;
    shape.older_levels = scheme == 3 ? 2 : scheme >= 2 ? 1 : 0;
  }
  return shape;
}

std::vector<RecordPlan> plan_of(const RestartForm& form, const RestartShape& shape) {
  std::vector<RecordPlan> plan;
  plan_header(plan, form, shape);
  for (std::size_t b = 0; b < shape.extents.i.size(); ++b) {
    plan_block(plan, form, shape, shape.extents.points_of(b));
  }
  if (form.layout == Layout::single_block) plan_extensions(plan, shape);
  return plan;
}

Misfit misfit_of(const std::string& path, const RestartForm& form,
                 const std::vector<RecordPlan>& plan) {
  std::error_code error;
  const std::uint64_t length = std::filesystem::file_size(path, error);
  if (error) return {};
  const std::uint64_t real_bytes = form.precision == Precision::double_precision ? 8 : 4;
  switch (form.encoding) {
    case Encoding::unformatted:
      return misfit_of_records(path, plan, real_bytes);
    case Encoding::binary:
      return misfit_of_bytes(length, plan, real_bytes);
    case Encoding::formatted:
      break;
  }
  return misfit_of_text(path, plan);
}

}  // namespace p3dgrid
