#include "detect/header_reader.hpp"

namespace p3dgrid {
namespace {

constexpr std::uint64_t integer_bytes = 4;
constexpr std::uint64_t extents_bytes = 12;
constexpr std::uint64_t most_blocks_of_text = 10'000'000;  // `9*9` stands for three blocks

std::uint64_t bytes_of(Precision precision) {
  return precision == Precision::double_precision ? 8 : 4;
}

}  // namespace

void UnformattedHeader::begin_record() {
  const Record* record = records_.at(next_++);
  at_ = record == nullptr ? 0 : record->offset + marker_bytes;
  end_ = record == nullptr ? 0 : at_ + record->length;
}

std::optional<std::int32_t> UnformattedHeader::integer() {
  if (!within(integer_bytes)) return std::nullopt;
  const auto value = source_.integer(at_, order_);
  at_ += integer_bytes;
  return value;
}

bool UnformattedHeader::skip_real(Precision precision) {
  at_ += bytes_of(precision);
  return at_ <= end_;
}

std::uint64_t UnformattedHeader::most_blocks() const {
  return source_.size() / extents_bytes;
}

std::optional<std::int32_t> BinaryHeader::integer() {
  const auto value = source_.integer(at_, order_);
  at_ += integer_bytes;
  return value;
}

bool BinaryHeader::skip_real(Precision precision) {
  at_ += bytes_of(precision);
  return at_ <= source_.size();
}

std::uint64_t BinaryHeader::most_blocks() const {
  return source_.size() / extents_bytes;
}

void TextHeader::begin_record() {
  if (begun_) tokens_.skip_line();
  begun_ = true;
  left_ = 0;
}

const TextToken* TextHeader::token() {
  if (left_ == 0) {
    token_ = tokens_.next();
    left_ = token_.repeats;
  }
  if (token_.kind != TextToken::Kind::value || left_ == 0) return nullptr;
  --left_;
  return &token_;
}

std::optional<std::int32_t> TextHeader::integer() {
  const TextToken* next = token();
  return next == nullptr ? std::nullopt : integer_in(next->value);
}

bool TextHeader::skip_real(Precision /*precision*/) {
  const TextToken* next = token();
  return next != nullptr && is_number(next->value);
}

std::uint64_t TextHeader::most_blocks() const {
  return most_blocks_of_text;
}

}  // namespace p3dgrid
