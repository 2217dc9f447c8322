#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace interop {

/// The folder of real files, made by programs that know nothing of this one. It is given by the
/// environment variable P3DGRID_SAMPLES or, without it, by the setting of that name that the tests
/// were built with; empty without either.
[[nodiscard]] inline std::string samples_folder() {
  const char* const given = std::getenv("P3DGRID_SAMPLES");
  return given != nullptr && *given != '\0' ? given : P3DGRID_SAMPLES_AS_BUILT;
}

/// Tests of the real file that the parameter, a struct with a `name` and a `file`, speaks of. They
/// skip without a folder of real files.
template <class Sample>
class SampleFileTest : public testing::TestWithParam<Sample> {
 protected:
  void SetUp() override {
    if (samples_folder().empty()) GTEST_SKIP() << "P3DGRID_SAMPLES names no folder of real files";
    ASSERT_TRUE(std::filesystem::is_regular_file(path())) << path();
  }
  [[nodiscard]] static std::string path() {
    return samples_folder() + "/" + testing::TestWithParam<Sample>::GetParam().file;
  }
};

template <class Sample>
[[nodiscard]] std::string sample_name(const testing::TestParamInfo<Sample>& parameter) {
  return parameter.param.name;
}

}  // namespace interop
