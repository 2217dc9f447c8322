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

/// The byte ranges of the arrays of a block.
Json arrays(const BlockIndex& index) {
  Json arrays = Json::array();
  for (const StoredArray& array : index) {
    arrays.push_back({{"content", name_of(array.content)},
                      {"number", array.number},
                      {"kind", name_of(array.kind)},
                      {"count", array.count},
                      {"ranges", Json::array()}});
    for (const ByteRange& range : array.ranges) {
      arrays.back()["ranges"].push_back({range.offset, range.bytes});
    }
  }
  return arrays;
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

Json header(const Report& report) {
  Json json = Json::object();
  for (const HeaderValue& value : report.header_values()) {
    const std::int32_t* count = std::get_if<std::int32_t>(&value.value);
    json[value.key] = count != nullptr
                          ? Json(*count)
                          : number_in(report.header->form, std::get<double>(value.value));
  }
  return json;
}

Json parameters(const SolutionHeader& header, const std::vector<double>& block) {
  const RestartForm& form = header.form;
  Json json = {{"mach", number_in(form, block[0])},
               {"alpha", number_in(form, block[1])},
               {"reynolds", number_in(form, block[2])},
               {"time", number_in(form, block[3])}};
  const auto names = parameter_names(static_cast<std::int32_t>(block.size()), header.run.species);
  for (std::size_t n = 4; n < block.size(); ++n) json[names[n]] = number_in(form, block[n]);
  return json;
}

Json block(const Report& report, std::size_t b) {
  const auto& [i, j, k] = report.extents.of(b);
  Json json = {{"extents", {i, j, k}}, {"points", report.extents.points_of(b)}};
  if (report.counts_by_block()) json["functions"] = report.header->variables[b];
  if (!report.parameters.empty()) {
    json["parameters"] = parameters(*report.header, report.parameters[b]);
  }
  if (!report.blocks.empty() && report.found.grid().iblank) {
    const auto& [zero, one, negative, other] = report.blocks[b].blanking;
    json["blanking"] = {{"0", zero}, {"1", one}, {"negative", negative}, {"other", other}};
  }
  if (!report.index.empty()) json["arrays"] = arrays(report.index[b]);
  return json;
}

}  // namespace

std::string json_of(const std::string& path, const Report& report) {
  const Found& found = report.found;
  const bool has_extents = !report.extents.i.empty();
  Json blocks = Json::array();
  for (std::size_t b = 0; b < report.extents.i.size(); ++b) blocks.push_back(block(report, b));
  const Json json = {
      {"schema", schema},
      {"file", original_path(path)},
      {"kind", report.kind()},
      {"form", report.header ? form_of(found.restart(), report.sections()) : form_of(found.grid())},
      {"found",
       {{"stated", found.stated}, {"because", found.reason}, {"bytes_read", found.bytes_read}}},
      {"block_count", report.header ? report.header->blocks : report.extents.blocks()},
      {"blocks", blocks},
      {"points", has_extents ? Json(report.extents.points()) : Json()},
      {"header", header(report)},
      {"variables", report.surveys ? variables(*report.surveys) : Json()}};
  // JSON is UTF-8, which a path need not be.
  return json.dump(/*indent=*/2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace p3dgrid::tool
