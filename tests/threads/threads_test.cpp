/// Threads that read the same files and others, detect forms, write and meet errors at the same
/// time. The program links the library without a host.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "mod_p3dgrid/run.hpp"
#include "p3dgrid/detect.hpp"
#include "p3dgrid/grid.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {
namespace {

constexpr std::size_t threads = 8;
constexpr int repetitions = 4;

/// Distinct values. Text of some of them has few digits, of others all.
Reals values_from(double first, std::int64_t count, Precision precision) {
  Reals reals(precision, count);
  reals.visit([first](auto values) {
    using Real = typename decltype(values)::value_type;
    for (std::size_t n = 0; n < values.size(); ++n) {
      const double value = first + static_cast<double>(n);
      values[n] = static_cast<Real>(n % 3 == 0 ? value / 7 : value);
    }
  });
  return reals;
}

/// Blocks large enough to be read in pieces, and a small one.
Grid grid_of(Precision precision) {
  Grid grid{.form = {.coding = {.precision = precision}}};
  for (const BlockExtents& extents : {BlockExtents{30, 20, 25}, BlockExtents{3, 1, 2}}) {
    const std::int64_t points = extents.points();
    grid.blocks.push_back({.extents = extents,
                           .x = values_from(1, points, precision),
                           .y = values_from(-5e4, points, precision),
                           .z = values_from(1e-3, points, precision)});
    grid.blocks.back().iblank.assign(static_cast<std::size_t>(points), 1);
  }
  return grid;
}

Solution solution_of(const Grid& grid) {
  Solution flow{.form = {.coding = grid.form.coding}};
  for (const Block& block : grid.blocks) {
    SolutionBlock& added = flow.blocks.emplace_back();
    added.extents = block.extents;
    added.parameters = {0.5, 2, 1e6, 3};
    for (int v = 1; v <= solution_variables; ++v) {
      added.variables.push_back(values_from(v, block.extents.points(), block.x.precision()));
    }
  }
  return flow;
}

bool same(const Grid& a, const Grid& b) {
  return std::ranges::equal(a.blocks, b.blocks, [](const Block& one, const Block& other) {
    return one.extents == other.extents && one.x == other.x && one.y == other.y &&
           one.z == other.z && one.iblank == other.iblank;
  });
}

bool same(const Solution& a, const Solution& b) {
  return std::ranges::equal(
      a.blocks, b.blocks, [](const SolutionBlock& one, const SolutionBlock& other) {
        return one.parameters == other.parameters && one.variables == other.variables;
      });
}

/// A grid and a solution on it, and their files in one coding.
class Case {
 public:
  Case(const std::filesystem::path& folder, const StatedCoding& coding)
      : folder_(folder), coding_(coding), grid_(grid_of(Precision::double_precision)) {
    std::filesystem::create_directories(folder);
    write_grid(grid_path(), grid_, coding);
    write_solution(solution_path(), flow_, coding);
  }

  void read_whole() const {
    EXPECT_TRUE(same(read_grid(grid_path()), grid_));
    EXPECT_TRUE(same(read_solution(solution_path(), {.grid = &grid_}), flow_));
  }

  void read_parts() const {
    GridReader grid(grid_path());
    EXPECT_EQ(grid.read(1).x, grid_.blocks[1].x);
    EXPECT_EQ(grid.read(0, {.last = {9, 9, 9}}).x.size(), 1000);
    SolutionReader flow(solution_path());
    EXPECT_EQ(flow.read(0, FlowArray{4}), flow_.blocks[0].variables[3]);
    EXPECT_EQ(flow.read(1, FlowArray{1}), flow_.blocks[1].variables[0]);
  }

  void detect() const {
    EXPECT_TRUE(detect_any(grid_path()).proven());
    EXPECT_EQ(detect_any(solution_path()).fitting.size(), 1U);
  }

  /// Writes files of the thread's own and reads them.
  void write(std::size_t thread) const {
    const std::string own = (folder_ / std::to_string(thread)).string();
    write_grid(own, grid_, coding_);
    EXPECT_TRUE(same(read_grid(own), grid_));
    write_solution(own, flow_, coding_);
    EXPECT_TRUE(same(read_solution(own), flow_));
  }

  void fail() const {
    const std::string missing = (folder_ / "missing").string();
    EXPECT_THROW(static_cast<void>(read_grid(missing)), Error);
    EXPECT_THROW(static_cast<void>(read_grid(solution_path())), Error);
    EXPECT_THROW(static_cast<void>(read_solution(grid_path())), Error);
  }

 private:
  [[nodiscard]] std::string grid_path() const { return (folder_ / "grid").string(); }
  [[nodiscard]] std::string solution_path() const { return (folder_ / "flow").string(); }

  std::filesystem::path folder_;
  StatedCoding coding_;
  Grid grid_;
  Solution flow_ = solution_of(grid_);
};

/// Runs `work(thread)` in all threads at once, which begin together.
void run_in_threads(const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> ready = 0;
  std::vector<std::thread> running;
  for (std::size_t n = 0; n < threads; ++n) {
    running.emplace_back([&, n] {
      ++ready;
      while (ready < threads) std::this_thread::yield();
      for (int r = 0; r < repetitions; ++r) work(n);
    });
  }
  for (std::thread& thread : running) thread.join();
}

class Threads : public testing::Test {
 protected:
  Threads() {
    std::string name = (std::filesystem::temp_directory_path() / "p3d-threads-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = name;
    const StatedCoding codings[] = {
        {.encoding = Encoding::unformatted},
        {.encoding = Encoding::formatted},
        {.encoding = Encoding::binary, .byte_order = ByteOrder::big},
        {.encoding = Encoding::unformatted, .marker_bytes = MarkerBytes::eight}};
    for (const StatedCoding& coding : codings) {
      cases_.emplace_back(folder_ / std::to_string(cases_.size()), coding);
    }
  }
  ~Threads() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::filesystem::path folder_;
  std::vector<Case> cases_;
};

TEST_F(Threads, ReadTheSameFiles) {
  for (const Case& one : cases_) {
    run_in_threads([&](std::size_t) { one.read_whole(); });
  }
}

TEST_F(Threads, ReadDifferentFiles) {
  run_in_threads([&](std::size_t n) { cases_[n % cases_.size()].read_whole(); });
}

TEST_F(Threads, DoDifferentThings) {
  run_in_threads([&](std::size_t n) {
    const Case& one = cases_[n % cases_.size()];
    if (n % 2 == 0) one.write(n);
    one.read_parts();
    one.detect();
    one.fail();
  });
}

TEST_F(Threads, ShareAnObserverOfProgress) {
  std::atomic<int> calls = 0;
  mod_p3dgrid::p3dsetprogress([&](const mod_p3dgrid::FileProgress&) { ++calls; });
  run_in_threads([&](std::size_t n) { cases_[n % cases_.size()].read_whole(); });
  mod_p3dgrid::p3dsetprogress(nullptr);
  EXPECT_GT(calls, static_cast<int>(threads));
}

}  // namespace
}  // namespace p3dgrid
