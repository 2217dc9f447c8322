#include "model/generators.hpp"

#include <filesystem>
#include <numeric>

namespace model {

Blocks::Blocks(const std::vector<Extents>& extents) {
  for (const Extents& block : extents) {
    idim.push_back(block[0]);
    jdim.push_back(block[1]);
    kdim.push_back(block[2]);
    points.push_back(points_of(block));
    total += points.back();
  }
}

std::int64_t Blocks::before(std::size_t block) const {
  return std::accumulate(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(block),
                         std::int64_t{0});
}

rc::Gen<std::vector<Extents>> block_extents() {
  const auto extents = rc::gen::container<Extents>(rc::gen::inRange(0, 6));
  return rc::gen::mapcat(rc::gen::inRange<std::size_t>(1, 5), [extents](std::size_t blocks) {
    return rc::gen::container<std::vector<Extents>>(blocks, extents);
  });
}

rc::Gen<float> any_real() {
  const auto from_bits = [](std::uint32_t all) { return std::bit_cast<float>(all); };
  constexpr std::uint32_t infinity = 0x7f800000;
  return rc::gen::weightedOneOf<float>({
      {4, rc::gen::map(rc::gen::inRange(-1000, 1000),
                       [](int number) { return static_cast<float>(number) / 8.F; })},
      {3, rc::gen::map(rc::gen::resize(100, rc::gen::arbitrary<std::uint32_t>()), from_bits)},
      {2, rc::gen::map(
              rc::gen::element<std::uint32_t>(0, 0x80000000U, 1, 0x007fffff, 0x00800000, 0x7f7fffff,
                                              0xff7fffffU, infinity, 0xff800000U, 0x7fc00000,
                                              0xffc00000U, 0x7f800001, 0x7fc01234, 0xffffffffU),
              from_bits)},
      {1, rc::gen::map(rc::gen::inRange<std::uint32_t>(1, 0x00800000), from_bits)},
      {1, rc::gen::map(rc::gen::inRange<std::uint32_t>(infinity + 1, 0x80000000U), from_bits)},
  });
}

rc::Gen<std::vector<float>> any_reals(std::int64_t count) {
  return rc::gen::container<std::vector<float>>(static_cast<std::size_t>(count), any_real());
}

float through_double(float value) {
  if (value == value) return value;
  constexpr std::uint32_t quiet = 0x00400000;
  return std::bit_cast<float>(bits(value) | quiet);
}

InEmptyFolder::InEmptyFolder() {
  test_support::begin_run();
  namespace fs = std::filesystem;
  for (const auto& entry : fs::directory_iterator(fs::current_path())) fs::remove(entry.path());
}

}  // namespace model
