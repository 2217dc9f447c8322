#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <ostream>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "recordio/unformatted_record.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid::recordio {
namespace {

using test_support::Bytes;
using test_support::read_file;
using test_support::Unit;
using test_support::write_file;

using Marker = std::int32_t;

constexpr integer unformatted = 0;
constexpr integer binary = 2;
constexpr integer untouched = -7;

/// Lines of an array (stride, count) that are moved, and how the file holds them.
struct Shape {
  std::int64_t rows;
  std::int64_t stride;
  std::int64_t count;
  integer iformat;
  std::endian order;
};

std::vector<Shape> shapes(integer iformat, std::endian order) {
  std::vector<Shape> all;
  for (const std::int64_t rows : {1, 2, 3, 5, 8, 9, 19}) {
    for (const std::int64_t beside : {0, 2}) {
      for (const std::int64_t count : {3, 4097, 70'000}) {
        all.push_back({rows, rows + beside, count, iformat, order});
      }
    }
  }
  return all;
}

std::ostream& operator<<(std::ostream& out, const Shape& shape) {
  return out << shape.rows << " of " << shape.stride << " lines, " << shape.count << " values";
}

/// Value `i` of line `row`: small enough to be exact in every kind.
integer value_at(std::int64_t row, std::int64_t i) {
  return static_cast<integer>((i * 31 + row * 7919) % 8'000'000);
}

/// A number as a file of that order holds it, byte after byte.
template <class T>
void put(std::string& bytes, T value, std::endian order) {
  char text[sizeof value];
  std::memcpy(text, &value, sizeof value);
  if (order != std::endian::native) std::reverse(text, text + sizeof value);
  bytes.append(text, sizeof value);
}

template <class T>
std::string file_of(const Shape& shape) {
  std::string payload;
  for (std::int64_t row = 0; row < shape.rows; ++row) {
    for (std::int64_t i = 0; i < shape.count; ++i) {
      put(payload, static_cast<T>(value_at(row, i)), shape.order);
    }
  }
  if (shape.iformat == binary) return payload;
  std::string marker;
  put(marker, static_cast<std::int32_t>(payload.size()), shape.order);
  return marker + payload + marker;
}

/// The array in memory; what no line covers is untouched.
template <class T>
std::vector<T> array_of(const Shape& shape) {
  std::vector<T> array(static_cast<std::size_t>(shape.stride * shape.count), untouched);
  for (std::int64_t i = 0; i < shape.count; ++i) {
    for (std::int64_t row = 0; row < shape.rows; ++row) {
      array[static_cast<std::size_t>(i * shape.stride + row)] = static_cast<T>(value_at(row, i));
    }
  }
  return array;
}

template <class T>
void expect_read(const Unit& unit, const Shape& shape) {
  std::vector<T> array(static_cast<std::size_t>(shape.stride * shape.count), untouched);
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read({lines(array.data(), shape.rows, shape.stride, shape.count)}))
      << p3dlastfailure().describe();
  EXPECT_TRUE(unit.expect_end());
  unit.close();
  EXPECT_TRUE(array == array_of<T>(shape)) << shape;
}

template <class T>
void expect_written_and_read(const Unit& unit, const Shape& shape) {
  const std::vector<T> array = array_of<T>(shape);
  unit.open("file", OpenStatus::unknown);
  unit.write({lines(array.data(), shape.rows, shape.stride, shape.count)});
  unit.close();
  EXPECT_TRUE(read_file("file") == file_of<T>(shape)) << shape;
  expect_read<T>(unit, shape);
}

/// A file of doubles, written from singles and read into them.
void expect_widened_and_rounded(const Unit& unit, const Shape& shape) {
  const std::vector<float> array = array_of<float>(shape);
  unit.open("file", OpenStatus::unknown);
  unit.write(
      {stored_as(FileKind::real8, lines(array.data(), shape.rows, shape.stride, shape.count))});
  unit.close();
  EXPECT_TRUE(read_file("file") == file_of<double>(shape)) << shape;
  std::vector<float> again(array.size(), untouched);
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read(
      {stored_as(FileKind::real8, lines(again.data(), shape.rows, shape.stride, shape.count))}))
      << p3dlastfailure().describe();
  EXPECT_TRUE(unit.expect_end());
  unit.close();
  EXPECT_TRUE(again == array) << shape;
}

/// Whether values have been at the beginning of a staging array and nowhere behind that.
void expect_beginning_used(const std::vector<double>& staging, const Shape& shape) {
  constexpr std::int64_t tile = std::int64_t{1536} * 1024 / sizeof(double);
  const auto beginning = std::min(std::ssize(staging), std::max(tile, shape.rows * 4096));
  EXPECT_TRUE(staging.front() != untouched) << shape;
  EXPECT_TRUE(std::all_of(staging.begin() + beginning, staging.end(), [](double value) {
    return value == untouched;
  })) << shape;
}

/// The values in an array of one column.
array_view<double, 2> view_of(std::vector<double>& values) {
  return {values.data(), std::ssize(values), 1};
}

/// The same by way of a staging array.
void expect_passed_through_staging(const Unit& unit, const Shape& shape) {
  const std::vector<float> array = array_of<float>(shape);
  const std::vector<double> fresh(static_cast<std::size_t>(shape.rows * shape.count), untouched);
  std::vector<double> staging = fresh;
  unit.open("file", OpenStatus::unknown);
  unit.write({through_staging(view_of(staging),
                              lines(array.data(), shape.rows, shape.stride, shape.count))});
  unit.close();
  EXPECT_TRUE(read_file("file") == file_of<double>(shape)) << shape;
  expect_beginning_used(staging, shape);
  staging = fresh;
  std::vector<float> again(array.size(), untouched);
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read({through_staging(
      view_of(staging), lines(again.data(), shape.rows, shape.stride, shape.count))}))
      << p3dlastfailure().describe();
  EXPECT_TRUE(unit.expect_end());
  unit.close();
  EXPECT_TRUE(again == array) << shape;
  expect_beginning_used(staging, shape);
}

using FormAndOrder = std::tuple<integer, std::endian>;

class LinesOfArrays : public test_support::InScratchFolder,
                      public ::testing::WithParamInterface<FormAndOrder> {};

TEST_P(LinesOfArrays, ArePutTogetherInTheFile) {
  const integer iformat = std::get<0>(GetParam());
  const std::endian order = std::get<1>(GetParam());
  const Unit unit(13, iformat);
  p3dsetcoding([order](std::string_view) { return p3dgrid::StatedCoding{.byte_order = order}; });
  for (const Shape& shape : shapes(iformat, order)) {
    expect_written_and_read<float>(unit, shape);
    expect_written_and_read<double>(unit, shape);
    expect_written_and_read<integer>(unit, shape);
    expect_widened_and_rounded(unit, shape);
    expect_passed_through_staging(unit, shape);
  }
}

std::string name_of(const FormAndOrder& form) {
  return std::string(std::get<0>(form) == binary ? "Binary" : "Unformatted") +
         (std::get<1>(form) == std::endian::big ? "Big" : "Little");
}

INSTANTIATE_TEST_SUITE_P(Forms, LinesOfArrays,
                         ::testing::Combine(::testing::Values(unformatted, binary),
                                            ::testing::Values(std::endian::little,
                                                              std::endian::big)),
                         [](const auto& form) { return name_of(form.param); });

/// Values pass by an array that has no room for them.
TEST_P(LinesOfArrays, LeaveAStagingArrayAloneThatIsTooSmall) {
  const Unit unit(13, std::get<0>(GetParam()));
  const std::vector<float> array{1, 2, 3, 4, 5, 6};
  std::vector<double> staging(5, untouched);
  unit.open("file", OpenStatus::unknown);
  unit.write({through_staging(view_of(staging), lines(array.data(), 2, 2, 3))});
  unit.close();
  std::vector<float> again(array.size());
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read({through_staging(view_of(staging), lines(again.data(), 2, 2, 3))}));
  unit.close();
  EXPECT_EQ(again, array);
  EXPECT_EQ(staging, std::vector<double>(5, untouched));
}

/// The array in memory when the first `held` values of the file have arrived.
template <class T>
std::vector<T> array_of_first(const Shape& shape, std::int64_t held) {
  std::vector<T> array(static_cast<std::size_t>(shape.stride * shape.count), untouched);
  for (std::int64_t n = 0; n < held; ++n) {
    const std::int64_t row = n / shape.count;
    const std::int64_t i = n % shape.count;
    array[static_cast<std::size_t>(i * shape.stride + row)] = static_cast<T>(value_at(row, i));
  }
  return array;
}

/// Lines of which the file holds a part: whole values arrive, and nothing else is changed.
class PartsOfLines : public LinesOfArrays {
 protected:
  const Unit unit{13, std::get<0>(GetParam())};
  const std::endian order = std::get<1>(GetParam());

  void SetUp() override {
    p3dsetcoding([this](std::string_view) { return p3dgrid::StatedCoding{.byte_order = order}; });
  }

  [[nodiscard]] std::vector<Shape> some_shapes() const {
    std::vector<Shape> all;
    for (const auto& [rows, stride] : {std::pair{1, 1}, {1, 3}, {3, 3}, {3, 4}}) {
      for (const std::int64_t count : {2, 5000, 60'000}) {
        all.push_back({rows, stride, count, std::get<0>(GetParam()), order});
      }
    }
    return all;
  }

  /// Bytes of a payload of `all` bytes that are left: a few, most, on a border between values, and
  /// within a value.
  static std::vector<std::int64_t> parts_of(std::int64_t all) {
    std::vector<std::int64_t> parts;
    for (const std::int64_t part : {std::int64_t{0}, std::int64_t{8}, all / 3, all / 2, all - 8}) {
      for (const std::int64_t more : {0, 3, 7}) parts.push_back(std::min(part + more, all - 1));
    }
    return parts;
  }

  /// The file, its record cut short in the middle; with `framed` it tells its new length.
  template <class T>
  std::string cut_file(const Shape& shape, std::int64_t left, bool framed) const {
    const std::string whole = file_of<T>(shape);
    const std::size_t marker = shape.iformat == binary ? 0 : sizeof(Marker);
    if (!framed) return whole.substr(0, marker + static_cast<std::size_t>(left));
    std::string length;
    put(length, static_cast<Marker>(left), order);
    return length + whole.substr(marker, static_cast<std::size_t>(left)) + length;
  }

  /// @tparam Stored  in the file
  template <class Stored, class Kept>
  void expect_part(const Shape& shape, bool framed, bool staged) {
    const std::int64_t all = shape.rows * shape.count * static_cast<std::int64_t>(sizeof(Stored));
    for (const std::int64_t left : parts_of(all)) {
      write_file("file", cut_file<Stored>(shape, left, framed));
      std::vector<double> staging(staged ? static_cast<std::size_t>(shape.rows * shape.count) : 0);
      std::vector<Kept> array(static_cast<std::size_t>(shape.stride * shape.count), untouched);
      auto entry =
          stored_as(kind_of<Stored>(), lines(array.data(), shape.rows, shape.stride, shape.count));
      if (staged) entry = through_staging(view_of(staging), entry);
      unit.open("file", OpenStatus::old);
      ASSERT_FALSE(unit.read({entry}));
      const auto expected =
          array_of_first<Kept>(shape, left / static_cast<std::int64_t>(sizeof(Stored)));
      EXPECT_TRUE(array == expected) << shape << ", " << left << " of " << all << " bytes";
    }
  }
};

TEST_P(PartsOfLines, ArriveAsFarAsTheFileGoes) {
  for (const Shape& shape : some_shapes()) {
    expect_part<float, float>(shape, false, false);
    expect_part<double, double>(shape, false, false);
    expect_part<double, float>(shape, false, false);
    expect_part<double, float>(shape, false, true);
    expect_part<integer, integer>(shape, false, false);
  }
}

TEST_P(PartsOfLines, ArriveAsFarAsTheRecordGoes) {
  if (std::get<0>(GetParam()) == binary) GTEST_SKIP() << "binary files have no records";
  for (const Shape& shape : some_shapes()) {
    expect_part<float, float>(shape, true, false);
    expect_part<double, float>(shape, true, true);
    expect_part<integer, integer>(shape, true, false);
  }
}

TEST_P(PartsOfLines, ArriveFromSubRecordsThatEndWithinValues) {
  if (std::get<0>(GetParam()) == binary) GTEST_SKIP() << "binary files have no records";
  const Shape shape{3, 4, 5000, unformatted, order};
  const std::vector<double> array = array_of<double>(shape);
  constexpr std::int64_t limit = 1003;
  set_subrecord_limit(limit);
  unit.open("file", OpenStatus::unknown);
  unit.write({lines(array.data(), shape.rows, shape.stride, shape.count)});
  unit.close();
  set_subrecord_limit(default_subrecord_limit);
  const std::string whole = read_file("file");
  // The 40th sub-record has just begun.
  constexpr std::int64_t left = 39 * limit + 500;
  write_file("file", whole.substr(0, left + (2 * 39 + 1) * sizeof(Marker)));
  std::vector<double> again(array.size(), untouched);
  unit.open("file", OpenStatus::old);
  EXPECT_FALSE(unit.read({lines(again.data(), shape.rows, shape.stride, shape.count)}));
  EXPECT_TRUE(again == array_of_first<double>(shape, left / 8));
}

TEST_P(PartsOfLines, ArriveFromAPipe) {
  const Shape shape{3, 4, 60'000, std::get<0>(GetParam()), order};
  constexpr std::int64_t left = 500'001;
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  std::jthread writer(
      [&] { std::ofstream("pipe", std::ios::binary) << cut_file<float>(shape, left, false); });
  std::vector<float> array(static_cast<std::size_t>(shape.stride * shape.count), untouched);
  unit.open("pipe", OpenStatus::old);
  EXPECT_FALSE(unit.read({lines(array.data(), shape.rows, shape.stride, shape.count)}));
  EXPECT_TRUE(array == array_of_first<float>(shape, left / 4));
}

INSTANTIATE_TEST_SUITE_P(Forms, PartsOfLines,
                         ::testing::Combine(::testing::Values(unformatted, binary),
                                            ::testing::Values(std::endian::little,
                                                              std::endian::big)),
                         [](const auto& form) { return name_of(form.param); });

class LargeLines : public test_support::InScratchFolder {
 protected:
  static constexpr Shape shape{3, 4, 200'000, unformatted, std::endian::native};
  Unit unit{13, unformatted};

  [[nodiscard]] bool read(std::vector<float>& array) {
    array.assign(static_cast<std::size_t>(shape.stride * shape.count), untouched);
    unit.open("file", OpenStatus::old);
    return unit.read({lines(array.data(), shape.rows, shape.stride, shape.count)});
  }
};

TEST_F(LargeLines, AreRoundedToNearest) {
  std::vector<double> doubles(static_cast<std::size_t>(shape.rows * shape.count));
  for (std::size_t i = 0; i < doubles.size(); ++i) doubles[i] = static_cast<double>(i) / 3 - 1000;
  unit.open("file", OpenStatus::unknown);
  unit.write({values(std::as_const(doubles).data(), std::ssize(doubles))});
  unit.close();
  std::vector<float> array(doubles.size());
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read(
      {stored_as(FileKind::real8, lines(array.data(), shape.rows, shape.rows, shape.count))}));
  std::vector<float> expected(doubles.size());
  for (std::size_t i = 0; i < doubles.size(); ++i) {
    const auto line = i / static_cast<std::size_t>(shape.count);
    const auto place = i % static_cast<std::size_t>(shape.count);
    expected[place * static_cast<std::size_t>(shape.rows) + line] = static_cast<float>(doubles[i]);
  }
  EXPECT_TRUE(array == expected);
}

TEST_F(LargeLines, ComeThroughAPipe) {
  ASSERT_EQ(::mkfifo("file", 0600), 0);
  std::jthread writer([] { write_file("file", file_of<float>(shape)); });
  std::vector<float> array;
  EXPECT_TRUE(read(array));
  EXPECT_EQ(array, array_of<float>(shape));
}

TEST_F(LargeLines, GoThroughAPipe) {
  ASSERT_EQ(::mkfifo("file", 0600), 0);
  std::string content;
  std::jthread reader([&] { content = read_file("file"); });
  const std::vector<float> array = array_of<float>(shape);
  unit.open("file", OpenStatus::unknown);
  unit.write({lines(array.data(), shape.rows, shape.stride, shape.count)});
  unit.close();
  reader.join();
  EXPECT_TRUE(content == file_of<float>(shape));
}

TEST_F(LargeLines, AreSplitOverSubRecords) {
  const std::vector<float> array = array_of<float>(shape);
  unit.open("file", OpenStatus::unknown);
  set_subrecord_limit(999'999);
  unit.write({lines(array.data(), shape.rows, shape.stride, shape.count)});
  set_subrecord_limit(default_subrecord_limit);
  unit.close();
  EXPECT_EQ(read_file("file").size(), file_of<float>(shape).size() + 2 * 2 * sizeof(Marker));
  std::vector<float> again;
  EXPECT_TRUE(read(again));
  EXPECT_EQ(again, array);
}

TEST_F(LargeLines, OfAFileCutShortAreReadAsFarAsTheyGo) {
  const std::string whole = file_of<float>(shape);
  write_file("file", whole.substr(0, whole.size() / 2));
  std::vector<float> array;
  EXPECT_FALSE(read(array));
  EXPECT_EQ(p3dlastfailure().status, -1);
  EXPECT_EQ(p3dlastfailure().offset, static_cast<std::int64_t>(whole.size() / 2));
  EXPECT_EQ(array[0], static_cast<float>(value_at(0, 0)));
  EXPECT_EQ(array[4 * 199'999], static_cast<float>(value_at(0, 199'999)));
  EXPECT_EQ(array[4 * 90'000 + 1], static_cast<float>(value_at(1, 90'000)));
  EXPECT_EQ(array[4 * 199'999 + 1], static_cast<float>(untouched));
}

TEST_F(LargeLines, LeaveTheOrderOfSmallRecordsAroundThem) {
  const std::vector<float> array = array_of<float>(shape);
  const integer before = 1;
  const integer after = 2;
  unit.open("file", OpenStatus::unknown);
  unit.write({scalar(before)});
  unit.write(
      {scalar(before), lines(array.data(), shape.rows, shape.stride, shape.count), scalar(after)});
  unit.write({scalar(after)});
  unit.close();
  std::vector<float> again(array.size(), untouched);
  integer first = 0;
  integer inside = 0;
  integer behind = 0;
  integer last = 0;
  unit.open("file", OpenStatus::old);
  ASSERT_TRUE(unit.read({scalar(first)}));
  ASSERT_TRUE(unit.read({scalar(inside), lines(again.data(), shape.rows, shape.stride, shape.count),
                         scalar(behind)}));
  ASSERT_TRUE(unit.read({scalar(last)}));
  EXPECT_EQ(again, array);
  EXPECT_EQ(std::vector({first, inside, behind, last}), std::vector({1, 1, 2, 2}));
}

class ForeignByteOrder : public test_support::InScratchFolder {
 protected:
  static std::string reversed(const Bytes& number) {
    const std::string& bytes = number.str();
    return {bytes.rbegin(), bytes.rend()};
  }
  static constexpr std::endian foreign =
      std::endian::native == std::endian::little ? std::endian::big : std::endian::little;
  Unit unit{13, unformatted};
};

TEST_F(ForeignByteOrder, TurnsMarkersAndValuesAround) {
  p3dsetcoding([](std::string_view) { return p3dgrid::StatedCoding{.byte_order = foreign}; });
  const integer number = 0x01020304;
  const double real = 1.5;
  unit.open("file", OpenStatus::unknown);
  unit.write({scalar(number), scalar(real)});
  unit.close();
  const std::string marker = reversed(Bytes().i4(12));
  EXPECT_EQ(read_file("file"),
            marker + reversed(Bytes().i4(number)) + reversed(Bytes().r8(real)) + marker);
  integer number_read = 0;
  float real_read = 0;
  unit.open("file", OpenStatus::old);
  auto narrowed = stored_as(FileKind::real8, scalar(real_read));
  ASSERT_TRUE(unit.read({scalar(number_read), narrowed}));
  EXPECT_EQ(number_read, number);
  EXPECT_EQ(real_read, 1.5F);
}

TEST_F(ForeignByteOrder, IsAskedForByNameAtEachOpen) {
  std::vector<std::string> asked;
  p3dsetcoding([&](std::string_view name) {
    asked.emplace_back(name);
    return p3dgrid::StatedCoding{.byte_order = name == "other" ? foreign : std::endian::native};
  });
  const integer number = 1;
  for (const char* name : {"file", "other"}) {
    unit.open(name, OpenStatus::unknown);
    unit.write({scalar(number)});
    unit.close();
  }
  EXPECT_EQ(asked, (std::vector<std::string>{"file", "other"}));
  EXPECT_EQ(read_file("file"), Bytes().record(Bytes().i4(1)).str());
  EXPECT_EQ(read_file("other"),
            reversed(Bytes().i4(4)) + reversed(Bytes().i4(1)) + reversed(Bytes().i4(4)));
}

TEST_F(ForeignByteOrder, EndsWithTheFunction) {
  p3dsetcoding([](std::string_view) { return p3dgrid::StatedCoding{.byte_order = foreign}; });
  p3dsetcoding({});
  const integer number = 1;
  unit.open("file", OpenStatus::unknown);
  unit.write({scalar(number)});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().record(Bytes().i4(1)).str());
}

TEST_F(ForeignByteOrder, HasNoMeaningForText) {
  p3dsetcoding([](std::string_view) { return p3dgrid::StatedCoding{.byte_order = foreign}; });
  const Unit text(13, 1);
  const integer number = 258;
  text.open("file", OpenStatus::unknown);
  text.write({scalar(number)});
  text.close();
  EXPECT_EQ(read_file("file"), " 258\n");
}

class OverwrittenFiles : public test_support::InScratchFolder {};

TEST_F(OverwrittenFiles, KeepNothingOfALongerOne) {
  write_file("file", std::string(3'000'000, 'x'));
  const Unit unit(13, unformatted);
  const integer number = 1;
  unit.open("file", OpenStatus::unknown);
  unit.write({scalar(number)});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().record(Bytes().i4(1)).str());
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
