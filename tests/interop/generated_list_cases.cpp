#include <algorithm>
#include <cstddef>
#include <random>
#include <string_view>

#include "list_cases.hpp"

namespace interop {
namespace {

enum class Kind { integer, real };

/// The kinds of a read's values, as runs. A repeated value stays within a run.
struct Run {
  Kind kind;
  int count;
};

std::vector<Run> runs_of(char read) {
  constexpr Kind integer = Kind::integer;
  constexpr Kind real = Kind::real;
  switch (read) {
    case 'i':
      return {{integer, 5}};
    case 'r':
      return {{real, 6}};
    case 'd':
      return {{real, 6}};
    case 'm':
      return {{integer, 3}, {real, 4}, {integer, 2}, {real, 2}};
    case 'g':
      return {{real, 12}, {integer, 4}};
    case 's':
      return {{integer, 1}};
    case 'x':
      return {{real, 1}};
    default:
      return {};
  }
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

/// Composes the text of one case.
class Writer {
 public:
  explicit Writer(std::mt19937& random) : random_(random) {
    line_end_ = one_in(3) ? "\r\n" : "\n";
    has_errors_ = one_in(4);
  }

  [[nodiscard]] std::string text(std::string_view reads) {
    for (const char read : reads) write_record(read);
    if (one_in(3)) drop_last_line_end();
    if (one_in(6)) text_.resize(below(text_.size() + 1));
    // Only behind a number does a missing line end mean the same to both sides.
    if (!text_.empty() && !is_digit(text_.back())) text_ += line_end_;
    return text_;
  }

 private:
  std::size_t below(std::size_t n) { return random_() % n; }
  bool one_in(std::size_t n) { return below(n) == 0; }
  std::string pick(const std::vector<std::string>& choices) {
    return choices[below(choices.size())];
  }
  std::string digits(std::size_t most) {
    std::string result;
    for (std::size_t n = 1 + below(most); n > 0; --n) {
      result += static_cast<char>('0' + below(10));
    }
    return result;
  }

  void write_record(char read) {
    const bool begins_with_null = one_in(12);
    if (begins_with_null) {
      text_ += pick({",", " ,", "\t,"});
    } else {
      // A read of nothing takes one line, so that a second blank one would begin the next read.
      if (read != 'e' && one_in(10)) text_ += line_end_;
      text_ += pick({"", "", " ", "   ", "\t"});
    }
    const std::vector<Run> runs = runs_of(read);
    for (std::size_t n = 0; n < runs.size(); ++n) {
      const int count = runs[n].count - (n == 0 && begins_with_null ? 1 : 0);
      if (!write_run({runs[n].kind, count}, n + 1 == runs.size())) break;
    }
    if (one_in(3)) text_ += pick({" ", ",", " 77 rest of the line", ", 5 6", "/", " / 9", "\t"});
    text_ += line_end_;
  }

  /// Values for the run, or a slash, after which nothing of the read is needed.
  bool write_run(const Run& run, bool is_last) {
    for (int left = run.count; left > 0;) {
      if (one_in(60)) {
        text_ += pick({"/", " /", "/ 3 4"});
        return false;
      }
      left -= write_item(run.kind, left);
      if (left > 0 && one_in(12)) {
        // Both commas of a null value stand on one line; on lines apart the peer may drop it.
        text_ += separator(true) + separator(true);
        --left;
      } else if (is_last && left == 0) {
        text_ += separator(false);
      } else {
        text_ += separator_across_lines();
      }
    }
    return true;
  }

  /// One item of the text; returns the number of values that it stands for.
  int write_item(Kind kind, int most) {
    const int repeats = one_in(6) ? 1 + static_cast<int>(below(static_cast<std::size_t>(most))) : 0;
    if (repeats > 0) text_ += (one_in(8) ? "0" : "") + std::to_string(repeats) + "*";
    if (repeats == 0 || !one_in(3)) text_ += kind == Kind::integer ? integer() : real();
    return std::max(repeats, 1);
  }

  std::string separator(bool with_comma) {
    return with_comma || one_in(2) ? pick({",", ",", ", ", " ,", " , ", "\t,\t"})
                                   : pick({" ", " ", "  ", "\t"});
  }

  std::string separator_across_lines() {
    std::string result;
    if (one_in(7)) result += pick({"", " ", "\t"}) + line_end_ + pick({"", " ", "\t ", line_end_});
    result += separator(false);
    if (one_in(12)) result += pick({line_end_, " " + line_end_, line_end_ + line_end_});
    return result;
  }

  std::string sign() { return pick({"", "", "", "-", "+"}); }

  std::string integer() {
    if (has_errors_ && one_in(12)) {
      return pick({"2147483648", "-2147483649", "99999999999", "1.5",  "1.",  "1e3",  "x",
                   "-",          "+",           "--1",         "1-",   "12a", "0x10", "5+",
                   "1*",         "inf",         ".",           "2**3", "*5",  "-3*5"});
    }
    if (one_in(30)) return pick({"2147483647", "-2147483647", "+0", "-0", "007"});
    return sign() + digits(9);
  }

  std::string real() {
    if (has_errors_ && one_in(12)) {
      return pick({"x",   "-",     "+",        ".",   "1e",    "1e+",   "e5",    "1.2.3",
                   "--1", "1.5x",  "1..",      "+-1", "1d",    "1e5.",  "1e5e5", "nano",
                   "in",  "infin", "infinite", "na",  "0x1p3", "1*",    "1.5-",  "1 .5.",
                   "-.",  "1,5,.", "2**3",     "*5",  "-3*5",  "1.5*2", "1_8"});
    }
    if (one_in(10)) return non_finite();
    if (one_in(8)) return sign() + digits(7);
    std::string value = sign() + mantissa();
    if (one_in(2)) value += exponent();
    return value;
  }

  std::string non_finite() {
    return pick({"inf", "Inf", "INF", "-inf", "+inf", "infinity", "Infinity", "-INFINITY",
                 "+Infinity", "nan", "NaN", "NAN"});
  }

  std::string mantissa() {
    switch (below(5)) {
      case 0:
        return digits(4) + ".";
      case 1:
        return "." + digits(9);
      case 2:
        return digits(20) + "." + digits(20);
      default:
        return digits(3) + "." + digits(8);
    }
  }

  std::string exponent() {
    const std::string letter = pick({"e", "E", "d", "D", "q", "Q", ""});
    const std::string exponent_sign = letter.empty() ? pick({"+", "-"}) : pick({"", "+", "-"});
    // Up to two digits most of the time; three may go beyond what a kind expresses.
    return letter + exponent_sign + digits(one_in(4) ? 3 : 2);
  }

  void drop_last_line_end() {
    while (!text_.empty() && (text_.back() == '\n' || text_.back() == '\r')) text_.pop_back();
  }

  std::mt19937& random_;
  std::string line_end_;
  bool has_errors_;
  std::string text_;
};

}  // namespace

std::vector<ListCase> generated_list_cases(unsigned seed, std::size_t count) {
  std::mt19937 random(seed);
  std::vector<ListCase> cases;
  while (cases.size() < count) {
    std::string reads;
    for (std::size_t n = 1 + random() % 4; n > 0; --n) reads += "iirrddmmggsxe"[random() % 13];
    cases.push_back({Writer(random).text(reads), reads});
  }
  return cases;
}

}  // namespace interop
