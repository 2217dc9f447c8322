#pragma once

#include <cstdint>
#include <optional>

#include "detect/byte_source.hpp"
#include "detect/record_list.hpp"
#include "detect/text_tokens.hpp"

namespace p3dgrid {

/// Takes the records at the beginning of a file one after another, each item by item. Whatever is
/// not there, or is no such item, is none.
class HeaderReader {
 public:
  HeaderReader() = default;
  HeaderReader(const HeaderReader&) = delete;
  HeaderReader& operator=(const HeaderReader&) = delete;
  virtual ~HeaderReader() = default;

  virtual void begin_record() = 0;
  virtual std::optional<std::int32_t> integer() = 0;
  /// Leaves out a real; false where there is none.
  virtual bool skip_real(Precision precision) = 0;
  /// Most blocks that the file has room for.
  [[nodiscard]] virtual std::uint64_t most_blocks() const = 0;
};

class UnformattedHeader : public HeaderReader {
 public:
  UnformattedHeader(ByteSource& source, RecordList& records, ByteOrder order)
      : source_(source), records_(records), order_(order) {}

  void begin_record() override;
  std::optional<std::int32_t> integer() override;
  bool skip_real(Precision precision) override;
  [[nodiscard]] std::uint64_t most_blocks() const override;

 private:
  bool within(std::uint64_t bytes) const { return at_ + bytes <= end_; }

  ByteSource& source_;
  RecordList& records_;
  ByteOrder order_;
  std::size_t next_ = 0;
  std::uint64_t at_ = 0;
  std::uint64_t end_ = 0;
};

class BinaryHeader : public HeaderReader {
 public:
  BinaryHeader(ByteSource& source, ByteOrder order) : source_(source), order_(order) {}

  void begin_record() override {}
  std::optional<std::int32_t> integer() override;
  bool skip_real(Precision precision) override;
  [[nodiscard]] std::uint64_t most_blocks() const override;

 private:
  ByteSource& source_;
  ByteOrder order_;
  std::uint64_t at_ = 0;
};

class TextHeader : public HeaderReader {
 public:
  explicit TextHeader(ByteSource& source) : tokens_(source) {}

  void begin_record() override;
  std::optional<std::int32_t> integer() override;
  bool skip_real(Precision precision) override;
  [[nodiscard]] std::uint64_t most_blocks() const override;

 private:
  const TextToken* token();

  TextTokens tokens_;
  TextToken token_;
  std::int64_t left_ = 0;  ///< of the repeats of the token
  bool begun_ = false;
};

}  // namespace p3dgrid
