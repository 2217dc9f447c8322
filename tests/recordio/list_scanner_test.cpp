#include "recordio/list_scanner.hpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/scratch_folder.hpp"

namespace mod_p3dgrid::recordio {
namespace {

using Stop = ListScanner::Stop;

constexpr std::int64_t no_limit = std::numeric_limits<std::int64_t>::max();

class ScannedText : public test_support::InScratchFolder {
 protected:
  /// Where a record of the text ended, or what ended it.
  struct Event {
    std::int64_t line, values, commas;
    Stop stop;
    bool operator==(const Event&) const = default;
  };

  /// Scans records of `size` values that end anywhere in a line.
  static std::vector<Event> scan(const std::string& text, std::int64_t size, bool across_lines) {
    test_support::write_file("text", text);
    InputFile file("text", 512);
    ListScanner scanner(file, no_limit);
    std::vector<Event> events;
    std::int64_t commas = 0;
    std::int64_t left = size;
    for (Stop stop{}; stop != Stop::end;) {
      scanner.skip_blank_lines();
      commas += scanner.begin_line();
      do {
        if (across_lines) left -= scanner.take_lines(left);
        const ListScanner::Taken taken = scanner.take(left, false);
        left -= taken.values;
        stop = taken.stop;
        if (stop != Stop::line_end) events.push_back({scanner.line(), size - left, commas, stop});
        if (left == 0) left = size;
      } while (stop == Stop::enough);
      if (stop == Stop::not_number || stop == Stop::slash) scanner.skip_line();
    }
    return events;
  }
};

TEST_F(ScannedText, IsTheSameLineByLineAndAcrossLines) {
  constexpr std::array<std::string_view, 24> pieces{
      "1 ",      "2.5 ",   "-1e5\n", "+.5,", "\n", " ",    ",",    "\t",
      "\r\n",    "3*1.5 ", "2* ",    "x ",   "/ ", "\n\n", "e5 ",  "--1 ",
      "1.2.3\n", "-. ",    "1e",     "5",    ".",  "\n,",  "nan ", "12345678901"};
  std::mt19937 random(7);
  const auto number = [&](int least, int most) {
    return std::uniform_int_distribution<int>(least, most)(random);
  };
  for (int n = 0; n < 1500; ++n) {
    std::string text;
    const int regular = 1 << number(0, 10);
    const int length = number(0, 3000);
    while (std::ssize(text) < length) {
      if (number(1, regular) == 1) text += pieces[static_cast<std::size_t>(number(0, 23))];
      text += std::to_string(number(-999, 999)) + (number(1, 7) == 1 ? "\n" : ".25 ");
    }
    const std::int64_t size = number(1, 200);
    ASSERT_EQ(scan(text, size, true), scan(text, size, false)) << text;
  }
}

TEST_F(ScannedText, CrossesLinesBeforeTheLastValueAskedFor) {
  std::string text;
  for (int n = 0; n < 1000; ++n) text += "0.25 -1.5e-3\n";
  test_support::write_file("text", text);
  InputFile file("text", 512);
  ListScanner scanner(file, no_limit);
  EXPECT_GT(scanner.take_lines(no_limit), 1980);
  InputFile again("text", 512);
  ListScanner other(again, no_limit);
  const std::int64_t values = other.take_lines(1000);
  EXPECT_GT(values, 980);
  EXPECT_LT(values, 1000);
  EXPECT_EQ(other.line(), (values + 1) / 2);
}

TEST_F(ScannedText, StaysBelowTheLimitOnWorkAcrossLines) {
  std::string lines;
  for (int n = 0; n < 5000; ++n) lines += "1\n";
  for (const std::string& text : {lines, std::string(10'000, '\n') + lines}) {
    for (const std::int64_t limit : {1, 100, 10'000, 200'000}) {
      test_support::write_file("text", text);
      InputFile file("text", 4096);
      ListScanner scanner(file, limit);
      const std::int64_t values = scanner.take_lines(no_limit);
      EXPECT_LE(scanner.work(), limit);
      EXPECT_TRUE(values > 2000 || limit < 200'000 || text != lines) << values;
    }
  }
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
