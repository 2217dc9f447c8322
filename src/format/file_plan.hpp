#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "format/body.hpp"
#include "format/header.hpp"

namespace p3dgrid {

/// Numbers of values in a record. Reals precede integers, except in headers.
struct RecordSize {
  std::int64_t reals = 0;    ///< of the file's precision
  std::int64_t doubles = 0;  ///< 64-bit in all files
  std::int64_t integers = 0;
  BodyRecordKind kind = BodyRecordKind::section;
  bool in_header = false;

  [[nodiscard]] std::int64_t values() const { return reals + doubles + integers; }
  [[nodiscard]] std::int64_t bytes(const Coding& coding) const {
    return reals * real_bytes(coding) + doubles * 8 + integers * 4;
  }
  friend bool operator==(const RecordSize&, const RecordSize&) = default;
};

/// The sizes of a header's records in file order, run-length encoded.
class HeaderSizes {
 public:
  /// @param kind  of the reals in the file's precision
  template <class Memory>
  void add(const recordio::RecordList<Memory>& list, recordio::FileKind kind) {
    RecordSize size{.in_header = true};
    for (const auto& entry : list) {
      const std::int64_t values = entry.rows * entry.count;
      if (entry.file_kind == recordio::FileKind::integer4) {
        size.integers += values;
      } else {
        (entry.file_kind == kind ? size.reals : size.doubles) += values;
      }
    }
    add(size, 1);
  }
  void add(const RecordSize& size, std::int64_t records) {
    if (runs_.empty() || runs_.back().first != size) runs_.emplace_back(size, 0);
    runs_.back().second += records;
    records_ += records;
  }

  [[nodiscard]] std::int64_t records() const { return records_; }
  [[nodiscard]] const auto& runs() const { return runs_; }

 private:
  std::vector<std::pair<RecordSize, std::int64_t>> runs_;
  std::int64_t records_ = 0;
};

/// Iterates over the sizes of all records of a file in order.
class FilePlan {
 public:
  /// Of a grid.
  FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents, const GridForm& form);
  /// Of a restart file.
  /// @param functions  variables of each block if they differ; else empty
  FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents, const RestartForm& form,
           const BlockShape& shape, std::vector<std::int32_t> functions);

  /// The next record; none at the end. After a flag, call `set_flag` first.
  [[nodiscard]] std::optional<RecordSize> next();
  void set_flag(std::int32_t flag);

  /// Bytes of the further records, or values of text, if these are the flags.
  [[nodiscard]] std::int64_t amount(const Coding& coding,
                                    std::span<const std::int32_t> flags) const;

  /// Number of records of the file, as far as the flags are known.
  [[nodiscard]] std::int64_t records() const { return records_; }
  /// Whether a flag had no meaning.
  [[nodiscard]] bool unknown_flag() const { return unknown_flag_; }
  /// Whether the last possible flag did not end the chain.
  [[nodiscard]] bool unterminated_chain() const { return body_.unterminated_chain(); }

 private:
  FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents,
           std::vector<BodyRecord> of_block, bool extensions);
  [[nodiscard]] std::optional<RecordSize> next_of_body();

  HeaderSizes header_;
  std::shared_ptr<const Extents> extents_;
  std::int64_t records_;
  BodyWalk body_;
  bool iblank_ = false;  ///< blanking values follow the coordinates
  std::vector<std::int32_t> functions_;
  std::size_t run_ = 0;      ///< current run of the header
  std::int64_t in_run_ = 0;  ///< records of it returned by `next`
  std::int32_t flag_ = 0;    ///< position of the last flag
  bool unknown_flag_ = false;
};

}  // namespace p3dgrid
