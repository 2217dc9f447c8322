#include "text_values.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <fstream>

namespace p3dgrid {
namespace {

constexpr std::string_view characters_of_numbers = "0123456789+-.eEdDqQnNaAiIfFtTyY";

/// A number beyond either range counts as different; so does NaN, and what is no number.
bool rounds_the_same_by_way_of_double(std::string_view value) {
  std::string text(value.starts_with('+') ? value.substr(1) : value);
  std::ranges::replace_if(
      text, [](char c) { return std::string_view("dDqQ").find(c) < 4; }, 'e');
  float direct = 0;
  double by_way = 0;
  const auto all_of = [&](auto& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
  };
  return all_of(direct) && all_of(by_way) && direct == static_cast<float>(by_way);
}

/// Counts values character by character, so that it does not matter where a buffer ends.
class ValueCounter {
 public:
  void take(char c) {
    if (c == ',') {
      end_word();
      if (after_comma_) known_ = false;  // a null value
      after_comma_ = true;
    } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
      end_word();
    } else {
      after_comma_ = false;
      word_ += c;
      if (word_.size() > longest_word) known_ = false;
    }
  }

  void end_word() {
    if (word_.empty()) return;
    count_word();
    word_.clear();
  }

  [[nodiscard]] bool known() const { return known_; }
  [[nodiscard]] bool rounds_alike() const { return rounds_alike_; }
  [[nodiscard]] std::int64_t count() const { return count_; }

 private:
  static constexpr std::size_t longest_word = 100;

  void count_word() {
    std::string_view value = word_;
    std::int64_t repeats = 1;
    if (const std::size_t star = value.find('*'); star != value.npos) {
      const auto [end, error] = std::from_chars(value.data(), value.data() + star, repeats);
      if (error != std::errc() || end != value.data() + star) known_ = false;
      value.remove_prefix(star + 1);
    }
    if (value.empty() || value.find_first_not_of(characters_of_numbers) != value.npos) {
      known_ = false;
    }
    if (!rounds_the_same_by_way_of_double(value)) rounds_alike_ = false;
    if (__builtin_add_overflow(count_, repeats, &count_)) known_ = false;
  }

  std::string word_;
  std::int64_t count_ = 0;
  bool after_comma_ = true;
  bool known_ = true;
  bool rounds_alike_ = true;
};

/// Shows the whole file to the counter, or as much as it takes to see that it cannot be known.
ValueCounter counted_values(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  ValueCounter counter;
  std::array<char, 65536> buffer{};
  do {
    stream.read(buffer.data(), buffer.size());
    std::for_each_n(buffer.begin(), stream.gcount(), [&](char c) { counter.take(c); });
  } while (stream && counter.known());
  counter.end_word();
  return counter;
}

}  // namespace

std::optional<std::int64_t> count_values(const std::string& path) {
  if (!std::ifstream(path)) return std::nullopt;
  const ValueCounter counter = counted_values(path);
  return counter.known() ? std::optional(counter.count()) : std::nullopt;
}

bool survives_double_precision(const std::string& path) {
  const ValueCounter counter = counted_values(path);
  return counter.known() && counter.rounds_alike();
}

bool is_text(std::string_view start) {
  const auto readable = [](char c) {
    const auto code = static_cast<unsigned char>(c);
    return std::isprint(code) != 0 || std::isspace(code) != 0;
  };
  return !start.empty() && std::all_of(start.begin(), start.end(), readable);
}

bool begins_with_text(const std::string& path) {
  std::array<char, 1024> start{};
  std::ifstream stream(path, std::ios::binary);
  stream.read(start.data(), start.size());
  return is_text({start.data(), static_cast<std::size_t>(stream.gcount())});
}

}  // namespace p3dgrid
