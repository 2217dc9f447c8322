/// Records of unformatted and binary files: coordinates, which are interleaved, and many small
/// records, whose cost is that of their markers.

#include <benchmark/benchmark.h>

#include <bit>
#include <string_view>
#include <utility>

#include "mod_p3dgrid/run.hpp"
#include "pieces/scratch.hpp"

namespace {

using mod_p3dgrid::integer;
using namespace mod_p3dgrid::recordio;

constexpr std::int64_t points = 100'000;
constexpr std::int64_t rows = 3;
constexpr int small_records = 10'000;

template <class Real, integer iformat>
void write_coordinates(benchmark::State& state) {
  pieces::use_scratch_file();
  const std::vector<Real> xyz = pieces::sample_values<Real>(rows * points);
  const mod_p3dgrid::Unit unit = pieces::unit_of(iformat);
  for (auto _ : state) {
    unit.open(pieces::scratch_name, OpenStatus::unknown);
    unit.write({lines(xyz.data(), rows, rows, points)});
    unit.close();
  }
  state.SetItemsProcessed(state.iterations() * rows * points);
}

template <class Real, integer iformat>
void read_coordinates(benchmark::State& state) {
  pieces::use_scratch_file();
  std::vector<Real> xyz = pieces::sample_values<Real>(rows * points);
  const mod_p3dgrid::Unit unit = pieces::unit_of(iformat);
  unit.open(pieces::scratch_name, OpenStatus::unknown);
  unit.write({lines(std::as_const(xyz).data(), rows, rows, points)});
  unit.close();
  for (auto _ : state) {
    unit.open(pieces::scratch_name, OpenStatus::old);
    unit.read({lines(xyz.data(), rows, rows, points)});
    unit.close();
  }
  state.SetItemsProcessed(state.iterations() * rows * points);
}

/// The same for a file in the other byte order.
template <class Real>
void read_foreign_coordinates(benchmark::State& state) {
  constexpr bool little = std::endian::native == std::endian::little;
  mod_p3dgrid::p3dsetcoding([](std::string_view) {
    return p3dgrid::StatedCoding{.byte_order = little ? std::endian::big : std::endian::little};
  });
  read_coordinates<Real, pieces::unformatted>(state);
  mod_p3dgrid::p3dsetcoding({});
}

BENCHMARK(read_foreign_coordinates<float>);
BENCHMARK(read_foreign_coordinates<double>);
BENCHMARK(read_coordinates<float, pieces::unformatted>);
BENCHMARK(read_coordinates<double, pieces::unformatted>);
BENCHMARK(read_coordinates<float, pieces::binary>);
BENCHMARK(write_coordinates<float, pieces::unformatted>);
BENCHMARK(write_coordinates<double, pieces::unformatted>);
BENCHMARK(write_coordinates<float, pieces::binary>);

void write_small(const mod_p3dgrid::Unit& unit) {
  integer value = 7;
  unit.open(pieces::scratch_name, OpenStatus::unknown);
  for (int i = 0; i < small_records; ++i) unit.write({scalar(std::as_const(value))});
  unit.close();
}

void write_small_records(benchmark::State& state) {
  pieces::use_scratch_file();
  for (auto _ : state) write_small(pieces::unit_of(pieces::unformatted));
  state.SetItemsProcessed(state.iterations() * small_records);
}
BENCHMARK(write_small_records);

void read_small_records(benchmark::State& state) {
  pieces::use_scratch_file();
  const mod_p3dgrid::Unit unit = pieces::unit_of(pieces::unformatted);
  write_small(unit);
  integer value = 0;
  for (auto _ : state) {
    unit.open(pieces::scratch_name, OpenStatus::old);
    for (int i = 0; i < small_records; ++i) unit.read({scalar(value)});
    unit.close();
  }
  state.SetItemsProcessed(state.iterations() * small_records);
}
BENCHMARK(read_small_records);

}  // namespace
