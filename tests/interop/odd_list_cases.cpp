#include <array>
#include <string>

#include "list_cases.hpp"

namespace interop {
namespace {

// clang-format off
/// Texts for the first values of a read, on the edge of what is a number, a separator or a repeat.
const std::array odd_texts{
      "1", "+1", "-1", ".", "+.", "1.", ".5", "5.e3", "1e", "1e+", "1d5", "1D+05", "1q2", "1Q-2",
      "1+3", "1-3", "1.5+3", "1.5-", "1e5.", "inf", "+INF", "-inf", "infinity", "infin",
      "infinite", "infx", "nan", "NaN", "-nan", "+nan", "nan()", "nan(5)", "nan(abc)", "nan)",
      "NaNQ", "0x1", "1_8", "1*", "0*5", "00*5", "2*", "3*1.5", "3 *2", "3* 2", "3*,2", "*5",
      "1**2", "+3*5", "3*+5", "3*x", "1e400", "1e-400", "1e99999999999", "-1e400",
      "1.7976931348623157e308", "1e38", "3.5e38", "4e-46", "1e0000000005", "2147483647",
      "2147483648", "-2147483648", "-2147483649", "99999999999", "1.0", "1e2", "t", "1:2", "1\v2",
      "1\f2", "1\r2", "1\r", "\r1", "!1", "1!", "&", "$", "1/2", "/1", "1 ,/2", "//1", "\xff",
      "1\xc2\xa0" "2", "1E5E5", "1E+-5", "++1",
      "1.5.", "1..5", "-.5", "-.e5", ".e5", "+.5e1", "0", "-0", "-0.", "-0e-400", "4 5,,6",
      "1\t2", "1\t,\t2", "1,\t\n2", "1\n\n2", "1\n,2", "1,\n,2", "1 \n , , 2", "1,,\n,2", "5*\n1",
      "5*,1", "2*\t1", "2*\r\n1", "1 /\n2", ",", ",,", "1,", "1,,", ",1", " ,1", "\n\n1", "\t1",
      "1 2 3 4 5 6 7 8 9", "1 2 3 4 5,", "1 2 3 4 5 x", "1 2 3 4 5x", "1 2 3 4 5,x",
      "1 2 3 4 2*5", "1 2 3 4 3*5 x", "1 2 3 4 5 6\r"};
// clang-format on

}  // namespace

std::vector<ListCase> odd_list_cases() {
  const std::vector<std::string> ends{"\n",
                                      "\r\n",
                                      " \n",
                                      "\n9 8 7 6 5 4 3 2 1 0\n",
                                      "\n1.0 2.0 3.0 4.0 5.0 6.0",
                                      "\n9 8 7 6 5 4 3 2 1 0\r\n5 5 5 5 5 5 5"};
  std::vector<ListCase> cases;
  for (const std::string reads : {"sx", "is", "xr", "rs", "ds", "es", "ii", "gs", "ms"}) {
    for (const std::string text : odd_texts) {
      for (const std::string& end : ends) cases.push_back({text + end, reads});
    }
    // Without a line end: all that is whole by itself.
    for (const char* text : {"7", "5.", ".5", "1e5", "1.5+3", "inf", "nan", "infinity", "7,", "7 ",
                             "7,,", "3*2", "1 2 3 4 5", "\t", "", "\n", "\n\n", "\r", "\r\n"}) {
      cases.push_back({text, reads});
    }
  }
  for (const std::string reads : {"e", "ee", "eee", "es", "se", "si"}) {
    for (const char* text : {"", "\n", "\n\n", " ", " \n", "\t", "\r\n", "x", "1", "1\n", "1\n2"}) {
      cases.push_back({text, reads});
    }
  }
  return cases;
}

}  // namespace interop
