#pragma once

#include <string>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Forms that other programs write and nothing here reads, known by the same arithmetic: grids and
/// solutions in two dimensions, solutions of more variables and parameters, unformatted files that
/// spread header or blocks over other records or write wider integers or markers, and text with
/// other line ends. As part of a sentence; empty where the file is none of them.
[[nodiscard]] std::string foreign_form(Evidence& file);

/// A two-dimensional form of the same length in a binary file, such as "a grid in two dimensions".
/// The length alone is no proof. Empty if there is none.
[[nodiscard]] std::string foreign_length(Evidence& file);

}  // namespace p3dgrid
