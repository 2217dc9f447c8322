#include "form_guess.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>

#include "text_values.hpp"

namespace p3dgrid {
namespace {

using Extents = std::array<std::int32_t, 3>;

constexpr std::uint64_t marker_bytes = 4;
constexpr std::uint64_t largest_record_piece = 2147483639;
constexpr std::uint64_t most_blocks = 1'000'000;  // a guess should not read a large file through

/// The header of a file without text, in either byte order.
class HeaderBytes {
 public:
  HeaderBytes(const std::string& path, std::uint64_t length, bool swapped)
      : stream_(path, std::ios::binary), length_(length), swapped_(swapped) {}

  [[nodiscard]] std::uint64_t length() const { return length_; }

  std::optional<std::int32_t> next() {
    std::array<char, 4> bytes{};
    if (!stream_.read(bytes.data(), bytes.size())) return std::nullopt;
    if (swapped_) std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<std::int32_t>(bytes);
  }

  bool next_is(std::int32_t expected) { return next() == expected; }

 private:
  std::ifstream stream_;
  std::uint64_t length_;
  bool swapped_;
};

/// The integers of one record; none when the markers disagree with their number.
std::optional<std::vector<std::int32_t>> record_of(HeaderBytes& bytes, bool markers,
                                                   std::int32_t count) {
  const std::int32_t payload = 4 * count;
  if (markers && !bytes.next_is(payload)) return std::nullopt;
  std::vector<std::int32_t> values;
  for (std::int32_t n = 0; n < count; ++n) {
    const auto value = bytes.next();
    if (!value) return std::nullopt;
    values.push_back(*value);
  }
  if (markers && !bytes.next_is(payload)) return std::nullopt;
  return values;
}

/// What stands before the coordinates, and the four bytes behind it: without text the leading
/// marker of the first block, if there are markers.
struct Header {
  std::vector<Extents> extents;
  std::optional<std::int32_t> next;
};

/// The header, if the file begins with one of this kind.
std::optional<Header> header_in(HeaderBytes bytes, bool markers, bool multiblock) {
  std::int32_t blocks = 1;
  if (multiblock) {
    const auto count = record_of(bytes, markers, 1);
    if (!count) return std::nullopt;
    blocks = count->front();
  }
  const std::uint64_t blocks_possible = std::min(bytes.length() / sizeof(Extents), most_blocks);
  if (blocks < 1 || static_cast<std::uint64_t>(blocks) > blocks_possible) return std::nullopt;
  const auto values = record_of(bytes, markers, 3 * blocks);
  if (!values) return std::nullopt;
  if (std::any_of(values->begin(), values->end(), [](std::int32_t v) { return v < 0; })) {
    return std::nullopt;
  }
  Header header;
  for (std::size_t n = 0; n < values->size(); n += 3) {
    header.extents.push_back({(*values)[n], (*values)[n + 1], (*values)[n + 2]});
  }
  header.next = bytes.next();
  return header;
}

/// Bytes of one record in the file; records beyond what a marker counts are stored in pieces.
std::uint64_t record_length(std::uint64_t payload, bool markers) {
  if (!markers) return payload;
  const std::uint64_t pieces = payload == 0 ? 1 : (payload - 1) / largest_record_piece + 1;
  return payload + pieces * 2 * marker_bytes;
}

/// Bytes of a block's coordinates and blanking; none when they are more than `limit`.
std::optional<std::uint64_t> block_payload(const GridForm& form, const Extents& extents,
                                           std::uint64_t limit) {
  const std::uint64_t real_bytes = form.precision == Precision::double_precision ? 8 : 4;
  std::uint64_t payload = 3 * real_bytes + (form.iblank ? 4 : 0);
  for (const std::int32_t extent : extents) {
    if (__builtin_mul_overflow(payload, static_cast<std::uint64_t>(extent), &payload)) {
      return std::nullopt;
    }
  }
  if (payload > limit) return std::nullopt;
  return payload;
}

/// Length of the whole file; none when it is more than `limit`, which keeps the sum in range.
std::optional<std::uint64_t> file_length(const GridForm& form, const std::vector<Extents>& blocks,
                                         std::uint64_t limit) {
  const bool markers = form.encoding == Encoding::unformatted;
  std::uint64_t length = form.multiblock ? record_length(4, markers) : 0;
  length += record_length(sizeof(Extents) * blocks.size(), markers);
  for (const Extents& extents : blocks) {
    const auto payload = block_payload(form, extents, limit);
    if (!payload) return std::nullopt;
    length += record_length(*payload, markers);
    if (length > limit) return std::nullopt;
  }
  return length;
}

/// The first block's marker tells even where the file was cut short or goes on behind the grid;
/// without markers, or for a block in pieces, only the length of the file is left to go by.
bool fits(const GridForm& form, const Header& header, std::uint64_t length) {
  if (form.encoding == Encoding::unformatted) {
    const auto payload = block_payload(form, header.extents.front(), largest_record_piece);
    if (payload) return header.next == static_cast<std::int32_t>(*payload);
  }
  return file_length(form, header.extents, length) == length;
}

std::vector<GridForm> forms_that_fit(const std::string& path, std::uint64_t length, bool swapped) {
  std::vector<GridForm> fitting;
  for (const Encoding encoding : {Encoding::unformatted, Encoding::binary}) {
    for (const bool multiblock : {true, false}) {
      const auto header = header_in(HeaderBytes(path, length, swapped),
                                    encoding == Encoding::unformatted, multiblock);
      if (!header) continue;
      for (const Precision precision : {Precision::single_precision, Precision::double_precision}) {
        for (const bool iblank : {false, true}) {
          const GridForm form{encoding, precision, multiblock, iblank};
          if (fits(form, *header, length)) fitting.push_back(form);
        }
      }
    }
  }
  return fitting;
}

/// How many whole numbers without a sign a line begins with; `3*5` counts for three.
std::int64_t whole_numbers_in(const std::string& line) {
  std::int64_t numbers = 0;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    if (word.find_first_not_of("0123456789*") != std::string::npos) break;
    const bool repeated = word.find('*') != std::string::npos;
    numbers += repeated ? std::strtol(word.c_str(), nullptr, 10) : 1;
  }
  return numbers;
}

/// Whether text begins with a block count: the number of blocks has a line of its own, and the
/// extents have at least three numbers. Headers written in other ways are left alone.
std::optional<bool> block_count_in(std::string start) {
  std::replace(start.begin(), start.end(), ',', ' ');
  std::istringstream lines(start);
  std::string first;
  std::string second;
  std::getline(lines >> std::ws, first);
  std::getline(lines >> std::ws, second);
  if (whole_numbers_in(first) >= 3) return false;
  if (whole_numbers_in(first) == 1 && whole_numbers_in(second) >= 3) return true;
  return std::nullopt;
}

}  // namespace

bool FormGuess::allows(const GridForm& form) const {
  return !swapped && std::find(fitting.begin(), fitting.end(), form) != fitting.end();
}

std::string FormGuess::advice(const GridForm& stated) const {
  if (text) {
    GridForm better = stated;
    better.encoding = Encoding::formatted;
    better.multiblock = block_count.value_or(stated.multiblock);
    const std::string options = options_between(stated, better);
    return options.empty() ? "" : "the file looks like text: try " + options;
  }
  if (fitting.empty() || allows(stated)) return "";
  if (swapped) return "its bytes are in the other order, which cannot be read on this machine";
  return "its header and length are those of a file read with " +
         options_between(stated, fitting.front());
}

FormGuess guess_form(const std::string& path) {
  FormGuess guess;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return guess;
  const std::uint64_t length = std::filesystem::file_size(path, error);
  if (error) return guess;

  std::array<char, 1024> start{};
  std::ifstream stream(path, std::ios::binary);
  stream.read(start.data(), start.size());
  const std::string_view beginning(start.data(), static_cast<std::size_t>(stream.gcount()));
  // The first integer of a grid file is small, so that without text a zero byte comes early.
  guess.text = is_text(beginning);
  if (guess.text) {
    guess.block_count = block_count_in(std::string(beginning));
    return guess;
  }
  guess.fitting = forms_that_fit(path, length, false);
  if (guess.fitting.empty()) {
    guess.fitting = forms_that_fit(path, length, true);
    guess.swapped = !guess.fitting.empty();
  }
  return guess;
}

}  // namespace p3dgrid
