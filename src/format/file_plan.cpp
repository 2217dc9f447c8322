#include "format/file_plan.hpp"

namespace p3dgrid {

FilePlan::FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents,
                   std::vector<BodyRecord> of_block, bool extensions)
    : header_(std::move(header)),
      extents_(std::move(extents)),
      records_(header_.records() + extents_->blocks() * std::ssize(of_block) + extensions),
      body_(std::move(of_block), extents_->blocks(), extensions) {}

FilePlan::FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents, const GridForm& form)
    : FilePlan(std::move(header), std::move(extents),
               {{BodyRecordKind::section, {1, static_cast<std::int32_t>(axes_of(form.coding))}}},
               false) {
  iblank_ = form.iblank;
}

FilePlan::FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents,
                   const RestartForm& form, const BlockShape& shape,
                   std::vector<std::int32_t> functions)
    : FilePlan(std::move(header), std::move(extents),
               block_records(traits_of(form.layout), form.coding, shape),
               traits_of(form.layout).extensions) {
  functions_ = std::move(functions);
}

std::optional<RecordSize> FilePlan::next() {
  const auto& runs = header_.runs();
  if (run_ == runs.size()) return next_of_body();
  const auto& [size, repeats] = runs[run_];
  if (++in_run_ == repeats) {
    in_run_ = 0;
    ++run_;
  }
  return size;
}

std::optional<RecordSize> FilePlan::next_of_body() {
  for (;;) {
    const std::optional<BodyRecord> record = body_.next();
    if (!record) return std::nullopt;
    RecordSize size{.kind = record->kind};
    if (record->kind == BodyRecordKind::block) continue;
    if (record->kind == BodyRecordKind::parameters) {
      size.reals = record->parameters.reals();
      size.integers = record->parameters.integers();
    } else if (record->kind == BodyRecordKind::flag) {
      size.integers = 1;
      flag_ = record->flag;
    } else {
      const auto block = static_cast<std::size_t>(record->block - 1);
      const std::int64_t points = extents_->points_of(block);
      size.reals = points * (functions_.empty() ? record->values_per_point() : functions_[block]);
      size.integers = iblank_ ? points : 0;
    }
    return size;
  }
}

std::int64_t FilePlan::amount(const Coding& coding, std::span<const std::int32_t> flags) const {
  FilePlan rest = *this;
  std::int64_t sum = 0;
  for (std::size_t flag = 0; const auto size = rest.next();) {
    sum += is_text(coding) ? size->values() : size->bytes(coding);
    if (size->kind == BodyRecordKind::flag) rest.set_flag(flags[flag++]);
  }
  return sum;
}

void FilePlan::set_flag(std::int32_t flag) {
  body_.set_flag(flag);
  if (flag == end_of_extensions) return;
  records_ += flag_ < most_flags;
  const bool announces = extension_of(flag, flag_) != nullptr;
  if (announces) records_ += extents_->blocks();
  unknown_flag_ = unknown_flag_ || !announces;
}

}  // namespace p3dgrid
