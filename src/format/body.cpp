#include "format/body.hpp"

namespace p3dgrid {

BlockShape shape_of(const Sections& sections, bool leading, std::int32_t older_levels,
                    const ParameterCount& parameters) {
  return {.sections = sections,
          .leading = leading ? std::optional(solution_variables) : std::nullopt,
          .older_levels = older_levels,
          .older = sections.empty() ? Section{} : sections.front(),
          .parameters = parameters};
}

std::vector<BodyRecord> block_records(const LayoutTraits& layout, const Coding& coding,
                                      const BlockShape& shape) {
  using Kind = BodyRecordKind;
  std::vector<BodyRecord> records;
  if (layout.parameters > 0) {
    const ParameterCount fixed{.all = layout.parameters};
    records.push_back({.kind = Kind::parameters,
                       .parameters = layout.more_parameters ? shape.parameters : fixed});
  }
  if (shape.leading) records.push_back({Kind::leading, {1, *shape.leading}});
  for (std::size_t n = shape.leading ? 1 : 0; n < shape.sections.size(); ++n) {
    records.push_back({Kind::section, shape.sections[n]});
  }
  for (std::int32_t level = 0; !shape.leading && level < shape.older_levels; ++level) {
    records.push_back({Kind::older_level, shape.older});
  }
  for (BodyRecord& record : records) record.absent = absent_variable(layout, coding);
  return records;
}

std::optional<BodyRecord> BodyWalk::next() {
  if (announced_ != nullptr && block_ <= nblocks_) {
    return BodyRecord{BodyRecordKind::extension, announced_->variables, block_++, flag_};
  }
  if (flag_ == 0 && block_ <= nblocks_) {
    BodyRecord record{BodyRecordKind::block};
    if (next_ > 0) record = records_[next_ - 1];
    record.block = block_;
    if (++next_ > records_.size()) {
      next_ = 0;
      ++block_;
    }
    return record;
  }
  if (!extensions_ || ++flag_ > most_flags) return std::nullopt;
  return BodyRecord{.kind = BodyRecordKind::flag, .flag = flag_};
}

void BodyWalk::set_flag(std::int32_t flag) {
  extensions_ = flag != end_of_extensions;
  announced_ = extensions_ ? extension_of(flag, flag_) : nullptr;
  block_ = 1;
}

}  // namespace p3dgrid
