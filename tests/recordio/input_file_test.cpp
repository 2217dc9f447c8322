#include "recordio/input_file.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/scratch_folder.hpp"

namespace mod_p3dgrid::recordio {
namespace {

using test_support::write_file;

constexpr std::size_t buffer_size = 64;

class InputFiles : public test_support::InScratchFolder {
 protected:
  InputFiles() { write_file("file", std::string(100'000, 'x')); }
};

TEST_F(InputFiles, HaveAZeroByteBehindTheBytesAtHand) {
  InputFile file("file", buffer_size);
  const auto expect_zero_behind = [&](const char* step) { EXPECT_EQ(*file.end(), '\0') << step; };
  expect_zero_behind("opened");
  ASSERT_TRUE(file.more());
  expect_zero_behind("first bytes");
  file.consume_to(file.begin() + 10);
  ASSERT_TRUE(file.more());
  expect_zero_behind("more bytes");
  file.skip(1000);
  expect_zero_behind("skipped");
  std::vector<char> bytes(50'000);
  file.read(bytes.data(), 10);
  expect_zero_behind("read through the buffer");
  file.read(bytes.data(), std::ssize(bytes));
  expect_zero_behind("read past the buffer");
  file.discard(20'000);
  expect_zero_behind("discarded");
  EXPECT_EQ(file.offset(), 71'020);
}

TEST_F(InputFiles, LetScannersLookAtWhatIsAround) {
  InputFile file("file", buffer_size);
  ASSERT_TRUE(file.more());
  EXPECT_EQ(file.end() - file.begin(), std::int64_t{buffer_size});
  int sum = 0;
  for (int i = 1; i <= 32; ++i) sum += file.begin()[-i] + file.end()[i - 1];
  EXPECT_EQ(sum, 0);
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
