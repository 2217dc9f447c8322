#include "restart_form.hpp"

namespace p3dgrid {

// Layout 101 has extents in its header too, but the library does not hand them over.
bool holds_extents(Layout layout) {
  return layout == Layout::talven || layout == Layout::time_step || may_hold_count(layout);
}

bool holds_step(Layout layout) {
  return layout == Layout::talven || layout == Layout::time_step || holds_triplets(layout);
}

bool holds_parameters(Layout layout) {
  return layout == Layout::solution;
}

bool holds_triplets(Layout layout) {
  return layout == Layout::triplets || layout == Layout::single_block;
}

bool holds_one_block(Layout layout) {
  return layout == Layout::single_block || layout == Layout::bare;
}

bool may_hold_count(Layout layout) {
  return layout == Layout::solution || layout == Layout::function;
}

const char* name_of(Layout layout) {
  switch (layout) {
    case Layout::talven:
      return "0";
    case Layout::time_step:
      return "1";
    case Layout::function:
      return "3";
    case Layout::triplets:
      return "100";
    case Layout::single_block:
      return "101";
    case Layout::bare:
      return "102";
    case Layout::solution:
      break;
  }
  return "2";
}

bool reads_triplets(const RestartForm& form) {
  if (form.layout != Layout::triplets) return holds_triplets(form.layout);
  return form.encoding == Encoding::formatted || holds_doubles(form.encoding, form.precision);
}

RestartForm StatedRestartForm::applied_to(const RestartForm& read) const {
  return {.layout = layout.value_or(read.layout),
          .encoding = encoding.value_or(read.encoding),
          .precision = precision.value_or(read.precision),
          .multiblock = multiblock.value_or(read.multiblock),
          .byte_order = byte_order.value_or(read.byte_order),
          .sections = sections ? sections : read.sections};
}

StatedRestartForm stated_as(const RestartForm& form) {
  return {form.layout,     form.encoding,   form.precision,
          form.multiblock, form.byte_order, form.sections};
}

std::string describe(const RestartForm& form) {
  std::string text = std::string("layout ") + name_of(form.layout) + ", " +
                     describe(form.encoding, form.precision, form.byte_order);
  if (may_hold_count(form.layout)) {
    text += form.multiblock ? ", multi-block" : ", without block count";
  }
  return text;
}

std::vector<FormOption> options_of(const RestartForm& form) {
  StatedRestartForm stated{
      .layout = form.layout, .encoding = form.encoding, .sections = form.sections};
  if (form.encoding != Encoding::formatted) {
    stated.precision = form.precision;
    stated.byte_order = form.byte_order;
  }
  if (may_hold_count(form.layout)) stated.multiblock = form.multiblock;
  return options_of(stated);
}

std::vector<FormOption> options_of(const StatedRestartForm& stated) {
  std::vector<FormOption> options;
  const auto add = [&](const char* name, const auto& choice) {
    if (choice) options.push_back({name, name_of(*choice)});
  };
  add("--layout", stated.layout);
  add("--restart-format", stated.encoding);
  add("--restart-precision", stated.precision);
  add("--restart-multiblock", stated.multiblock);
  add("--restart-byte-order", stated.byte_order);
  if (stated.sections) options.push_back({"--sections", describe(*stated.sections)});
  return options;
}

}  // namespace p3dgrid
