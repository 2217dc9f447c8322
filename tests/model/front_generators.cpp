#include "model/front_generators.hpp"

#include <algorithm>
#include <ostream>

namespace p3dgrid {
void showValue(const Coding& coding, std::ostream& out) {
  out << describe(coding) << ", " << static_cast<int>(coding.marker_bytes) << "-byte markers";
}
void showValue(Precision precision, std::ostream& out) {
  out << name_of(precision);
}
void showValue(Layout layout, std::ostream& out) {
  out << name_of(layout);
}
}  // namespace p3dgrid

namespace model {

using p3dgrid::Array;
using p3dgrid::Coding;
using p3dgrid::Encoding;
using p3dgrid::Precision;
using p3dgrid::Reals;

rc::Gen<Precision> any_precision() {
  return rc::gen::element(Precision::single_precision, Precision::double_precision);
}

rc::Gen<Coding> any_coding() {
  return rc::gen::build<Coding>(
      rc::gen::set(&Coding::encoding,
                   rc::gen::element(Encoding::unformatted, Encoding::formatted, Encoding::binary)),
      rc::gen::set(&Coding::precision, any_precision()),
      rc::gen::set(&Coding::byte_order, rc::gen::element(std::endian::little, std::endian::big)),
      rc::gen::set(&Coding::marker_bytes,
                   rc::gen::element(p3dgrid::MarkerBytes::four, p3dgrid::MarkerBytes::eight)),
      rc::gen::set(&Coding::dimensions,
                   rc::gen::element(p3dgrid::Dimensions::two, p3dgrid::Dimensions::three)));
}

namespace {

template <class Real, class Bits>
Array<Real> any_values(std::int64_t count) {
  const auto all = *rc::gen::container<std::vector<Bits>>(static_cast<std::size_t>(count),
                                                          rc::gen::arbitrary<Bits>());
  Array<Real> values;
  for (const Bits bits : all) {
    values.push_back(bits % 4 == 0
                         ? static_cast<Real>(static_cast<std::int32_t>(bits)) / 8
                         : std::bit_cast<Real>(static_cast<Bits>(bits * 0x9e3779b97f4a7c15U)));
  }
  return values;
}

}  // namespace

Reals any_front_reals(Precision precision, std::int64_t count) {
  if (precision == Precision::double_precision) {
    return Reals(any_values<double, std::uint64_t>(count));
  }
  return Reals(any_values<float, std::uint32_t>(count));
}

std::vector<p3dgrid::BlockExtents> any_extents(const Coding& coding, bool one_block) {
  std::vector<p3dgrid::BlockExtents> all;
  for (const Extents& extents : *block_extents()) {
    all.push_back({extents[0], extents[1], is_planar(coding) ? 1 : extents[2]});
  }
  if (one_block) all.resize(1);
  return all;
}

p3dgrid::GridForm any_grid_form() {
  return {.coding = *any_coding().as("coding"),
          .multiblock = *rc::gen::arbitrary<bool>(),
          .iblank = *rc::gen::arbitrary<bool>()};
}

p3dgrid::Grid any_grid(const p3dgrid::GridForm& form) {
  const auto memory = *any_precision().as("precision in memory");
  p3dgrid::Grid grid;
  for (const auto& extents : any_extents(form.coding, !form.multiblock)) {
    const std::int64_t points = extents.points();
    p3dgrid::Block& block = grid.blocks.emplace_back();
    block.extents = extents;
    block.x = any_front_reals(memory, points);
    block.y = any_front_reals(memory, points);
    block.z = is_planar(form.coding) ? zeros(memory, points) : any_front_reals(memory, points);
    for (std::int64_t p = 0; form.iblank && p < points; ++p) {
      block.iblank.push_back(*rc::gen::arbitrary<std::int32_t>());
    }
  }
  return grid;
}

}  // namespace model
