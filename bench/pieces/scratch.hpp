#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "state/unit.hpp"

namespace pieces {

/// The file that all pieces read and write: in memory where the system offers that, so that disks
/// take no part. Made on first use, deleted when the program ends.
inline constexpr const char* scratch_name = "scratch";

void use_scratch_file();
void fill_scratch_file(std::string_view contents);

/// More room than any number takes as text.
inline constexpr std::size_t number_room = 64;

/// `count` smooth values that use all digits of their precision.
template <class Real>
[[nodiscard]] std::vector<Real> sample_values(std::size_t count);

inline constexpr mod_p3dgrid::integer unformatted = 0;
inline constexpr mod_p3dgrid::integer formatted = 1;
inline constexpr mod_p3dgrid::integer binary = 2;

[[nodiscard]] mod_p3dgrid::Unit unit_of(mod_p3dgrid::integer iformat);

}  // namespace pieces
