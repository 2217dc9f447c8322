#include "format/file_plan.hpp"

namespace p3dgrid {

FilePlan::FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents, const GridForm& form)
    : header_(std::move(header)),
      extents_(std::move(extents)),
      iblank_(form.iblank),
      coordinates_(axes_of(form.coding)) {
  records_ = header_.records() + extents_->blocks();
}

FilePlan::FilePlan(HeaderSizes header, std::shared_ptr<const Extents> extents,
                   const RestartForm& form, const BlockShape& shape,
                   std::vector<std::int32_t> functions)
    : header_(std::move(header)), extents_(std::move(extents)), functions_(std::move(functions)) {
  const LayoutTraits& layout = traits_of(form.layout);
  std::vector<BodyRecord> records = block_records(layout, form.coding, shape);
  records_ = header_.records() + extents_->blocks() * std::ssize(records) + layout.extensions;
  body_.emplace(std::move(records), extents_->blocks(), layout.extensions);
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
  if (!body_) {
    if (grid_block_ == extents_->i.size()) return std::nullopt;
    const std::int64_t points = extents_->points_of(grid_block_++);
    return RecordSize{.reals = coordinates_ * points, .integers = iblank_ ? points : 0};
  }
  for (;;) {
    const std::optional<BodyRecord> record = body_->next();
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
      const std::int64_t variables =
          functions_.empty() ? record->values_per_point() : functions_[block];
      size.reals = variables * extents_->points_of(block);
    }
    return size;
  }
}

void FilePlan::set_flag(std::int32_t flag) {
  body_->set_flag(flag);
  if (flag == end_of_extensions) return;
  records_ += flag_ < most_flags;
  const bool announces = extension_of(flag, flag_) != nullptr;
  if (announces) records_ += extents_->blocks();
  unknown_flag_ = unknown_flag_ || !announces;
}

}  // namespace p3dgrid
