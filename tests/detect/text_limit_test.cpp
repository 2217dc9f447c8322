#include <gtest/gtest.h>

#include "detect/evidence.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using test_support::write_file;

class TextLimit : public test_support::InScratchFolder {
 protected:
  static constexpr std::int64_t enough = 16384;  ///< work for these texts

  /// Fit of a file of `text` with a grid of one block, after at most `limit` of work.
  static Fit fit_of(const std::string& text, std::int64_t limit, bool iblank = false,
                    TextCount* counted = nullptr) {
    write_file("grid", text);
    Evidence file("grid");
    const GridForm form{{.encoding = Encoding::formatted}, true, iblank};
    const auto outline = file.outline(form, EmptyBlocks::refused);
    FilePlan plan(outline->sizes, outline->extents, form);
    const std::string path = "grid";
    recordio::InputFile part(path, 4096);
    TextCount count;
    const std::vector<Fit> fits = fit_of_text(part, std::span(&plan, 1), limit, count);
    if (counted != nullptr) *counted = count;
    return fits.front();
  }
};

TEST_F(TextLimit, KeepsReadingAtEveryLimit) {
  const std::string text = "1\n2 1 1\n 1.25E-2,-2 2*0.5\n3d0 /\n";
  std::int64_t limit = 1;
  Fit fit = fit_of(text, limit);
  for (; !fit.whole() && limit < enough; fit = fit_of(text, ++limit)) {
    EXPECT_EQ(fit.agreement, Fit::Agreement::so_far) << limit << " " << fit.what;
  }
  EXPECT_GT(limit, std::ssize(text));
  EXPECT_LT(limit, enough);
}

TEST_F(TextLimit, KeepsReadingsThatFitSoFar) {
  const std::string text = "1\n2 1 1\n1 2 3 4 5 6\n1 1\n";
  EXPECT_EQ(fit_of(text, 10, false).agreement, Fit::Agreement::so_far);
  EXPECT_EQ(fit_of(text, 10, true).agreement, Fit::Agreement::so_far);
  EXPECT_EQ(fit_of(text, 10, true).what, "compared up to line 1");
  EXPECT_EQ(fit_of(text, enough, false).agreement, Fit::Agreement::longer);
  EXPECT_TRUE(fit_of(text, enough, true).whole());
}

TEST_F(TextLimit, HoldsForPlainNumbersOnOneLine) {
  std::string text = "1\n100000 1 1\n";
  for (int n = 0; n < 300'000; ++n) text += "1 ";
  const std::int64_t limit = 3 * std::ssize(text) / 2;
  TextCount count;
  EXPECT_EQ(fit_of(text, limit, false, &count).agreement, Fit::Agreement::so_far);
  EXPECT_FALSE(count.whole);
  const std::int64_t numbers_in_a_buffer = 4096 / 2;
  EXPECT_LE(count.work, limit + 10 * numbers_in_a_buffer);
}

TEST_F(TextLimit, HoldsForRepeatedValues) {
  std::string text = "1\n2 1 1\n";
  for (int n = 0; n < 1000; ++n) text += "2147483647*1 ";
  EXPECT_EQ(fit_of(text, 64 * std::ssize(text)).agreement, Fit::Agreement::other);
}

}  // namespace
}  // namespace p3dgrid
