/// List-directed reading compared with the Fortran run-time library's: the same texts, the same
/// reads, and for each read the same status and the same bits in every destination.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "list_cases.hpp"
#include "mod_p3dgrid/run.hpp"
#include "state/unit.hpp"
#include "support/run_program.hpp"
#include "support/scratch_directory.hpp"

namespace interop {
namespace {

namespace recordio = mod_p3dgrid::recordio;

enum class Status { done, end_of_file, error };

/// What a read leaves behind: its status and the bits of all destinations.
struct Outcome {
  Status status = Status::done;
  std::array<std::int32_t, 8> integers{};
  std::array<std::int32_t, 12> singles{};
  std::array<std::int64_t, 8> doubles{};

  /// After an error the destinations are worth nothing on either side.
  friend bool operator==(const Outcome& a, const Outcome& b) {
    if (a.status != b.status) return false;
    return a.status == Status::error ||
           (a.integers == b.integers && a.singles == b.singles && a.doubles == b.doubles);
  }
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  out << std::array{"done", "end of file", "error"}.at(static_cast<std::size_t>(outcome.status));
  for (const auto bits : outcome.integers) out << ' ' << bits;
  out << " |";
  for (const auto bits : outcome.singles) out << ' ' << std::bit_cast<float>(bits);
  out << " |";
  for (const auto bits : outcome.doubles) out << ' ' << std::bit_cast<double>(bits);
  return out;
}

/// The outcomes of one case's reads, up to the first that fails.
using Outcomes = std::vector<Outcome>;

/// The destinations of the reads. The presets tell what a read has left alone.
class Destinations {
 public:
  Destinations() {
    for (std::size_t n = 0; n < i_.size(); ++n) i_[n] = -7771 - static_cast<std::int32_t>(n);
    for (std::size_t n = 0; n < r_.size(); ++n) {
      r_[n] = std::bit_cast<float>(0x4A000001 + static_cast<std::int32_t>(n));
    }
    for (std::size_t n = 0; n < d_.size(); ++n) {
      d_[n] = std::bit_cast<double>(0x4600000000000001 + static_cast<std::int64_t>(n));
    }
  }

  /// The record list of a read; see `ListCase`. The singles are an array of three rows.
  [[nodiscard]] recordio::ReadList list(char read) {
    using recordio::lines;
    using recordio::scalar;
    using recordio::values;
    switch (read) {
      case 'i':
        return {values(i_.data(), 5)};
      case 'r':
        return {lines(r_.data(), 1, 3, 4), lines(r_.data() + 1, 1, 3, 2)};
      case 'd':
        return {values(d_.data(), 6)};
      case 'm':
        return {values(i_.data(), 3), lines(r_.data(), 1, 3, 4), values(i_.data() + 3, 2),
                values(d_.data(), 2)};
      case 'g':
        return {lines(r_.data(), 3, 3, 4), values(i_.data(), 4)};
      case 's':
        return {scalar(i_[0])};
      case 'x':
        return {scalar(r_[0])};
      default:
        return {};
    }
  }

  [[nodiscard]] Outcome outcome(Status status) const {
    Outcome result{status, i_, {}, {}};
    for (std::size_t n = 0; n < r_.size(); ++n) {
      result.singles[n] = std::bit_cast<std::int32_t>(r_[n]);
    }
    for (std::size_t n = 0; n < d_.size(); ++n) {
      result.doubles[n] = std::bit_cast<std::int64_t>(d_[n]);
    }
    return result;
  }

 private:
  std::array<std::int32_t, 8> i_{};
  std::array<float, 12> r_{};
  std::array<double, 8> d_{};
};

Outcomes read_with_library(const std::string& path, std::string_view reads) {
  constexpr std::int32_t unit_number = 99;
  constexpr std::int32_t formatted = 1;
  mod_p3dgrid::p3dsetpaths([path](std::string_view) { return path; });
  const mod_p3dgrid::Unit unit(unit_number, formatted);
  unit.open("list", recordio::OpenStatus::old);
  Destinations destinations;
  Outcomes outcomes;
  for (const char read : reads) {
    Status status = Status::done;
    try {
      unit.read(destinations.list(read));
    } catch (const mod_p3dgrid::FailedRead&) {
      status = mod_p3dgrid::p3dlastfailure().status < 0 ? Status::end_of_file : Status::error;
    }
    outcomes.push_back(destinations.outcome(status));
    if (status != Status::done) break;
  }
  unit.close();
  return outcomes;
}

/// Columns that the list of cases has for the path of a file.
constexpr std::size_t path_columns = 200;

/// Case files in a directory, as both sides read them.
class CaseFiles {
 public:
  explicit CaseFiles(const std::vector<ListCase>& cases) {
    std::ofstream list(scratch_.file("cases"));
    for (std::size_t n = 0; n < cases.size(); ++n) {
      std::string path = file(n);
      std::ofstream(path, std::ios::binary) << cases[n].text;
      if (path.size() > path_columns) throw std::runtime_error("too long a path: " + path);
      path.resize(path_columns, ' ');
      list << path << cases[n].reads << '\n';
    }
  }

  [[nodiscard]] std::string file(std::size_t n) const { return scratch_.file(std::to_string(n)); }

  /// Runs the Fortran program over all cases.
  [[nodiscard]] std::vector<Outcomes> read_with_fortran(std::size_t count) const {
    const Finished finished =
        run_program({LIST_PEER, scratch_.file("cases"), scratch_.file("results")});
    EXPECT_EQ(finished.status, 0) << finished.output;
    std::vector<Outcomes> all(count);
    std::ifstream results(scratch_.file("results"));
    std::size_t n = 0;
    int status = 0;
    while (results >> n >> status) {
      Outcome outcome{static_cast<Status>(status), {}, {}, {}};
      for (auto& bits : outcome.integers) results >> bits;
      for (auto& bits : outcome.singles) results >> bits;
      for (auto& bits : outcome.doubles) results >> bits;
      all.at(n).push_back(outcome);
    }
    return all;
  }

 private:
  ScratchDirectory scratch_;
};

std::string visible(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : std::string(1, c);
  }
  return "\"" + result + "\"";
}

/// Says on which read of the case, with what text, the two sides disagree.
std::string difference(const ListCase& list_case, const Outcomes& library,
                       const Outcomes& fortran) {
  std::ostringstream text;
  text << "reads " << list_case.reads << " of " << visible(list_case.text) << '\n';
  for (std::size_t n = 0; n < std::max(library.size(), fortran.size()); ++n) {
    if (n < library.size()) text << "  library " << n << ": " << library[n] << '\n';
    if (n < fortran.size()) text << "  fortran " << n << ": " << fortran[n] << '\n';
  }
  return text.str();
}

/// Fails the test for each case on which the two sides disagree; the first few are shown.
void compare_with_fortran(const std::vector<ListCase>& cases) {
  const CaseFiles files(cases);
  const std::vector<Outcomes> fortran = files.read_with_fortran(cases.size());
  int differences = 0;
  for (std::size_t n = 0; n < cases.size(); ++n) {
    ASSERT_FALSE(fortran[n].empty()) << "the Fortran program has left out case " << n;
    const Outcomes library = read_with_library(files.file(n), cases[n].reads);
    if (library == fortran[n]) continue;
    constexpr int shown = 20;
    if (++differences <= shown) ADD_FAILURE() << difference(cases[n], library, fortran[n]);
  }
  EXPECT_EQ(differences, 0) << "of " << cases.size() << " cases";
}

TEST(ListReading, AgreesWithFortranOnGeneratedTexts) {
  for (const unsigned seed : {1U, 2U, 3U}) compare_with_fortran(generated_list_cases(seed, 2000));
}

TEST(ListReading, AgreesWithFortranOnOddTexts) {
  compare_with_fortran(odd_list_cases());
}

/// A text that the two sides read differently, and why.
struct Exception {
  const char* name;
  const char* reason;
  ListCase list_case;
  std::vector<Status> library;  ///< of each read
  std::vector<Status> fortran;
};

std::vector<Exception> exceptions() {
  using enum Status;
  return {
      {"semicolon",
       "only with a decimal comma is the semicolon a separator",
       {"1;2\n", "i"},
       {error},
       {end_of_file}},
      {"repeat_across_kinds",
       "r*c stands for r values c whatever their kinds; the peer wants one kind throughout",
       {"7*3 1 1 1 1\n", "m"},
       {done},
       {error}},
      {"repeat_beyond_the_peers_limit",
       "any count of 64 bits will do; the peer stops at 200 million",
       {"99999999999*1\n", "i"},
       {done},
       {error}},
      {"slash_as_last_byte",
       "a slash ends the read wherever it stands; the peer wants something behind it",
       {"1 2/", "i"},
       {done},
       {end_of_file}},
      {"null_values_as_last_bytes",
       "r* needs nothing behind it; the peer takes the end of the file for a missing value",
       {"5*", "i"},
       {done},
       {end_of_file}},
      {"half_a_number_as_last_bytes",
       "what is no number is an error; the peer sees the end of the file first",
       {"1.5e+", "x"},
       {error},
       {end_of_file}},
      {"null_value_behind_a_blank_line",
       "a blank line is a blank: the comma behind it is the first null value; the peer drops it",
       {"\n,1,2,3,4\n5\n", "is"},
       {done, done},
       {done, end_of_file}},
      {"null_value_between_commas_on_lines_apart",
       "two commas have a null value between them; the peer drops it if both begin a line",
       {"1\n,\n,2 3 4\n", "i"},
       {done},
       {end_of_file}},
      {"nan_with_bits",
       "the text of a NaN may carry its bits; the peer knows one NaN",
       {"nan(7fc00001)\n", "x"},
       {done},
       {done}},
  };
}

std::vector<Status> statuses(const Outcomes& outcomes) {
  std::vector<Status> result;
  for (const Outcome& outcome : outcomes) result.push_back(outcome.status);
  return result;
}

class EveryException : public testing::TestWithParam<Exception> {};
INSTANTIATE_TEST_SUITE_P(ListReading, EveryException, testing::ValuesIn(exceptions()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_P(EveryException, IsReadAsStatedAndOtherwiseByFortran) {
  const auto& [name, reason, list_case, library_status, fortran_status] = GetParam();
  const CaseFiles files({list_case});
  const Outcomes library = read_with_library(files.file(0), list_case.reads);
  const Outcomes fortran = files.read_with_fortran(1).front();
  EXPECT_EQ(statuses(library), library_status) << reason;
  EXPECT_EQ(statuses(fortran), fortran_status) << reason;
  EXPECT_FALSE(library == fortran) << "no exception any more: " << reason;
}

}  // namespace
}  // namespace interop
