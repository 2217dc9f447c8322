#include "restart/layout.hpp"

namespace mod_p3dgrid {
namespace {

using H = HeaderKind;
using D = DimensionKind;

constexpr Layout layout_0{.header = H::talven, .dimensions = D::record_per_block};
constexpr Layout layout_1{.header = H::time_step, .dimensions = D::record_per_block};
constexpr Layout layout_100{.header = H::time_step, .triplets = true};
constexpr Layout layout_101{.header = H::single_block, .triplets = true, .extensions = true};
constexpr Layout layout_102{};
constexpr Layout layout_2{.header = H::plot3d,
                          .dimensions = D::one_record,
                          .iparm1 = 40,
                          .iparm2 = 200,
                          .parameters = true};
constexpr Layout layout_3{.header = H::plot3d,
                          .dimensions = D::one_record_with_variables,
                          .iparm1 = 50,
                          .iparm2 = 200,
                          .counted_variables = true};
constexpr Layout no_layout{.iparm1 = 0, .iparm2 = 0, .known = false};

}  // namespace

const Layout& layout_of(integer rsttype) {
  switch (rsttype) {
    case 0:
      return layout_0;
    case 1:
      return layout_1;
    case 2:
      return layout_2;
    case 3:
      return layout_3;
    case 100:
      return layout_100;
    case 101:
      return layout_101;
    case 102:
      return layout_102;
    default:
      return no_layout;
  }
}

}  // namespace mod_p3dgrid
