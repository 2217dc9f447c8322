#pragma once

#include <optional>
#include <string>
#include <vector>

#include "encoding.hpp"

namespace p3dgrid {

/// What has to be known of a grid file to read it; the file itself does not say.
struct GridForm {
  Encoding encoding = Encoding::unformatted;
  Precision precision = Precision::single_precision;
  bool multiblock = true;
  bool iblank = false;
  ByteOrder byte_order = ByteOrder::native;

  friend bool operator==(const GridForm&, const GridForm&) = default;
};

/// What a user states of a grid file's form; the rest is left open. Of a file to be read, what is
/// open is found out; of one to be written, it stays as in the file read.
struct StatedGridForm {
  std::optional<Encoding> encoding = {};
  std::optional<Precision> precision = {};
  std::optional<bool> multiblock = {};
  std::optional<bool> iblank = {};
  std::optional<ByteOrder> byte_order = {};

  [[nodiscard]] GridForm applied_to(const GridForm& read) const;

  friend bool operator==(const StatedGridForm&, const StatedGridForm&) = default;
};

/// Everything of a form, as if a user had stated it.
[[nodiscard]] StatedGridForm stated_as(const GridForm& form);

/// For people: "binary, little-endian, double precision, multi-block, with blanking".
[[nodiscard]] std::string describe(const GridForm& form);

/// An option as it is typed, and the value that describes a file.
struct FormOption {
  std::string name;
  std::string value;

  [[nodiscard]] std::string text() const { return name + " " + value; }
};

/// Every option that says something of a file of this form.
[[nodiscard]] std::vector<FormOption> options_of(const GridForm& form);

/// What has been stated, as options.
[[nodiscard]] std::vector<FormOption> options_of(const StatedGridForm& stated);

}  // namespace p3dgrid
