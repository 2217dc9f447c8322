/// Files of more points than 32 bits can count, and memory that does not suffice for them.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "faults/child.hpp"
#include "faults/memory.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;
using mod_p3dgrid::integer;

constexpr int blocks = 3;
constexpr std::int64_t points = 3'000'000'000;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool has_address_sanitizer = true;
#elif defined(__has_feature)
constexpr bool has_address_sanitizer = __has_feature(address_sanitizer);
#else
constexpr bool has_address_sanitizer = false;
#endif

/// Has the system refuse gigabytes.
void limit_address_space() {
  constexpr rlim_t four_gigabytes = rlim_t{4} << 30;
  const rlimit limit{four_gigabytes, four_gigabytes};
  if (::setrlimit(RLIMIT_AS, &limit) != 0) std::exit(3);
}

class LargeFiles : public InScratchFolder {
 protected:
  /// A file of a header and a body of so many bytes, of which the disk holds none. False where
  /// there can be no such file.
  static bool make_sparse(const std::string& name, const Bytes& header, std::int64_t body) {
    write_file(name, header);
    std::error_code error;
    std::filesystem::resize_file(name, header.str().size() + static_cast<std::uintmax_t>(body),
                                 error);
    return !error;
  }

  static Bytes extents() {
    Bytes all;
    for (int n = 0; n < 3 * blocks; ++n) all.i4(1000);
    return all;
  }

  /// What the host is asked by a process that has no memory for gigabytes, a call in a line.
  template <class Body>
  static std::string calls_without_memory(Body body) {
    const ChildEnd end = run_in_child([&] {
      // The sanitizer needs more address space than any limit leaves: a watch stands in for it.
      std::optional<Watch> refusing_gigabytes;
      has_address_sanitizer ? void(refusing_gigabytes.emplace()) : limit_address_space();
      calls.clear();
      body();
      const HostWork work;
      for (const std::string& call : calls) std::fprintf(stderr, "%s\n", call.c_str());
    });
    EXPECT_EQ(end.status, 0);
    return end.error.substr(end.error.find('\n') + 1);  // without the announcement
  }
};

TEST_F(LargeFiles, ArraysForAGridOfThreeThousandMillionPointsAreTriedAndReported) {
  for (const GridForm& form : {GridForm{2, false, true, false}, GridForm{2, true, true, true}}) {
    const std::int64_t bytes_per_point = 3 * (form.dblprec ? 8 : 4) + (form.iblank ? 4 : 0);
    if (!make_sparse("grid", Bytes().i4(blocks).append(extents()), points * bytes_per_point)) {
      GTEST_SKIP() << "no file can be that large here";
    }
    const std::string asked = calls_without_memory([&] {
      Grid grid;
      grid.read("grid", form);
      if (grid.xyz.extent(1) != 3 || grid.xyz.extent(2) != points) std::exit(4);
      if (form.iblank && grid.iblank.extent(1) != points) std::exit(5);
    });
    EXPECT_EQ(asked, std::string("checkallocationerror(0)\n") +
                         (form.iblank ? "checkallocationerror(2)\n" : "") +
                         "checkallocationerror(2)\ndispfilereaderror()\n");
  }
}

TEST_F(LargeFiles, ArraysForAFlowOfThreeThousandMillionPointsAreTriedAndReported) {
  constexpr int variables = 5;
  const RestartForm form{.layout = 1, .iformat = 2, .blocks = blocks};
  const Bytes header = Bytes().i4(1).r4(.5F).i4(blocks).append(extents());
  if (!make_sparse("restart", header, points * variables * 4)) {
    GTEST_SKIP() << "no file can be that large here";
  }
  const std::string asked = calls_without_memory([&] {
    set_sections({{1, variables}});
    Restart restart(blocks);
    restart.idim = restart.jdim = restart.kdim = std::vector<integer>(blocks, 1000);
    restart.read("restart", form);
    if (restart.varvalues.extent(1) != variables || restart.varvalues.extent(2) != points) {
      std::exit(4);
    }
  });
  EXPECT_EQ(asked, "checkallocationerror(0)\ncheckallocationerror(2)\ndispfilereaderror()\n");
}

}  // namespace
}  // namespace faults
