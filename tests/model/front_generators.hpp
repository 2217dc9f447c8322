#pragma once

#include <bit>
#include <iosfwd>
#include <type_traits>
#include <vector>

#include "model/generators.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {
void showValue(const Coding& coding, std::ostream& out);
void showValue(Precision precision, std::ostream& out);
void showValue(Layout layout, std::ostream& out);
}  // namespace p3dgrid

/// Random forms, grids and values for the front.
namespace model {

[[nodiscard]] rc::Gen<p3dgrid::Precision> any_precision();
[[nodiscard]] rc::Gen<p3dgrid::Coding> any_coding();

/// Values of any bits, and some that are short in text.
[[nodiscard]] p3dgrid::Reals any_front_reals(p3dgrid::Precision precision, std::int64_t count);

[[nodiscard]] std::vector<p3dgrid::BlockExtents> any_extents(const p3dgrid::Coding& coding,
                                                             bool one_block);

[[nodiscard]] p3dgrid::GridForm any_grid_form();
/// A grid that a file of the form can hold, in any precision.
[[nodiscard]] p3dgrid::Grid any_grid(const p3dgrid::GridForm& form);

/// The bits of the values in a precision. With `any_nan` all NaNs are the same.
template <class Real>
[[nodiscard]] std::vector<std::uint64_t> bits_as(const p3dgrid::Reals& reals,
                                                 bool any_nan = false) {
  using Bits = std::conditional_t<sizeof(Real) == 8, std::uint64_t, std::uint32_t>;
  return reals.visit([any_nan](auto values) {
    std::vector<std::uint64_t> bits;
    for (const auto value : values) {
      const bool some_nan = any_nan && value != value;
      bits.push_back(some_nan ? ~std::uint64_t{0} : std::bit_cast<Bits>(static_cast<Real>(value)));
    }
    return bits;
  });
}

}  // namespace model
