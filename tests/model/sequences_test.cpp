/// Random sequences of operations, failing ones among them: what a host can notice of the module
/// after each, and what remains of it when the host has given back what it is meant to.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "MOD_P3DReader.hpp"
#include "model/generators.hpp"
#include "model/live_arrays.hpp"
#include "model/perform.hpp"
#include "restart/staging.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;

class Sequences : public test_support::InScratchFolder {};

std::ptrdiff_t descriptors() {
  namespace fs = std::filesystem;
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// The files that are connected to units, as the descriptions of the operations have it.
class Units {
 public:
  /// After a step that has succeeded.
  void apply(const Operation& step) {
    for (const integer unit : closed_by(step)) files_.erase(unit);
    if (step.act == Act::write_tecplot) files_[594] = "tecplot";
    if (!step.known_form()) return;
    if (step.act == Act::read_restart_header) files_[201] = "restart";
    if (step.act == Act::write_restart || step.act == Act::write_restart_header) {
      files_[301] = "written";
    }
  }

  [[nodiscard]] std::vector<std::string> open_files() const {
    std::vector<std::string> open;
    for (const auto& [unit, name] : files_) open.push_back(name);
    std::ranges::sort(open);
    return open;
  }

 private:
  static std::vector<integer> closed_by(const Operation& step) {
    switch (step.act) {
      case Act::read_grid:
      case Act::write_grid:
        return {13};
      case Act::read_grid_header:
        return {22};
      case Act::check:
        return {22, 23, 201};
      case Act::read_restart:
      case Act::read_next_variable:
      case Act::write_restart:
        return {201};
      case Act::write_next_variable:
      case Act::combine:
        return {301};
      case Act::close_unit:
        return {step.unit};
      default:
        return {};
    }
  }

  std::map<integer, std::string> files_;
};

/// Arrays that stay allocated between operations: those that the host sees, and the triplets that a
/// double-precision read of layout 100 leaves staged.
std::int64_t arrays_kept() {
  return (nfvar.allocated() ? 1 : 0) + (sqvar.allocated() ? 1 : 0) + (dqvar.allocated() ? 1 : 0) +
         (restart_staging<double>.triplets.allocated() ? 1 : 0);
}

/// Gives back what the module keeps on purpose.
void release_what_is_kept() {
  nfvar.deallocate();
  sqvar.deallocate();
  dqvar.deallocate();
  restart_staging<double>.triplets.deallocate();
  // The writers of restart and Tecplot files leave their unit open, and a reader of a header too.
  for (const integer unit : {201, 301, 594}) p3dcloseunit(unit);
}

/// How often each act has succeeded, and not.
using Outcomes = std::array<std::array<int, 2>, acts>;

/// Takes the steps. After one that fails the host begins a new run.
void take(const std::vector<Operation>& steps, Outcomes& outcomes) {
  const InEmptyFolder folder;
  Units units;
  const std::ptrdiff_t descriptors_before = descriptors();
  const std::int64_t arrays_before = live_arrays();
  for (const Operation& step : steps) {
    const Outcome outcome = perform(step);
    ++outcomes[static_cast<std::size_t>(step.act)][outcome.success() ? 0 : 1];
    // A failure is told once.
    RC_ASSERT(outcome.failed_reads + (outcome.ended >= 0 ? 1 : 0) <= 1);
    if (outcome.success()) {
      units.apply(step);
      RC_ASSERT(open_files() == units.open_files());
      RC_ASSERT(descriptors() - descriptors_before == std::ssize(units.open_files()));
      RC_ASSERT(live_arrays() - arrays_before == arrays_kept());
    } else {
      test_support::begin_run();
      units = {};
      RC_ASSERT(descriptors() == descriptors_before);
      RC_ASSERT(live_arrays() == arrays_before);
    }
  }
  release_what_is_kept();
  RC_ASSERT(descriptors() == descriptors_before);
  RC_ASSERT(live_arrays() == arrays_before);
}

std::vector<Operation> any_steps(bool with_failures) {
  return *rc::gen::scale(0.5,
                         rc::gen::container<std::vector<Operation>>(any_operation(with_failures)));
}

/// Whether files or arguments of a step can make it fail.
bool may_fail(Act act) {
  return act != Act::write_grid && act != Act::write_tecplot && act < Act::close_unit;
}

TEST_F(Sequences, KeepUnitsAndArraysAsDescribed) {
  Outcomes outcomes{};
  const bool held = rc::check("units and arrays are as described", [&] {
    const auto steps = any_steps(true);
    RC_CLASSIFY(steps.size() > 10, "more than ten steps");
    take(steps, outcomes);
  });
  EXPECT_TRUE(held);
  for (std::size_t act = 0; act < acts; ++act) {
    EXPECT_GT(outcomes[act][0], 0) << "act " << act << " has never gone well";
    if (may_fail(static_cast<Act>(act))) {
      EXPECT_GT(outcomes[act][1], 0) << "act " << act << " has never failed";
    }
  }
}

TEST_F(Sequences, LeaveNoMemoryBehind) {
  Outcomes outcomes{};
  const bool held = rc::check("memory is given back", [&] {
    const auto steps = any_steps(false);
    // The first time lists grow to the length that they have from then on.
    take(steps, outcomes);
    const std::int64_t pieces_before = live_pieces();
    take(steps, outcomes);
    const std::int64_t pieces_after = live_pieces();
    RC_ASSERT(pieces_after == pieces_before);
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace model
