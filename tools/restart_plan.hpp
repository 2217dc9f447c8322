#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "extents.hpp"
#include "restart_form.hpp"

namespace p3dgrid {

/// Values that one record holds.
struct RecordPlan {
  std::int64_t integers = 0;
  std::int64_t reals = 0;    ///< of the file's precision
  std::int64_t doubles = 0;  ///< 64-bit whatever the file's precision

  [[nodiscard]] std::int64_t values() const { return integers + reals + doubles; }
  [[nodiscard]] std::uint64_t bytes(std::uint64_t real_bytes) const;
};

/// What decides about the records of a restart file besides its form.
struct RestartShape {
  Extents extents;
  Sections sections;
  bool triplets = false;                        ///< blocks begin with their triplets
  bool flow_parameters = false;                 ///< the header of layout 0 goes on with them
  int older_levels = 0;                         ///< records of older time levels behind each block
  std::array<mod_p3dgrid::integer, 3> flags{};  ///< of the variable extensions of layout 101
};

/// The shape of a file whose header has just been read; the flags of layout 101 are left 0.
/// @param extents  those of the header or, where it holds none, of the grid
[[nodiscard]] RestartShape shape_of(const RestartForm& form, const Sections& sections,
                                    const Extents& extents);

/// The records of a restart file in order.
[[nodiscard]] std::vector<RecordPlan> plan_of(const RestartForm& form, const RestartShape& shape);

/// How far the lengths in a file are from its plan.
struct Misfit {
  std::string what;     ///< as part of a sentence; empty when everything fits
  bool longer = false;  ///< everything fits, but more follows

  [[nodiscard]] bool fits() const { return what.empty() && !longer; }
};

/// Compares the file with the plan: unformatted files record by record, binary ones by their
/// length, text by the number of values. Files whose lengths cannot be known fit.
///
/// The library takes of a record what it needs and goes on with the next, so that a file of other
/// precision or sections can be read without a complaint, into nonsense. This tells.
[[nodiscard]] Misfit misfit_of(const std::string& path, const RestartForm& form,
                               const std::vector<RecordPlan>& plan);

}  // namespace p3dgrid
