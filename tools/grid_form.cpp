#include "grid_form.hpp"

#include <string_view>

namespace p3dgrid {
namespace {

template <class Choice>
void append_option(std::string& options, std::string_view option, Choice stated, Choice actual) {
  if (stated == actual) return;
  if (!options.empty()) options += ' ';
  options.append(option).append(" ").append(name_of(actual));
}

}  // namespace

GridForm GridFormChange::applied_to(const GridForm& read) const {
  return {.encoding = encoding.value_or(read.encoding),
          .precision = precision.value_or(read.precision),
          .multiblock = multiblock.value_or(read.multiblock),
          .iblank = iblank.value_or(read.iblank)};
}

bool holds_doubles(const GridForm& form) {
  return form.encoding != Encoding::formatted && form.precision == Precision::double_precision;
}

std::string describe(const GridForm& form) {
  std::string text = name_of(form.encoding);
  if (form.encoding != Encoding::formatted) {
    text.append(", ").append(name_of(form.precision)).append(" precision");
  }
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

const char* name_of(Encoding encoding) {
  switch (encoding) {
    case Encoding::formatted:
      return "formatted";
    case Encoding::binary:
      return "binary";
    case Encoding::unformatted:
      break;
  }
  return "unformatted";
}

const char* name_of(Precision precision) {
  return precision == Precision::double_precision ? "double" : "single";
}

const char* name_of(bool choice) {
  return choice ? "yes" : "no";
}

}  // namespace p3dgrid
