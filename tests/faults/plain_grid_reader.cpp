#include "faults/plain_grid_reader.hpp"

#include <cstring>
#include <sstream>
#include <stdexcept>

#include "faults/operations.hpp"

namespace faults {
namespace {

using namespace test_support;
using mod_p3dgrid::integer;

/// Thrown at the end of the file and at what is no number.
struct NotReadable {};

class PlainReader {
 public:
  PlainReader(const GridForm& form, const std::string& file) : form_(form), file_(file) {}

  void begin_record() {
    if (form_.iformat != unformatted) return;
    std::int32_t length = 0;
    take(length);
    record_end_ = at_ + static_cast<std::size_t>(length);
  }
  void end_record() {
    if (form_.iformat == formatted) at_ = std::min(file_.find('\n', at_), file_.size() - 1) + 1;
    if (form_.iformat != unformatted) return;
    if (at_ > record_end_) throw NotReadable();
    at_ = record_end_ + sizeof(std::int32_t);
    if (at_ > file_.size()) throw NotReadable();
  }

  [[nodiscard]] integer whole_number() {
    integer value = 0;
    if (form_.iformat == formatted) {
      take_word(value);
    } else {
      take(value);
    }
    return value;
  }
  [[nodiscard]] float real_number() {
    float single = 0;
    double wide = 0;
    if (form_.iformat == formatted) {
      take_word(single);
      return single;
    }
    if (!form_.dblprec) {
      take(single);
      return single;
    }
    take(wide);
    return static_cast<float>(wide);
  }

 private:
  template <class T>
  void take(T& value) {
    if (file_.size() - at_ < sizeof value) throw NotReadable();
    std::memcpy(&value, file_.data() + at_, sizeof value);
    at_ += sizeof value;
  }
  template <class T>
  void take_word(T& value) {
    std::istringstream rest(file_.substr(at_, 80));
    if (!(rest >> value)) throw NotReadable();
    at_ += rest.eof() ? rest.str().size() : static_cast<std::size_t>(rest.tellg());
  }

  const GridForm& form_;
  const std::string& file_;
  std::size_t at_ = 0;
  std::size_t record_end_ = 0;
};

Grid read_plainly(const GridForm& form, const std::string& file) {
  constexpr integer sensible = 1000;
  PlainReader reader(form, file);
  Grid grid;
  grid.ndim = 3;
  grid.nblocks = 1;
  if (form.multiblock) {
    reader.begin_record();
    grid.nblocks = reader.whole_number();
    reader.end_record();
  }
  if (grid.nblocks > sensible) throw NotReadable();
  for (auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) {
    static_cast<void>(extents->allocate(grid.nblocks));
  }
  std::int64_t points = 0;
  reader.begin_record();
  for (integer b = 1; b <= grid.nblocks; ++b) {
    std::int64_t in_block = 1;
    for (auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) {
      in_block *= (*extents)(b) = reader.whole_number();
      if ((*extents)(b) < 0 || in_block > sensible) throw NotReadable();
    }
    points += in_block;
  }
  reader.end_record();
  static_cast<void>(grid.xyz.allocate(3, points));
  if (form.iblank) static_cast<void>(grid.iblank.allocate(points));
  std::int64_t before = 0;
  for (integer b = 1; b <= grid.nblocks; ++b) {
    const std::int64_t in_block = std::int64_t{grid.idim(b)} * grid.jdim(b) * grid.kdim(b);
    reader.begin_record();
    for (integer c = 1; c <= 3; ++c) {
      for (std::int64_t p = 1; p <= in_block; ++p) grid.xyz(c, before + p) = reader.real_number();
    }
    for (std::int64_t p = 1; form.iblank && p <= in_block; ++p) {
      grid.iblank(before + p) = reader.whole_number();
    }
    reader.end_record();
    before += in_block;
  }
  return grid;
}

}  // namespace

std::string result_of(const Grid& grid) {
  std::string bytes;
  put(bytes, grid.nblocks);
  put(bytes, grid.ndim);
  for (const auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) put(bytes, *extents);
  put(bytes, grid.xyz);
  put(bytes, grid.iblank);
  return bytes;
}

std::optional<std::string> plain_reading(const GridForm& form, const std::string& file) {
  try {
    return result_of(read_plainly(form, file));
  } catch (const NotReadable&) {
    return std::nullopt;
  }
}

}  // namespace faults
