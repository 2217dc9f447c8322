#pragma once

#include <mpi.h>

#include <cstddef>
#include <p3dgrid/index.hpp>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// A file that all ranks read or write together by MPI-IO. Every rank calls each function. A rank
/// that fails throws a Failure that names the file; `Team::run_on_all` throws it on the other
/// ranks.
class SharedFile {
 public:
  enum class Use { read, write };

  SharedFile(std::string path, Use use);
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;
  ~SharedFile();

  /// Reads the bytes of this rank's ranges, which are in file order; there may be none. At most 2
  /// GiB.
  void read(const std::vector<ByteRange>& ranges, std::vector<std::byte>& bytes);
  /// Writes them.
  void write(const std::vector<ByteRange>& ranges, const std::vector<std::byte>& bytes);

  /// Flushes written data to the disk and closes the file.
  void close();

 private:
  void select(const std::vector<ByteRange>& ranges);
  void require(int status, const char* operation) const;

  std::string path_;
  MPI_File file_ = MPI_FILE_NULL;
};

}  // namespace p3dgrid::tool
