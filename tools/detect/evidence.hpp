#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "detect/byte_source.hpp"
#include "detect/fit.hpp"
#include "detect/header_reader.hpp"
#include "detect/record_list.hpp"
#include "detect/text_lines.hpp"

namespace p3dgrid {

/// How the bytes of a file are to be taken.
struct Coding {
  Encoding encoding = Encoding::unformatted;
  ByteOrder order = ByteOrder::native;
  Precision precision = Precision::single_precision;

  [[nodiscard]] std::uint64_t real_bytes() const {
    return precision == Precision::double_precision ? 8 : 4;
  }
};

/// Everything that a file lets be seen of its form, each part looked at once and only when it is
/// asked for.
class Evidence {
 public:
  /// Throws a Failure as `ByteSource` does.
  explicit Evidence(const std::string& path) : source_(path) {}

  [[nodiscard]] std::uint64_t size() const { return source_.size(); }
  [[nodiscard]] std::uint64_t bytes_read() const { return source_.bytes_read(); }

  ByteSource& source() { return source_; }
  bool begins_with_text();
  RecordList& records(ByteOrder order);
  /// True when the file is nothing but records with sound markers, the first one not empty. Of very
  /// many records, those that are looked at are proof enough.
  bool all_records_sound(ByteOrder order);
  const TextLines& lines();

  /// A reader at the beginning of the file.
  std::unique_ptr<HeaderReader> header(const Coding& coding);

  Fit fit(const Coding& coding, const std::vector<RecordPlan>& plan);

  /// The integer that record `n` of a plan begins with that the file agrees with.
  std::optional<std::int32_t> integer_of_record(const Coding& coding,
                                                const std::vector<RecordPlan>& plan, std::size_t n);

 private:
  ByteSource source_;
  std::optional<bool> text_;
  RecordList little_{source_, ByteOrder::little};
  RecordList big_{source_, ByteOrder::big};
  std::optional<TextLines> lines_;
};

}  // namespace p3dgrid
