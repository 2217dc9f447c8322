#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "detect/record_list.hpp"
#include "detect/text_lines.hpp"
#include "encoding.hpp"
#include "record_plan.hpp"

namespace p3dgrid {

/// How a file and the records that a reading of it asks for go together.
struct Fit {
  enum class Agreement {
    whole,   ///< record by record to the end
    padded,  ///< the same, and zero bytes up to a full block of the disk
    longer,  ///< all records are there, and more follows
    remark,  ///< all values of text are there, and words follow, which readers leave out
    cut,     ///< as far as the file goes, which ends too early
    other,   ///< a record is another, or damaged
  };

  Agreement agreement = Agreement::whole;
  std::int64_t records = 0;  ///< records that agree, from the first on
  std::string what = {};     ///< unless whole: where and how, as part of a sentence
  std::int64_t line = 0;     ///< of text: up to where it may be so
  /// What is asked for in what there is: bytes of a binary file or of the record that departs,
  /// values of text; 0 where there is no saying.
  double share = 0;

  [[nodiscard]] bool whole() const {
    return agreement == Agreement::whole || agreement == Agreement::padded;
  }
};

/// True when all records are there, and what follows them can be left out.
[[nodiscard]] bool only_followed(const Fit& fit, Encoding encoding);

/// Of an unformatted file: every marker.
[[nodiscard]] Fit fit_of_records(RecordList& records, std::uint64_t file_size,
                                 const std::vector<RecordPlan>& plan, std::uint64_t real_bytes);

/// Of a binary file, in which nothing but its length tells.
[[nodiscard]] Fit fit_of_length(ByteSource& source, const std::vector<RecordPlan>& plan,
                                std::uint64_t real_bytes);

/// Of text: each record begins on a line of its own and fills the lines up to its last value.
[[nodiscard]] Fit fit_of_text(const TextLines& text, const std::vector<RecordPlan>& plan);

/// Line on which record `n`, from 0, of a plan begins that text agrees with.
[[nodiscard]] std::int64_t line_of_record(const TextLines& text,
                                          const std::vector<RecordPlan>& plan, std::size_t n);

}  // namespace p3dgrid
