#include "encoding.hpp"

namespace p3dgrid {

bool holds_doubles(Encoding encoding, Precision precision) {
  return encoding != Encoding::formatted && precision == Precision::double_precision;
}

std::string describe(Encoding encoding, Precision precision, ByteOrder order) {
  std::string text = name_of(encoding);
  if (encoding != Encoding::formatted) {
    text.append(", ").append(name_of(order)).append("-endian, ");
    text.append(name_of(precision)).append(" precision");
  }
  return text;
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

const char* name_of(ByteOrder order) {
  return order == ByteOrder::big ? "big" : "little";
}

const char* name_of(bool choice) {
  return choice ? "yes" : "no";
}

}  // namespace p3dgrid
