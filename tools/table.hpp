#pragma once

#include <cstdint>
#include <p3dgrid/form.hpp>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// Rows of text in right-aligned columns, each as wide as its widest entry.
class Table {
 public:
  explicit Table(std::vector<std::string> header) { rows_.push_back(std::move(header)); }

  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  void print() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

/// The shortest text that reads back as this value.
[[nodiscard]] std::string digits(float value);
[[nodiscard]] std::string digits(double value);

/// "1 block", "3 blocks".
[[nodiscard]] std::string counted(std::int64_t count, const std::string& noun);

/// "3 blocks, 100 points".
[[nodiscard]] std::string counted(const Extents& extents);

}  // namespace p3dgrid::tool
