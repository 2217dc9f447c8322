/// Reads list-directed text through buffers of two sizes, once without keeping the values, and its
/// first numbers on their own. What comes out must not depend on where a buffer ends, nor on which
/// numbers take the short way.

#include "recordio/list_reader.hpp"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "recordio/number_text.hpp"
#include "recordio/read_error.hpp"
#include "target.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;
using namespace mod_p3dgrid::recordio;

constexpr std::size_t least_buffer = 64;
constexpr std::size_t large_buffer = 256 * 1024;
constexpr std::size_t most_reads = 8;

std::string all_text;

/// What a number of reads of so many values each has come to.
template <class Number>
struct Reading {
  std::vector<Number> values;
  std::int64_t lines = 0;
  std::int64_t offset = 0;
  integer status = 0;
  std::string found;
  std::string expected;
};

template <class Number>
Reading<Number> read_text(std::size_t buffer_size, std::size_t count, bool keep) {
  Reading<Number> reading;
  reading.values.resize(most_reads * count, Number{-1});
  InputFile file(scratch_path("text"), buffer_size);
  try {
    for (std::size_t n = 0; n < most_reads; ++n) {
      ListReader reader(file, reading.lines);
      const auto wanted = static_cast<std::int64_t>(count);
      reader.read_values(keep ? values(reading.values.data() + n * count, wanted)
                              : dropped(kind_of<Number>(), wanted));
      reader.finish();
    }
  } catch (ReadError& error) {
    reading.status = error.status;
    reading.found = error.found;
    reading.expected = error.expected;
  }
  reading.offset = file.offset();
  return reading;
}

template <class Number>
void require_same(const Reading<Number>& one, const Reading<Number>& other) {
  require(one.status == other.status, "all reads come to the same status");
  require(one.offset == other.offset && one.lines == other.lines, "all reads end in one place");
  require(one.found == other.found && one.expected == other.expected, "all reads fail alike");
}

/// The text up to the first blank or line end; takes it off the text, with the blanks before it.
std::string_view next_token(std::string_view& text) {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  const std::string_view token = text.substr(0, text.find_first_of(blanks));
  text.remove_prefix(token.size());
  return token;
}

/// Compares the values of the first read with what their texts say, one by one, up to the first
/// that needs more than blanks around it.
template <class Number>
void check_first_numbers(const Reading<Number>& reading, std::size_t count) {
  std::string_view text = all_text;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string_view token = next_token(text);
    if (token.empty() || token.find_first_of(",/*") != token.npos) return;
    Number expected{};
    if (!parse_number(token, expected)) return require(reading.status != 0, "no number is refused");
    require(std::memcmp(&reading.values[i], &expected, sizeof expected) == 0,
            "a number is read alike on its own");
  }
}

template <class Number>
void compare(const Options& options) {
  const auto count = static_cast<std::size_t>(options.numrstrtvar[0] % 32 + 32);
  const std::size_t small_buffer = least_buffer + options.split[0];
  const auto reference = read_text<Number>(large_buffer, count, true);
  const auto piecewise = read_text<Number>(small_buffer, count, true);
  require_same(reference, piecewise);
  require(std::memcmp(reference.values.data(), piecewise.values.data(),
                      reference.values.size() * sizeof(Number)) == 0,
          "all reads have the same values");
  require_same(reference, read_text<Number>(small_buffer, count, false));
  check_first_numbers(reference, count);
}

}  // namespace

void place_files(const Options&, Content content) {
  put_file("text", content);
  all_text.assign(content.begin(), content.end());
}

void run_operation(const Options& options) {
  const int kind = options.format % 3;
  if (kind == 0) return compare<float>(options);
  if (kind == 1) return compare<double>(options);
  compare<integer>(options);
}

}  // namespace fuzz
