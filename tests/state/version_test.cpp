#include <gtest/gtest.h>

#include <string>

#include "MOD_P3DReader.hpp"

namespace {

TEST(Version, NumbersAndTextAgree) {
  const std::string numbers = std::to_string(MOD_P3DGRID_VERSION_MAJOR) + '.' +
                              std::to_string(MOD_P3DGRID_VERSION_MINOR) + '.' +
                              std::to_string(MOD_P3DGRID_VERSION_PATCH);
  EXPECT_EQ(numbers, MOD_P3DGRID_VERSION);
}

TEST(Version, LibraryHasTheVersionOfItsHeaders) {
  EXPECT_STREQ(mod_p3dgrid::p3dversion(), MOD_P3DGRID_VERSION);
}

}  // namespace
