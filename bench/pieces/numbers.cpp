/// Conversion of numbers from and to text.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>

#include "pieces/scratch.hpp"
#include "recordio/number_text.hpp"

namespace {

using mod_p3dgrid::integer;
using namespace mod_p3dgrid::recordio;

constexpr std::size_t count = 4096;

template <class Real>
void parse_shortest(benchmark::State& state) {
  std::vector<std::string> tokens;
  for (const Real value : pieces::sample_values<Real>(count)) {
    char text[pieces::number_room];
    tokens.emplace_back(text, write_number(text, value));
  }
  Real value{};
  for (auto _ : state) {
    for (const std::string& token : tokens) {
      benchmark::DoNotOptimize(parse_number(token, value));
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(parse_shortest<float>);
BENCHMARK(parse_shortest<double>);

/// Text of a Fortran format of fixed width: 0.12345678E+01.
void parse_fixed(benchmark::State& state) {
  std::vector<std::string> tokens;
  for (const float value : pieces::sample_values<float>(count)) {
    char text[pieces::number_room];
    std::snprintf(text, sizeof text, "%.7E", static_cast<double>(value));
    tokens.emplace_back(text);
  }
  float value{};
  for (auto _ : state) {
    for (const std::string& token : tokens) {
      benchmark::DoNotOptimize(parse_number(token, value));
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(parse_fixed);

template <class Real>
void write_shortest(benchmark::State& state) {
  const std::vector<Real> values = pieces::sample_values<Real>(count);
  char text[pieces::number_room];
  for (auto _ : state) {
    for (const Real value : values) {
      benchmark::DoNotOptimize(write_number(text, value));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(write_shortest<float>);
BENCHMARK(write_shortest<double>);

/// The same digits by the standard library, for comparison.
template <class Real>
void standard_to_chars(benchmark::State& state) {
  const std::vector<Real> values = pieces::sample_values<Real>(count);
  char text[pieces::number_room];
  for (auto _ : state) {
    for (const Real value : values) {
      benchmark::DoNotOptimize(std::to_chars(text, text + sizeof text, value).ptr);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(standard_to_chars<float>);
BENCHMARK(standard_to_chars<double>);

}  // namespace
