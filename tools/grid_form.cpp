#include "grid_form.hpp"

namespace p3dgrid {

GridForm StatedGridForm::applied_to(const GridForm& read) const {
  return {.encoding = encoding.value_or(read.encoding),
          .precision = precision.value_or(read.precision),
          .multiblock = multiblock.value_or(read.multiblock),
          .iblank = iblank.value_or(read.iblank),
          .byte_order = byte_order.value_or(read.byte_order)};
}

StatedGridForm stated_as(const GridForm& form) {
  return {form.encoding, form.precision, form.multiblock, form.iblank, form.byte_order};
}

std::string describe(const GridForm& form) {
  std::string text = describe(form.encoding, form.precision, form.byte_order);
  text += form.multiblock ? ", multi-block" : ", without block count";
  text += form.iblank ? ", with blanking" : ", without blanking";
  return text;
}

std::vector<FormOption> options_of(const GridForm& form) {
  StatedGridForm stated{
      .encoding = form.encoding, .multiblock = form.multiblock, .iblank = form.iblank};
  if (form.encoding != Encoding::formatted) {
    stated.precision = form.precision;
    stated.byte_order = form.byte_order;
  }
  return options_of(stated);
}

std::vector<FormOption> options_of(const StatedGridForm& stated) {
  std::vector<FormOption> options;
  const auto add = [&](const char* name, const auto& choice) {
    if (choice) options.push_back({name, name_of(*choice)});
  };
  add("--grid-format", stated.encoding);
  add("--grid-precision", stated.precision);
  add("--grid-multiblock", stated.multiblock);
  add("--grid-iblank", stated.iblank);
  add("--grid-byte-order", stated.byte_order);
  return options;
}

}  // namespace p3dgrid
