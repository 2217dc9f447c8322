#include <algorithm>

#include "format/body.hpp"
#include "recordio/record_scanner.hpp"

namespace p3dgrid {
namespace {

/// Position of the parameter that may be an integer, the index of the model of the gas.
constexpr std::int32_t position_of_igam = 8;

/// Above any index of a model. Reals are larger as integers.
constexpr std::int32_t most_models = 1 << 20;

bool is_index(std::optional<std::int32_t> word) {
  return word && *word > 0 && *word <= most_models;
}

}  // namespace

std::optional<ParameterCount> overflow_parameters(recordio::InputFile& file, const Coding& coding,
                                                  std::int64_t size, std::int64_t header_records) {
  recordio::RecordScanner records(file, coding, size);
  auto record = records.next();
  for (std::int64_t n = 0; n < header_records && record; ++n) record = records.next();
  const std::int64_t real = real_bytes(coding);
  if (!record || record->length % 4 != 0 || record->length / real > most_variables) {
    return std::nullopt;
  }
  const std::int64_t igam = record->payload + (position_of_igam - 1) * real;
  bool integer = record->length % real != 0;
  ParameterCount count{static_cast<std::int32_t>((record->length + (integer ? 4 : 0)) / real)};
  if (real == 4 && count.all >= position_of_igam && igam <= size - 4) {
    integer = is_index(recordio::integer_at(file, igam, coding.byte_order));
  }
  if (integer) count.integer = position_of_igam;
  const std::int32_t least =
      integer ? position_of_igam : traits_of(Layout::overflow).parameters + 1;
  return count.all >= least ? std::optional(count) : std::nullopt;
}

std::vector<std::string> parameter_names(std::int32_t count, std::int32_t species) {
  std::vector<std::string> names = {"Mach number",
                                    "angle of attack",
                                    "Reynolds number",
                                    "time",
                                    "GAMINF",
                                    "BETA",
                                    "TINF",
                                    "IGAM",
                                    "HTINF",
                                    "HT1",
                                    "HT2"};
  for (std::int32_t n = 1; n <= std::max(2, species); ++n) {
    names.push_back("RGAS" + std::to_string(n));
  }
  names.insert(names.end(), {"FSMACH", "TVREF", "DTVREF"});
  for (auto n = static_cast<std::int32_t>(names.size()); n < count; ++n) {
    names.push_back("parameter " + std::to_string(n + 1));
  }
  names.resize(static_cast<std::size_t>(count));
  return names;
}

}  // namespace p3dgrid
