#include "p3dgrid/form.hpp"

#include <array>

#include "p3dgrid/layout.hpp"

namespace p3dgrid {
namespace {

constexpr std::array encodings = {Encoding::unformatted, Encoding::formatted, Encoding::binary};
constexpr std::array precisions = {Precision::single_precision, Precision::double_precision};
constexpr std::array byte_orders = {ByteOrder::little, ByteOrder::big};
constexpr std::array marker_sizes = {MarkerBytes::four, MarkerBytes::eight};
constexpr std::array both_dimensions = {Dimensions::two, Dimensions::three};
constexpr std::array yes_or_no = {true, false};

template <class Stated>
bool all_stated(const Stated& stated) {
  if (!stated.coding.encoding) return false;
  bool all = true;
  Stated::for_each_member(
      [&](const auto& member, const auto& choice) {
        all = all && (choice.has_value() || member.has_default ||
                      !is_in(member.scope, *stated.coding.encoding));
      },
      stated);
  return all;
}

}  // namespace

const Member<Encoding> encoding_member{"format", encodings,
                                       "records with length markers, text, or plain bytes"};
const Member<Precision> precision_member{"precision", precisions,
                                         "size of the reals, ignored for text", Scope::records};
const Member<ByteOrder> byte_order_member{"byte-order", byte_orders,
                                          "order of the bytes of each number, ignored for text",
                                          Scope::records};
const Member<MarkerBytes> marker_bytes_member{
    "marker-bytes",        marker_sizes, "size of the record markers of unformatted files",
    Scope::marked_records, false,        true};
const Member<Dimensions> dimensions_member{
    "dimensions",     both_dimensions, "a file of two has neither k, z nor the third momentum",
    Scope::all_files, false,           true};
const Member<bool> grid_multiblock_member{"multiblock", yes_or_no,
                                          "the file begins with its number of blocks"};
const Member<bool> restart_multiblock_member{
    "multiblock", yes_or_no, "layouts 2 and 3: the file begins with its number of blocks"};
const Member<bool> iblank_member{"iblank", yes_or_no, "each block ends with its blanking values"};
const Member<std::optional<Sections>> sections_member{
    "sections",
    {},
    "variables that each record of a block holds, such as 1-5,6-7",
    Scope::all_files,
    true};

const char* name_of(Encoding encoding) {
  if (encoding == Encoding::formatted) return "formatted";
  return encoding == Encoding::binary ? "binary" : "unformatted";
}

const char* name_of(Precision precision) {
  return precision == Precision::double_precision ? "double" : "single";
}

const char* name_of(ByteOrder order) {
  return order == ByteOrder::big ? "big" : "little";
}

const char* name_of(MarkerBytes bytes) {
  return bytes == MarkerBytes::eight ? "8" : "4";
}

const char* name_of(Dimensions count) {
  return count == Dimensions::two ? "2" : "3";
}

const char* name_of(Layout layout) {
  return traits_of(layout).name;
}

const char* name_of(bool choice) {
  return choice ? "yes" : "no";
}

bool is_complete(const StatedGridForm& stated) {
  return all_stated(stated);
}

bool is_complete(const StatedRestartForm& stated) {
  StatedRestartForm needed = stated;
  if (stated.layout && !traits_of(*stated.layout).may_hold_count()) needed.multiblock = false;
  return all_stated(needed);
}

std::int32_t variables_in(const Sections& sections) {
  std::int64_t variables = 0;
  for (const Section& section : sections) variables += section.variables();
  return static_cast<std::int32_t>(variables);
}

std::string describe(const Coding& coding) {
  std::string text = is_planar(coding) ? "two-dimensional, " : "";
  text += name_of(coding.encoding);
  if (is_text(coding)) return text;
  const bool marked = is_in(marker_bytes_member.scope, coding.encoding);
  if (marked && coding.marker_bytes == MarkerBytes::eight) text += ", 8-byte markers";
  return text + ", " + name_of(coding.byte_order) + "-endian, " + name_of(coding.precision) +
         " precision";
}

std::string describe(const GridForm& form) {
  return describe(form.coding) + (form.multiblock ? ", multi-block" : ", without block count") +
         (form.iblank ? ", with blanking" : ", without blanking");
}

std::string describe(const RestartForm& form) {
  std::string text = std::string("layout ") + name_of(form.layout) + ", " + describe(form.coding);
  if (traits_of(form.layout).may_hold_count()) {
    text += form.multiblock ? ", multi-block" : ", without block count";
  }
  return text;
}

std::string describe(const Sections& sections) {
  std::string text;
  for (const Section& section : sections) {
    if (!text.empty()) text += ',';
    text += std::to_string(section.first) + "-" + std::to_string(section.last);
  }
  return text;
}

}  // namespace p3dgrid
