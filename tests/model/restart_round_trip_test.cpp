/// Random solutions, written and read whole.

#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "model/solution.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;

class RestartRoundTrip : public test_support::InScratchFolder {};

/// What a whole read leaves behind.
struct WholeRead {
  allocatable<float, 2> flow;
  allocatable<float, 2> triplets;

  explicit WholeRead(const Solution& solution) {
    const Blocks blocks(solution.extents);
    if (solution.form.layout == 3) mod_gridvars::numrstrtvar.fill(0);
    readp3drestart("restart", solution.form.iformat, solution.form.dblprec, blocks.count(),
                   blocks.points, flow, triplets, blocks.idim, blocks.jdim, blocks.kdim,
                   solution.form.layout, solution.form.multiblock);
  }
};

/// The values that stand in the records of layout 100 one after another, and where a reader of
/// plain sections stands in them.
class PlainSections {
 public:
  explicit PlainSections(const Solution& solution) : solution_(solution) {}

  /// Values of a block's records, the first with its triplets.
  [[nodiscard]] std::vector<std::vector<float>> records_of(std::size_t block) const {
    const Blocks blocks(solution_.extents);
    std::vector<std::vector<float>> records;
    for (const auto& [first, last] : solution_.sections) {
      std::vector<float>& record = records.emplace_back();
      for (std::int64_t c = 0; first == 1 && c < 3; ++c) {
        for (std::int64_t p = 0; p < blocks.points[block]; ++p) {
          const std::int64_t point = blocks.before(block) + p;
          record.push_back(solution_.triplets[static_cast<std::size_t>(3 * point + c)]);
        }
      }
      for (integer v = first; v <= last; ++v) {
        for (std::int64_t p = 0; p < blocks.points[block]; ++p) {
          record.push_back(solution_.value(v, blocks.before(block) + p));
        }
      }
    }
    return records;
  }

  /// The solution as that reader understands it: records are cut to what it asks for, a stream of
  /// bytes goes on where it stopped.
  [[nodiscard]] Solution misread() const {
    Solution misread = solution_;
    const Blocks blocks(solution_.extents);
    std::vector<float> stream;
    for (std::size_t b = 0; b < solution_.extents.size(); ++b) {
      for (const auto& record : records_of(b)) {
        stream.insert(stream.end(), record.begin(), record.end());
      }
    }
    auto next = stream.cbegin();
    for (std::size_t b = 0; b < solution_.extents.size(); ++b) {
      const auto records = records_of(b);
      for (std::size_t s = 0; s < solution_.sections.size(); ++s) {
        auto from = solution_.form.iformat == 0 ? records[s].cbegin() : next;
        const auto& [first, last] = solution_.sections[s];
        for (integer v = first; v <= last; ++v) {
          for (std::int64_t p = 0; p < blocks.points[b]; ++p) {
            const std::int64_t at = (blocks.before(b) + p) * misread.rows + v - 1;
            misread.flow[static_cast<std::size_t>(at)] = *from++;
          }
        }
        if (solution_.form.iformat != 0) next = from;
      }
    }
    return misread;
  }

 private:
  const Solution& solution_;
};

/// @param counted_before  the host has counted the variables of the extensions, so that the flow
///                        array had its rows before the first flag was met
void expect_flow(const Solution& solution, const WholeRead& read, bool counted_before) {
  RC_ASSERT(read.flow.extent(1) == solution.rows);
  RC_ASSERT(read.flow.extent(2) == Blocks(solution.extents).total);
  const auto variables = solution.variables();
  for (integer v = 1; v <= solution.rows; ++v) {
    const bool held = std::ranges::find(variables, v) != variables.end();
    if (!held && counted_before) continue;  // left unset
    for (std::int64_t p = 0; p < read.flow.extent(2); ++p) {
      // A variable that a chain of extensions skips holds 0.
      const float expected = held ? solution.stored(solution.value(v, p)) : 0.F;
      RC_ASSERT(bits(read.flow(v, p + 1)) == bits(expected));
    }
  }
}

void expect_triplets(const Solution& solution, const WholeRead& read) {
  RC_ASSERT(read.triplets.allocated() == solution.form.triplets());
  // Of layout 100 only text hands them over.
  if (!solution.form.triplets() || (solution.form.layout == 100 && !solution.form.text())) return;
  std::vector<float> expected;
  for (const float value : solution.triplets) expected.push_back(solution.stored(value));
  RC_ASSERT(bits_of(read.triplets.span()) == bits_of(expected));
}

/// The four flow parameters of each block; those that repeat the last row in use included.
void expect_parameters(const Solution& solution) {
  if (solution.form.layout != 2) return;
  const auto blocks = static_cast<integer>(solution.extents.size());
  const bool in_double = solution.form.text() || solution.form.dblprec;
  RC_ASSERT(dqvar.allocated() == in_double);
  RC_ASSERT(sqvar.allocated() == !in_double);
  for (integer b = 1; b <= blocks; ++b) {
    for (integer m = 1; m <= 4; ++m) {
      const integer row = std::min(b, solution.parameter_rows);
      const float written =
          solution
              .parameters[static_cast<std::size_t>((m - 1) * solution.parameter_rows + row - 1)];
      const float read = in_double ? static_cast<float>(dqvar(b, m)) : sqvar(b, m);
      RC_ASSERT(bits(read) == bits(in_double ? through_double(written) : written));
    }
  }
  if (solution.form.text()) return;  // leaves the module's copies alone
  const double last = in_double ? dqvar(blocks, 4) : static_cast<double>(sqvar(blocks, 4));
  RC_ASSERT(std::bit_cast<std::uint64_t>(p3dtau) == std::bit_cast<std::uint64_t>(last));
}

void expect_header(const Solution& solution) {
  const int layout = solution.form.layout;
  if (layout == 1 || layout == 100 || layout == 101) {
    RC_ASSERT(nstep == solution.steps);
    RC_ASSERT(dtau == solution.stored_step_size());
  }
  if (layout != 3) return;
  RC_ASSERT(nfvar.size() == std::ssize(solution.extents));
  for (const integer count : nfvar.span()) RC_ASSERT(count == solution.rows);
}

TEST_F(RestartRoundTrip, AWholeReadGivesBackWhatWasWritten) {
  const bool held = rc::check("a solution goes through a file", [] {
    const InEmptyFolder folder;
    const Solution solution = *any_solution();
    RC_CLASSIFY(solution.form.text(), "text");
    RC_CLASSIFY(solution.form.layout == 101, "layout 101");
    set_host(solution);
    write_whole(solution, "restart");
    set_host_for_reading(solution);
    const bool counted_before = *rc::gen::arbitrary<bool>();
    if (!counted_before && solution.form.layout == 101 && solution.sections.size() == 1) {
      mod_gridvars::numrstrtvar(2) = 0;
    }
    const WholeRead read(solution);
    RC_ASSERT(test_support::count_calls("dispfilereaderror") == 0);
    const bool misread = solution.form.triplets() && !solution.form.whole_read_takes_triplets();
    expect_flow(misread ? PlainSections(solution).misread() : solution, read, counted_before);
    expect_triplets(solution, read);
    expect_parameters(solution);
    expect_header(solution);
    RC_ASSERT(!test_support::is_open("restart"));
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace model
