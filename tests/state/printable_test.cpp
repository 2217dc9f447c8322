#include <gtest/gtest.h>

#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {
namespace {

TEST(Printable, ControlCharactersAreEscaped) {
  EXPECT_EQ(p3dprintable("a\nb\tc\rd"), R"(a\nb\tc\rd)");
  EXPECT_EQ(p3dprintable("\x1b[2J\a\x7f"), R"(\x1b[2J\x07\x7f)");
  EXPECT_EQ(p3dprintable(std::string("a\0b", 3)), R"(a\x00b)");
}

TEST(Printable, ThoseOfUtf8BeyondAsciiToo) {
  EXPECT_EQ(p3dprintable("a\u009b31m\u0080\u009f"), R"(a\xc2\x9b31m\xc2\x80\xc2\x9f)");
}

TEST(Printable, AllElseStaysAsItIs) {
  for (const std::string text : {"", " ", "grid.p3d", "a\\nb",
                                 "\u00a0 Gitter \u00e4\u03b2\U0001f600 \u06db", "\xff\x9b\xc2"}) {
    EXPECT_EQ(p3dprintable(text), text);
  }
  EXPECT_EQ(p3dprintable(p3dprintable("a\nb")), "a\\nb");
}

}  // namespace
}  // namespace mod_p3dgrid
