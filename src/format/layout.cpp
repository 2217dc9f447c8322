#include "p3dgrid/layout.hpp"

#include <algorithm>
#include <array>

namespace p3dgrid {
namespace {

using H = HeaderKind;
using D = DimensionKind;

constexpr std::array layouts = {
    LayoutTraits{.layout = Layout::talven,
                 .name = "0",
                 .meaning = "TALVEN restart",
                 .header = H::talven,
                 .dimensions = D::record_per_block,
                 .writable = false},
    LayoutTraits{.layout = Layout::time_step,
                 .name = "1",
                 .meaning = "time step",
                 .header = H::time_step,
                 .dimensions = D::record_per_block},
    LayoutTraits{.layout = Layout::solution,
                 .name = "2",
                 .meaning = "PLOT3D solution",
                 .header = H::plot3d,
                 .dimensions = D::one_record,
                 .iparm1 = 40,
                 .iparm2 = 200,
                 .parameters = 4,
                 .planar = true},
    LayoutTraits{.layout = Layout::function,
                 .name = "3",
                 .meaning = "PLOT3D function",
                 .header = H::plot3d,
                 .dimensions = D::one_record_with_variables,
                 .iparm1 = 50,
                 .iparm2 = 200,
                 .counted_variables = true,
                 .planar = true},
    LayoutTraits{.layout = Layout::triplets,
                 .name = "100",
                 .meaning = "time step, triplets",
                 .header = H::time_step,
                 .triplets = true},
    LayoutTraits{.layout = Layout::single_block,
                 .name = "101",
                 .meaning = "time step, one block, triplets",
                 .header = H::single_block,
                 .triplets = true,
                 .extensions = true,
                 .one_block = true},
    LayoutTraits{.layout = Layout::bare,
                 .name = "102",
                 .meaning = "no header, one block",
                 .one_block = true},
    LayoutTraits{.layout = Layout::overflow,
                 .name = "overflow",
                 .meaning = "OVERFLOW solution",
                 .header = H::plot3d,
                 .dimensions = D::one_record_with_species,
                 .parameters = 4,
                 .more_parameters = true,
                 .counted_variables = true,
                 .writable = false,
                 .module_code = false,
                 .records_only = true},
};

constexpr LayoutTraits no_layout{
    .layout = Layout{-1}, .name = "", .meaning = "", .iparm1 = 0, .iparm2 = 0, .known = false};

constexpr auto codes = [] {
  std::array<Layout, layouts.size()> all{};
  std::ranges::transform(layouts, all.begin(), &LayoutTraits::layout);
  return all;
}();

}  // namespace

const Member<Layout> layout_member{"layout", codes,
                                   "restart layout: 2 PLOT3D solution, 3 PLOT3D function, 0 "
                                   "TALVEN, 1 and 100 to 102 time-step layouts, overflow",
                                   Scope::all_files, true};

std::span<const LayoutTraits> all_layouts() {
  return layouts;
}

const LayoutTraits& traits_of(std::int32_t rsttype) {
  const LayoutTraits& layout = traits_of(Layout{rsttype});
  return layout.module_code ? layout : no_layout;
}

const LayoutTraits& traits_of(Layout layout) {
  const auto* const found = std::ranges::find(layouts, layout, &LayoutTraits::layout);
  return found == layouts.end() ? no_layout : *found;
}

std::string no_files_of(const LayoutTraits& layout, const Coding& coding) {
  const std::string text = std::string("layout ") + layout.name + " has no files ";
  if (is_planar(coding)) return text + "of two dimensions; layouts 2 and 3 have";
  return text + "that are " + name_of(coding.encoding) + "; they are unformatted";
}

std::int32_t absent_variable(const LayoutTraits& layout, const Coding& coding) {
  constexpr std::int32_t third_momentum = 4;
  return is_planar(coding) && layout.parameters > 0 ? third_momentum : 0;
}

bool reads_triplets(const LayoutTraits& layout, const Coding& coding) {
  return layout.triplets && (layout.extensions || !holds_singles(coding));
}

const Extension* extension_of(std::int32_t flag, std::int32_t position) {
  static constexpr Extension five_variables{{6, 10}, 5, 5};
  static constexpr Extension three_variables{{6, 8}, 5, 3};
  static constexpr Extension three_more_variables{{11, 13}, 10, 8};
  if (flag == 1) return &five_variables;
  if (flag == 41 && position == 1) return &three_variables;
  if (flag == 41 && position == 2) return &three_more_variables;
  return nullptr;  // 41 at a later position has no meaning, like any other flag
}

}  // namespace p3dgrid
