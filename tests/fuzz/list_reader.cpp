/// Reads list-directed text through buffers of two sizes, and once without keeping the values. What
/// comes out must not depend on where a buffer ends, nor on which numbers take the short way.

#include "recordio/list_reader.hpp"

#include <cstring>
#include <string>
#include <vector>

#include "recordio/read_error.hpp"
#include "target.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;
using namespace mod_p3dgrid::recordio;

constexpr std::size_t least_buffer = 64;
constexpr std::size_t large_buffer = 256 * 1024;
constexpr std::size_t most_reads = 8;

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
}

}  // namespace

void place_files(const Options&, Content content) {
  put_file("text", content);
}

void run_operation(const Options& options) {
  const int kind = options.format % 3;
  if (kind == 0) return compare<float>(options);
  if (kind == 1) return compare<double>(options);
  compare<integer>(options);
}

}  // namespace fuzz
