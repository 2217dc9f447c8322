#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace interop {

/// A text file and the list-directed reads to make of it, one letter each:
///   i  5 integers                        s  1 integer
///   r  4 and then 2 singles of rows      x  1 single
///   d  6 doubles                         e  nothing
///   m  3 integers, 4 singles, 2 integers, 2 doubles
///   g  three rows of 4 singles, then 4 integers, as in a grid
struct ListCase {
  std::string text;
  std::string reads;
};

/// `count` cases, the same for the same seed: all forms of values, separators, repeat counts, null
/// values and line ends, a few of them not to be understood.
[[nodiscard]] std::vector<ListCase> generated_list_cases(unsigned seed, std::size_t count);

/// Texts on the edge of what can be understood, each with several line ends, reads and lines
/// behind.
[[nodiscard]] std::vector<ListCase> odd_list_cases();

}  // namespace interop
