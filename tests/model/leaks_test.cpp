/// What a run of successful operations leaves behind: what is kept on purpose, and nothing else.

#include <gtest/gtest.h>

#include <filesystem>

#include "MOD_P3DReader.hpp"
#include "model/generators.hpp"
#include "model/live_arrays.hpp"
#include "model/module_model.hpp"
#include "restart/staging.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;

class Leaks : public test_support::InScratchFolder {};

std::ptrdiff_t descriptors() {
  namespace fs = std::filesystem;
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// Releases all that the module keeps on purpose, each under its name.
void release_what_is_kept() {
  nfvar.deallocate();
  sqvar.deallocate();
  dqvar.deallocate();
  // A double-precision read of layout 100 leaves its triplets staged.
  restart_staging().DX.deallocate();
  // The writers of restart and Tecplot files leave their unit open, and a reader of a header too.
  for (const integer unit : {201, 301, 594}) p3dcloseunit(unit);
}

/// How often each act has succeeded.
using Successes = std::array<int, acts>;

/// Takes the steps that succeed.
void take(const std::vector<Operation>& steps, Successes& successes) {
  const InEmptyFolder folder;
  ModuleModel model;
  const std::ptrdiff_t descriptors_before = descriptors();
  const std::int64_t arrays_before = live_arrays();
  for (const Operation& step : steps) {
    ModuleModel next = model;
    next.apply(step);
    if (!next.all_well()) continue;
    model = next;
    RC_ASSERT(perform(step) == -1);
    ++successes[static_cast<std::size_t>(step.act)];
    RC_ASSERT(descriptors() - descriptors_before == std::ssize(model.open_files()));
    RC_ASSERT(live_arrays() - arrays_before == model.arrays());
  }
  release_what_is_kept();
  RC_ASSERT(descriptors() == descriptors_before);
  RC_ASSERT(live_arrays() == arrays_before);
}

TEST_F(Leaks, NothingButWhatIsKeptOnPurposeRemainsAfterSuccess) {
  Successes successes{};
  const bool held = rc::check("memory and descriptors are given back", [&] {
    const auto steps =
        *rc::gen::scale(0.4, rc::gen::container<std::vector<Operation>>(any_operation(false)));
    // The first time lists grow to the length that they have from then on.
    take(steps, successes);
    const std::int64_t pieces_before = live_pieces();
    take(steps, successes);
    const std::int64_t pieces_after = live_pieces();
    RC_ASSERT(pieces_after == pieces_before);
  });
  EXPECT_TRUE(held);
  for (std::size_t act = 0; act < acts; ++act) EXPECT_GT(successes[act], 0) << "act " << act;
}

}  // namespace
}  // namespace model
