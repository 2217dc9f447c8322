/// List-directed text, in the ways that values are set apart.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "pieces/scratch.hpp"
#include "recordio/number_text.hpp"

namespace {

using namespace mod_p3dgrid::recordio;

constexpr std::int64_t count = 100'000;
constexpr std::int64_t values_per_line = 5;

/// Values in text: `separator` between them, a line end behind every fifth.
template <class Put>
std::string text_of(const char* separator, Put put) {
  std::string text;
  std::int64_t n = 0;
  for (const float value : pieces::sample_values<float>(count)) {
    put(text, value);
    text += ++n % values_per_line == 0 ? "\n" : separator;
  }
  return text;
}

void put_shortest(std::string& text, float value) {
  char digits[pieces::number_room];
  text.append(digits, write_number(digits, value));
}

void put_fixed(std::string& text, float value) {
  char digits[pieces::number_room];
  std::snprintf(digits, sizeof digits, "%16.7E", static_cast<double>(value));
  text += digits;
}

std::string repeated_text() {
  constexpr std::int64_t repeats = 100;
  std::string text;
  for (std::int64_t n = 0; n < count; n += repeats) text += "100*0.25\n";
  return text;
}

void read_list(benchmark::State& state, const std::string& text, bool drop) {
  pieces::fill_scratch_file(text);
  std::vector<float> kept(count);
  const mod_p3dgrid::Unit unit = pieces::unit_of(pieces::formatted);
  for (auto _ : state) {
    unit.open(pieces::scratch_name, OpenStatus::old);
    const ReadList list{drop ? dropped(FileKind::real4, count) : values(kept.data(), count)};
    unit.read(list);
    unit.close();
    benchmark::DoNotOptimize(kept.data());
  }
  state.SetItemsProcessed(state.iterations() * count);
}

BENCHMARK_CAPTURE(read_list, fixed, text_of("", put_fixed), false);
BENCHMARK_CAPTURE(read_list, free, text_of(" ", put_shortest), false);
BENCHMARK_CAPTURE(read_list, commas, text_of(",", put_shortest), false);
BENCHMARK_CAPTURE(read_list, repeats, repeated_text(), false);
BENCHMARK_CAPTURE(read_list, dropped, text_of(" ", put_shortest), true);

void write_list(benchmark::State& state) {
  pieces::use_scratch_file();
  const std::vector<float> kept = pieces::sample_values<float>(count);
  const mod_p3dgrid::Unit unit = pieces::unit_of(pieces::formatted);
  for (auto _ : state) {
    unit.open(pieces::scratch_name, OpenStatus::unknown);
    unit.write({values(kept.data(), count)});
    unit.close();
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(write_list);

}  // namespace
