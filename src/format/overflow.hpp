#pragma once

#include <optional>

#include "format/body.hpp"
#include "recordio/input_file.hpp"

namespace p3dgrid {

namespace recordio = mod_p3dgrid::recordio;

/// The flow parameters of the blocks of an OVERFLOW solution, by the length of the first record
/// after the header; none if it is no record of parameters. One of them is an integer in some
/// versions. In single precision, where it is as long as a real, its value shows it.
/// @param size            bytes of the file
/// @param header_records  records of the header
[[nodiscard]] std::optional<ParameterCount> overflow_parameters(recordio::InputFile& file,
                                                                const Coding& coding,
                                                                std::int64_t size,
                                                                std::int64_t header_records);

}  // namespace p3dgrid
