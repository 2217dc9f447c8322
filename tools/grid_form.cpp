#include "grid_form.hpp"

namespace p3dgrid {

GridForm GridFormChange::applied_to(const GridForm& read) const {
  return {.encoding = encoding.value_or(read.encoding),
          .precision = precision.value_or(read.precision),
          .multiblock = multiblock.value_or(read.multiblock),
          .iblank = iblank.value_or(read.iblank)};
}

std::string describe(const GridForm& form) {
  std::string text = describe(form.encoding, form.precision);
  text += form.multiblock ? ", multi-block" : ", without block count";
  text += form.iblank ? ", with blanking" : ", without blanking";
  return text;
}

std::string options_between(const GridForm& stated, const GridForm& actual) {
  std::string options;
  append_option(options, "--grid-format", stated.encoding, actual.encoding);
  append_option(options, "--grid-precision", stated.precision, actual.precision);
  append_option(options, "--grid-multiblock", stated.multiblock, actual.multiblock);
  append_option(options, "--grid-iblank", stated.iblank, actual.iblank);
  return options;
}

}  // namespace p3dgrid
