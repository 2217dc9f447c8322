#pragma once

#include <string>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Forms that other programs write and nothing here reads, known by the same arithmetic: grids and
/// solutions in two dimensions, solutions of more variables and parameters, unformatted files that
/// spread header or blocks over other records or write wider integers or markers, and text with
/// other line ends. As part of a sentence; empty where the file is none of them.
[[nodiscard]] std::string foreign_form(Evidence& file);

/// Such a form whose length that of the file is, taken without markers, which it may be by chance:
/// "a grid in two dimensions"; empty where there is none.
[[nodiscard]] std::string foreign_length(Evidence& file);

}  // namespace p3dgrid
