#pragma once

#include <array>
#include <charconv>
#include <concepts>
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
template <std::floating_point Real>
[[nodiscard]] std::string digits(Real value) {
  std::array<char, 32> text;
  return {text.begin(), std::to_chars(text.begin(), text.end(), value).ptr};
}
/// The same for a value of this precision.
[[nodiscard]] inline std::string digits(double value, Precision precision) {
  return precision == Precision::double_precision ? digits(value)
                                                  : digits(static_cast<float>(value));
}

/// At most that many digits, without zeros at the end.
[[nodiscard]] std::string rounded(double value, int digits);

/// "1 block", "3 blocks".
[[nodiscard]] std::string counted(std::int64_t count, const std::string& noun);

/// "3 blocks, 100 points".
[[nodiscard]] std::string counted(const Extents& extents);

}  // namespace p3dgrid::tool
