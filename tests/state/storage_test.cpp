#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <string>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/run.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid {
namespace {

/// Whether the system notes advice for huge pages at the middle of the array.
bool has_huge_page_advice(const allocatable<float, 1>& array) {
  const auto middle = reinterpret_cast<std::uintptr_t>(array.data() + array.size() / 2);
  std::ifstream maps("/proc/self/smaps");
  bool inside = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t first = 0;
    std::uintptr_t last = 0;
    const char* const end = line.data() + line.size();
    const auto from = std::from_chars(line.data(), end, first, 16);
    if (from.ec == std::errc{} && from.ptr != end && *from.ptr == '-') {
      std::from_chars(from.ptr + 1, end, last, 16);
      inside = first <= middle && middle < last;
    }
    if (inside && line.starts_with("VmFlags:")) return line.find(" hg") != line.npos;
  }
  return false;
}

class HugePages : public test_support::InScratchFolder {
 protected:
  allocatable<float, 1> array;
  static constexpr std::int64_t many = 16 * 1024 * 1024;
};

TEST_F(HugePages, AreNotAskedForUnlessTheHostWantsThem) {
  ASSERT_EQ(array.allocate(many), allocation_done);
  EXPECT_FALSE(has_huge_page_advice(array));
}

TEST_F(HugePages, AreAskedForOnceTheHostWantsThem) {
  if (!std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled")) {
    GTEST_SKIP() << "this system has no huge pages";
  }
  p3dsethugepages(true);
  ASSERT_EQ(array.allocate(many), allocation_done);
  p3dsethugepages(false);
  EXPECT_TRUE(has_huge_page_advice(array));
  array(1) = 1;
  array(many) = 2;
  EXPECT_EQ(array(1) + array(many), 3);
}

TEST_F(HugePages, LeaveSmallArraysAlone) {
  p3dsethugepages(true);
  EXPECT_EQ(array.allocate(0), allocation_done);
  array.deallocate();
  EXPECT_EQ(array.allocate(1000), allocation_done);
  p3dsethugepages(false);
  EXPECT_EQ(array.size(), 1000);
}

}  // namespace
}  // namespace mod_p3dgrid
