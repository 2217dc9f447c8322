#include "info_json.hpp"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "blanking.hpp"
#include "header_values.hpp"
#include "table.hpp"
#include "variable_report.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using Json = nlohmann::ordered_json;

constexpr int schema = 1;  // docs/info-json.md says what may change without a new number

/// JSON has no numbers for what is not finite.
Json number(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return value;
}

/// The double that is written with the shortest digits of the value.
Json number(float value) {
  return std::isfinite(value) ? Json(std::stod(digits(value))) : number(double{value});
}

/// A header value, which the file may hold in single precision.
Json number_in(const RestartForm& form, double value) {
  return std::isfinite(value) ? Json(std::stod(digits_in(form, value))) : number(value);
}

Json json_of(const Coding& coding) {
  Json json;
  Coding::for_each_member(
      [&](const auto& member, const auto& value) {
        std::string key = member.name;
        std::ranges::replace(key, '-', '_');
        json[key] = member.only_in_records && is_text(coding) ? Json() : Json(name_of(value));
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

Json form_of(const RestartForm& form, const Sections* sections) {
  Json json = json_of(form.coding);
  json["layout"] = static_cast<integer>(form.layout);
  json["multiblock"] = traits_of(form.layout).may_hold_count() ? Json(form.multiblock) : Json();
  json["sections"] = nullptr;
  if (sections == nullptr) return json;
  json["sections"] = Json::array();
  for (const Section& section : *sections) {
    json["sections"].push_back({section.first, section.last});
  }
  return json;
}

Json beginning(const std::string& path, const Found& found, const char* kind, Json form) {
  Json json;
  json["schema"] = schema;
  json["file"] = path;
  json["kind"] = kind;
  json["form"] = std::move(form);
  json["found"] = {
      {"stated", found.stated}, {"because", found.reason}, {"bytes_read", found.bytes_read}};
  return json;
}

Json block(const Extents& extents, std::size_t b) {
  Json json;
  json["extents"] = {extents.i[b], extents.j[b], extents.k[b]};
  json["points"] = extents.points_of(b);
  return json;
}

Json counts(const BlankingCounts& blanking) {
  return {{"0", blanking.blanked},
          {"1", blanking.used},
          {"negative", blanking.negative},
          {"other", blanking.other}};
}

Json extreme(const std::optional<Extreme>& found) {
  if (!found) return nullptr;
  const Place& place = found->place;
  return {{"value", number(found->value)},
          {"block", place.block},
          {"i", place.i},
          {"j", place.j},
          {"k", place.k}};
}

Json variables(const std::vector<VariableReport>& reports) {
  Json json = Json::array();
  for (const VariableReport& report : reports) {
    json.push_back({{"label", report.label},
                    {"name", report.name.empty() ? Json() : Json(report.name)},
                    {"min", extreme(report.survey.low)},
                    {"max", extreme(report.survey.high)},
                    {"nan", report.survey.nan},
                    {"infinite", report.survey.infinite}});
  }
  return json;
}

Json header(const RestartForm& form) {
  Json json = Json::object();
  for (const HeaderValue& value : header_values(form)) {
    const integer* count = std::get_if<integer>(&value.value);
    json[value.key] =
        count != nullptr ? Json(*count) : number_in(form, std::get<double>(value.value));
  }
  return json;
}

Json parameters(const RestartForm& form, const FlowParameters& block) {
  return {{"mach", number_in(form, block.mach)},
          {"alpha", number_in(form, block.alpha)},
          {"reynolds", number_in(form, block.reynolds)},
          {"time", number_in(form, block.time)}};
}

Json blocks(const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  const Extents& extents = report.body ? report.body->extents : report.header.extents;
  Json json = Json::array();
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    json.push_back(block(extents, b));
    if (!report.header.functions.empty()) json.back()["functions"] = report.header.functions[b];
    if (report.body && traits_of(form.layout).parameters) {
      json.back()["parameters"] = parameters(form, report.body->parameters[b]);
    }
  }
  return json;
}

// A path need not be UTF-8, which JSON is.
std::string text_of(const Json& json) {
  constexpr int indent = 2;
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string json_of(const std::string& path, const Found& found, const Grid& grid) {
  Json json = beginning(path, found, "grid", form_of(found.grid()));
  const Extents extents = extents_of(grid);
  const std::vector<BlankingCounts> blanking = count_blanking(grid);
  json["block_count"] = grid.blocks;
  json["blocks"] = Json::array();
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    json["blocks"].push_back(block(extents, b));
    if (!blanking.empty()) json["blocks"].back()["blanking"] = counts(blanking[b]);
  }
  json["points"] = extents.points();
  json["header"] = Json::object();
  json["variables"] = variables(report_on_coordinates(grid.xyz, extents));
  return text_of(json);
}

std::string json_of(const std::string& path, const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  Json json = beginning(path, report.found, "restart", form_of(form, report.sections()));
  json["block_count"] = report.header.blocks;
  json["blocks"] = blocks(report);
  json["points"] = report.body ? Json(report.body->extents.points()) : Json();
  json["header"] = header(form);
  json["variables"] =
      report.body ? variables(report_on_variables(*report.body, form.layout)) : Json();
  return text_of(json);
}

}  // namespace p3dgrid::tool
