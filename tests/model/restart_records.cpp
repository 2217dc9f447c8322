#include "model/restart_records.hpp"

#include <algorithm>

#include "support/scratch_folder.hpp"

namespace model {
namespace {

using mod_p3dgrid::integer;

int points_of(int block) {
  const auto extents = extents_of(block);
  return extents[0] * extents[1] * extents[2];
}

void add_extents(Record& record, int block) {
  for (const integer extent : extents_of(block)) record.emplace_back(extent);
}

void add_values(Record& record, int variables, int block) {
  for (int n = 0; n < variables * points_of(block); ++n) record.emplace_back(Real{n + 0.5});
}

Record talven_run(const Operation& of) {
  return {of.blocks, 6, of.time_integration, of.variable + 2, step_count(of), Real{step_size(of)}};
}

std::vector<Record> header_records(const Operation& of) {
  std::vector<Record> records;
  Record extents;
  switch (of.layout) {
    case 0:
      records.push_back({of.variable, of.equation_set});
      records.push_back(talven_run(of));
      if (of.equation_set == 1) {
        Record& parameters = records.emplace_back(Record{of.variable + 3});
        for (int n = 0; n < 8; ++n) parameters.emplace_back(WideReal{talven_value(of, n)});
      }
      break;
    case 1:
    case 100:
      records.push_back({step_count(of), Real{step_size(of)}, of.blocks});
      break;
    case 101:
      add_extents(extents, 0);
      extents.emplace_back(step_count(of));
      extents.emplace_back(Real{step_size(of)});
      records.push_back(extents);
      break;
    case 2:
    case 3:
      if (of.multiblock) records.push_back({of.blocks});
      for (int b = 0; b < of.blocks; ++b) {
        add_extents(extents, b);
        if (of.layout == 3) extents.emplace_back(of.last_variable());
      }
      records.push_back(extents);
      break;
    default:
      break;
  }
  for (int b = 0; of.layout < 2 && b < of.blocks; ++b) add_extents(records.emplace_back(), b);
  return records;
}

void add_block(std::vector<Record>& records, const Operation& of, int block, bool leading) {
  if (of.layout == 2) {
    Record& parameters = records.emplace_back();
    for (int m = 1; m <= 4; ++m) parameters.emplace_back(Real{parameter(of, block, m)});
  }
  add_values(records.emplace_back(), leading ? 8 : 5, block);
  if (of.sections == 2) add_values(records.emplace_back(), 2, block);
  if (of.layout != 0 || of.text()) return;
  const int older_levels = of.time_integration == 3 ? 2 : of.time_integration == 2 ? 1 : 0;
  for (int level = 0; level < older_levels; ++level) add_values(records.emplace_back(), 5, block);
}

}  // namespace

double parameter(const Operation& operation, int block, int m) {
  return block * 10 + m + operation.variable / 8.0;
}
double talven_value(const Operation& operation, int n) {
  return n + operation.variable / 4.0;
}
double step_size(const Operation& operation) {
  return operation.variable * 0.25;
}
integer step_count(const Operation& operation) {
  return 1000 + operation.variable;
}

std::vector<Record> grid_records(const Operation& operation, int blocks) {
  std::vector<Record> records;
  if (operation.multiblock) records.push_back({blocks});
  Record dimensions;
  for (int b = 0; b < blocks; ++b) add_extents(dimensions, b);
  records.push_back(dimensions);
  for (int b = 0; b < blocks; ++b) add_values(records.emplace_back(), 3, b);
  return records;
}

std::vector<Record> restart_records(const Operation& operation, bool leading) {
  std::vector<Record> records = header_records(operation);
  for (int b = 0; b < operation.blocks; ++b) add_block(records, operation, b, leading);
  const auto flags = flags_of(operation);
  for (int m = 0; operation.layout == 101 && m < 3; ++m) {
    const integer flag = flags[static_cast<std::size_t>(m)];
    records.push_back({flag});
    if (flag == 999) break;
    if (flag == 1) add_values(records.emplace_back(), 5, 0);
    if (flag == 41 && m < 2) add_values(records.emplace_back(), 3, 0);
  }
  return records;
}

std::string encoded(const Operation& operation, const std::vector<Record>& records) {
  const auto missing = static_cast<std::size_t>(operation.missing);
  const std::size_t kept = records.size() - std::min(missing, records.size());
  test_support::Bytes file;
  std::string text;
  for (std::size_t r = 0; r < kept; ++r) {
    test_support::Bytes bytes;
    for (const Item& item : records[r]) {
      if (const integer* const number = std::get_if<integer>(&item)) {
        bytes.i4(*number);
        text += " " + std::to_string(*number);
        continue;
      }
      const Real* const real = std::get_if<Real>(&item);
      const double value = real != nullptr ? real->value : std::get<WideReal>(item).value;
      text += " " + std::to_string(value);
      if (real != nullptr && !operation.dblprec) {
        bytes.r4(static_cast<float>(value));
      } else {
        bytes.r8(value);
      }
    }
    text += "\n";
    if (operation.iformat == 0) {
      file.record(bytes);
    } else {
      file.append(bytes);
    }
  }
  return operation.text() ? text : file.str();
}

}  // namespace model
