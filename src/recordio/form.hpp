#pragma once

#include <cstdint>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {

/// How a file holds its records.
enum class Form : std::uint8_t {
  unformatted,  ///< framed by length markers
  formatted,    ///< list-directed text
  binary,       ///< the bytes of unformatted records without markers
  none,         ///< an unknown file-format code: nothing is opened, read or written
};

/// The form that a caller's file-format code stands for.
[[nodiscard]] constexpr Form form_of(integer iformat) {
  switch (iformat) {
    case 0:
      return Form::unformatted;
    case 1:
      return Form::formatted;
    case 2:
      return Form::binary;
    default:
      return Form::none;
  }
}

}  // namespace mod_p3dgrid::recordio
