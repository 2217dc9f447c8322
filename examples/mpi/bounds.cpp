/// Prints the range of each coordinate of a grid. Each rank of an MPI job finds its own share of
/// the points with the index, so the grid may be larger than the memory of a rank.
///
///     mpirun -n 4 bounds GRID
///
/// A failure is one line on standard error and the exit status 1.

#include <mpi.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <limits>
#include <p3dgrid/grid.hpp>
#include <string>
#include <vector>

using p3dgrid::ByteOrder;
using p3dgrid::StoredArray;

/// The range of a coordinate.
struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

/// Includes the values of the bytes, which are in the byte order of the file.
template <class Real>
static void include(Range& range, std::vector<char>& bytes, ByteOrder order) {
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(Real)) {
    char* const value = bytes.data() + at;
    if (order != ByteOrder::native) std::reverse(value, value + sizeof(Real));
    Real real;
    std::memcpy(&real, value, sizeof real);
    range.low = std::min(range.low, double{real});
    range.high = std::max(range.high, double{real});
  }
}

/// Reads the values `first` to `last - 1` of an array.
static std::vector<char> read(MPI_File file, const StoredArray& array, std::int64_t first,
                              std::int64_t last) {
  std::vector<char> bytes(static_cast<std::size_t>((last - first) * bytes_of(array.kind)));
  char* to = bytes.data();
  for (const p3dgrid::ByteRange& range : array.of(first, last)) {
    const int count = static_cast<int>(range.bytes);
    if (MPI_File_read_at(file, range.offset, to, count, MPI_BYTE, MPI_STATUS_IGNORE) !=
        MPI_SUCCESS) {
      throw p3dgrid::Error({.kind = p3dgrid::ErrorKind::system, .reason = "cannot read the grid"});
    }
    to += count;
  }
  return bytes;
}

static std::array<Range, 3> own_bounds(const char* path, int rank, int ranks) {
  constexpr std::int64_t most_values = 1'000'000;  // held at a time
  const p3dgrid::Index index = p3dgrid::index_grid(path);
  MPI_File file = MPI_FILE_NULL;
  MPI_File_open(MPI_COMM_SELF, path, MPI_MODE_RDONLY, MPI_INFO_NULL, &file);
  std::array<Range, 3> bounds;
  for (const p3dgrid::BlockIndex& block : index.blocks) {
    for (const StoredArray& array : block) {
      if (array.content != p3dgrid::Content::coordinate) continue;
      Range& range = bounds[static_cast<std::size_t>(array.number - 1)];
      const std::int64_t end = array.count * (rank + 1) / ranks;
      for (std::int64_t first = array.count * rank / ranks; first < end; first += most_values) {
        auto bytes = read(file, array, first, std::min(end, first + most_values));
        array.kind == p3dgrid::ValueKind::real8 ? include<double>(range, bytes, index.byte_order)
                                                : include<float>(range, bytes, index.byte_order);
      }
    }
  }
  MPI_File_close(&file);
  return bounds;
}

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int rank = 0;
  int ranks = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  if (argc != 2) {
    if (rank == 0) std::cerr << "usage: bounds GRID\n";
    MPI_Finalize();
    return 2;
  }
  try {
    for (const Range& own : own_bounds(argv[1], rank, ranks)) {
      Range all;
      MPI_Reduce(&own.low, &all.low, 1, MPI_DOUBLE, MPI_MIN, 0, MPI_COMM_WORLD);
      MPI_Reduce(&own.high, &all.high, 1, MPI_DOUBLE, MPI_MAX, 0, MPI_COMM_WORLD);
      if (rank == 0) std::cout << all.low << " to " << all.high << '\n';
    }
  } catch (const p3dgrid::Error& error) {
    std::cerr << std::string("bounds: ") + error.what() + "\n" << std::flush;  // in one piece
    MPI_Abort(MPI_COMM_WORLD, 1);
  }
  MPI_Finalize();
}
