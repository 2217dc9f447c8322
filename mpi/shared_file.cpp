#include "shared_file.hpp"

#include <array>
#include <utility>

#include "tools/failure.hpp"

namespace p3dgrid::tool {
namespace {

/// Byte ranges of a file, as an MPI datatype.
class PlacesType {
 public:
  explicit PlacesType(const std::vector<ByteRange>& ranges) {
    std::vector<int> lengths;
    std::vector<MPI_Aint> offsets;
    for (const ByteRange& range : ranges) {
      lengths.push_back(static_cast<int>(range.bytes));
      offsets.push_back(range.offset);
    }
    MPI_Type_create_hindexed(static_cast<int>(ranges.size()), lengths.data(), offsets.data(),
                             MPI_BYTE, &type_);
    MPI_Type_commit(&type_);
  }
  PlacesType(const PlacesType&) = delete;
  PlacesType& operator=(const PlacesType&) = delete;
  ~PlacesType() { MPI_Type_free(&type_); }

  [[nodiscard]] MPI_Datatype type() const { return type_; }

 private:
  MPI_Datatype type_ = MPI_DATATYPE_NULL;
};

int bytes_in(const std::vector<ByteRange>& ranges) {
  std::int64_t bytes = 0;
  for (const ByteRange& range : ranges) bytes += range.bytes;
  return static_cast<int>(bytes);
}

}  // namespace

SharedFile::SharedFile(std::string path, Use use) : path_(std::move(path)) {
  const int mode = use == Use::read ? MPI_MODE_RDONLY : MPI_MODE_WRONLY;
  require(MPI_File_open(MPI_COMM_WORLD, path_.c_str(), mode, MPI_INFO_NULL, &file_), "cannot open");
}

SharedFile::~SharedFile() {
  if (file_ != MPI_FILE_NULL) MPI_File_close(&file_);
}

/// Sets the file view of this rank to its ranges.
void SharedFile::select(const std::vector<ByteRange>& ranges) {
  if (ranges.empty()) {
    return require(MPI_File_set_view(file_, 0, MPI_BYTE, MPI_BYTE, "native", MPI_INFO_NULL),
                   "cannot set the file view");
  }
  const PlacesType places(ranges);
  require(MPI_File_set_view(file_, 0, MPI_BYTE, places.type(), "native", MPI_INFO_NULL),
          "cannot set the file view");
}

void SharedFile::read(const std::vector<ByteRange>& ranges, std::vector<std::byte>& bytes) {
  const int count = bytes_in(ranges);
  bytes.resize(static_cast<std::size_t>(count));
  select(ranges);
  MPI_Status status;
  require(MPI_File_read_at_all(file_, 0, bytes.data(), count, MPI_BYTE, &status), "cannot read");
  int taken = 0;
  MPI_Get_count(&status, MPI_BYTE, &taken);
  if (taken != count) throw Mismatch(path_ + ": has become shorter while it was read");
}

void SharedFile::write(const std::vector<ByteRange>& ranges, const std::vector<std::byte>& bytes) {
  select(ranges);
  MPI_Status status;
  require(MPI_File_write_at_all(file_, 0, bytes.data(), bytes_in(ranges), MPI_BYTE, &status),
          "cannot write");
}

void SharedFile::close() {
  if (file_ == MPI_FILE_NULL) return;
  const int synchronised = MPI_File_sync(file_);
  const int closed = MPI_File_close(&file_);
  require(synchronised, "cannot write");
  require(closed, "cannot close");
}

void SharedFile::require(int status, const char* operation) const {
  if (status == MPI_SUCCESS) return;
  std::array<char, MPI_MAX_ERROR_STRING> text{};
  int length = 0;
  MPI_Error_string(status, text.data(), &length);
  throw Unusable(path_ + ": " + operation + ": " + text.data());
}

}  // namespace p3dgrid::tool
