/// Random sequences of operations, failing ones among them: after each the module must be in the
/// state that its model is in.

#include <gtest/gtest.h>

#include "model/generators.hpp"
#include "model/live_arrays.hpp"
#include "model/module_model.hpp"

namespace model {
namespace {

class OperationSequences : public test_support::InScratchFolder {};

/// Whether files or arguments of a step can make it fail.
bool may_fail(Act act) {
  return act != Act::write_grid && act != Act::write_tecplot && act < Act::close_unit;
}

TEST_F(OperationSequences, LeaveTheStateThatTheModelTells) {
  // How often each act has gone well, and not.
  std::array<std::array<int, 2>, acts> outcomes{};
  const bool held = rc::check("the module does what its model does", [&] {
    const auto steps =
        *rc::gen::scale(0.5, rc::gen::container<std::vector<Operation>>(any_operation(true)));
    RC_CLASSIFY(steps.size() > 10, "more than ten steps");
    const InEmptyFolder folder;
    ModuleModel model;
    const std::int64_t before = live_arrays();
    for (const Operation& step : steps) {
      model.apply(step);
      const int ended = perform(step);
      ++outcomes[static_cast<std::size_t>(step.act)][model.all_well() ? 0 : 1];
      const std::string differs = difference(model.state(), observed(ended));
      if (!differs.empty()) {
        std::ostringstream name;
        showValue(step, name);
        RC_LOG() << name.str() << '\n' << differs;
        RC_FAIL("another state");
      }
      RC_ASSERT(live_arrays() - before == model.arrays());
    }
  });
  EXPECT_TRUE(held);
  for (std::size_t act = 0; act < acts; ++act) {
    EXPECT_GT(outcomes[act][0], 0) << "act " << act << " has never gone well";
    if (may_fail(static_cast<Act>(act))) {
      EXPECT_GT(outcomes[act][1], 0) << "act " << act << " has never failed";
    }
  }
}

}  // namespace
}  // namespace model
