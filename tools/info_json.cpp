#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "gzip.hpp"
#include "info.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr int schema = 1;  // docs/info-json.md says what may change without a new number

/// A value with its shortest digits. JSON has no numbers for NaN and infinity.
Json number(double value, const std::string& digits) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return std::stod(digits);
}

/// A header value, which the file may hold in single precision.
Json number_in(const RestartForm& form, double value) {
  return number(value, digits_in(form, value));
}

template <class Value>
Json value_of(Value value) {
  return name_of(value);
}
Json value_of(MarkerBytes bytes) {
  return static_cast<int>(bytes);
}
Json value_of(Dimensions count) {
  return static_cast<int>(count);
}

Json json_of(const Coding& coding) {
  Json json;
  Coding::for_each_member(
      [&](const auto& member, const auto& value) {
        std::string key = member.name;
        std::ranges::replace(key, '-', '_');
        json[key] = is_in(member.scope, coding.encoding) ? value_of(value) : Json();
      },
      coding);
  return json;
}

Json form_of(const GridForm& form) {
  Json json = json_of(form.coding);
  json["multiblock"] = form.multiblock;
  json["iblank"] = form.iblank;
  return json;
}

Json form_of(const RestartForm& form, const std::optional<Sections>& sections) {
  Json json = json_of(form.coding);
  const bool coded = traits_of(form.layout).module_code;
  json["layout"] = coded ? Json(static_cast<int>(form.layout)) : Json(name_of(form.layout));
  json["multiblock"] = traits_of(form.layout).may_hold_count() ? Json(form.multiblock) : Json();
  json["sections"] = nullptr;
  if (!sections) return json;
  json["sections"] = Json::array();
  for (const Section& section : *sections) {
    json["sections"].push_back({section.first, section.last});
  }
  return json;
}

Json beginning(const std::string& path, const Found& found, const char* kind, const Json& form) {
  return {
      {"schema", schema},
      {"file", original_path(path)},
      {"kind", kind},
      {"form", form},
      {"found",
       {{"stated", found.stated}, {"because", found.reason}, {"bytes_read", found.bytes_read}}}};
}

Json block(const Extents& extents, std::size_t b) {
  return {{"extents", {extents.i[b], extents.j[b], extents.k[b]}},
          {"points", extents.points_of(b)}};
}

/// Adds the byte ranges of the arrays to the blocks, if they are known.
void add_arrays(Json& blocks, const std::vector<BlockIndex>& index) {
  for (std::size_t b = 0; b < index.size(); ++b) {
    Json& arrays = blocks[b]["arrays"] = Json::array();
    for (const StoredArray& array : index[b]) {
      arrays.push_back({{"content", name_of(array.content)},
                        {"number", array.number},
                        {"kind", name_of(array.kind)},
                        {"count", array.count},
                        {"ranges", Json::array()}});
      for (const ByteRange& range : array.ranges) {
        arrays.back()["ranges"].push_back({range.offset, range.bytes});
      }
    }
  }
}

Json extreme(const std::optional<Extreme>& found) {
  if (!found) return nullptr;
  return {{"value", number(found->value, text_of(found))},
          {"block", found->block},
          {"i", found->i},
          {"j", found->j},
          {"k", found->k}};
}

Json variables(const std::vector<Survey>& surveys) {
  Json json = Json::array();
  for (const Survey& survey : surveys) {
    json.push_back({{"label", survey.label},
                    {"name", survey.name.empty() ? Json() : Json(survey.name)},
                    {"min", extreme(survey.low)},
                    {"max", extreme(survey.high)},
                    {"nan", survey.nan},
                    {"infinite", survey.infinite}});
  }
  return json;
}

Json header(const RestartForm& form, const RunData& run) {
  Json json = Json::object();
  for (const HeaderValue& value : header_values(form, run)) {
    const std::int32_t* count = std::get_if<std::int32_t>(&value.value);
    json[value.key] =
        count != nullptr ? Json(*count) : number_in(form, std::get<double>(value.value));
  }
  return json;
}

/// @param species  number of species
Json parameters(const RestartForm& form, const std::vector<double>& block, std::int32_t species) {
  Json json = {{"mach", number_in(form, block[0])},
               {"alpha", number_in(form, block[1])},
               {"reynolds", number_in(form, block[2])},
               {"time", number_in(form, block[3])}};
  const auto names = parameter_names(static_cast<std::int32_t>(block.size()), species);
  for (std::size_t n = 4; n < block.size(); ++n) json[names[n]] = number_in(form, block[n]);
  return json;
}

Json blocks(const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  const Extents& extents = report.header.extents;
  Json json = Json::array();
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    json.push_back(block(extents, b));
    if (report.counted_variables()) json.back()["functions"] = report.header.variables[b];
    if (report.body && traits_of(form.layout).parameters > 0) {
      json.back()["parameters"] =
          parameters(form, report.body->parameters[b], report.header.run.species);
    }
  }
  return json;
}

// JSON is UTF-8, which a path need not be.
std::string text_of(const Json& json) {
  return json.dump(/*indent=*/2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string json_of(const std::string& path, const GridReport& report) {
  const GridForm& form = report.found.grid();
  Json json = beginning(path, report.found, "grid", form_of(form));
  json["block_count"] = report.extents.blocks();
  json["blocks"] = Json::array();
  for (std::size_t b = 0; b < report.extents.i.size(); ++b) {
    json["blocks"].push_back(block(report.extents, b));
    if (!form.iblank || !report.index.empty()) continue;
    const auto& [zero, one, negative, other] = report.blocks[b].blanking;
    json["blocks"].back()["blanking"] = {
        {"0", zero}, {"1", one}, {"negative", negative}, {"other", other}};
  }
  add_arrays(json["blocks"], report.index);
  json["points"] = report.extents.points();
  json["header"] = Json::object();
  json["variables"] = report.index.empty() ? variables(report.coordinates()) : Json();
  return text_of(json);
}

std::string json_of(const std::string& path, const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  Json json = beginning(path, report.found, "restart", form_of(form, report.sections()));
  json["block_count"] = report.header.blocks;
  json["blocks"] = blocks(report);
  add_arrays(json["blocks"], report.index);
  const bool has_extents = !report.header.extents.i.empty();
  json["points"] = has_extents ? Json(report.header.extents.points()) : Json();
  json["header"] = header(form, report.header.run);
  json["variables"] = report.body ? variables(report.surveys()) : Json();
  return text_of(json);
}

}  // namespace p3dgrid::tool
