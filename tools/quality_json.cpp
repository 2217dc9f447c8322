#include <cmath>
#include <nlohmann/json.hpp>

#include "gzip.hpp"
#include "quality.hpp"

namespace p3dgrid::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr int quality_schema = 1;

Json place_of(const BlockExtents& place) {
  return {place.i + 1, place.j + 1, place.k + 1};
}

Json json_of(const Occurrences& found) {
  return {{"count", found.count}, {"first", found.count == 0 ? Json() : place_of(found.first)}};
}

Json json_of(const std::optional<Worst>& worst) {
  if (!worst) return {};
  return {{"value", worst->value}, {"place", place_of(worst->place)}};
}

Json json_of(const BlockQuality& block) {
  const Handedness hand = block.handedness;
  return {{"extents", {block.extents.i, block.extents.j, block.extents.k}},
          {"cells", block.cells},
          {"invalid_points", block.invalid_points},
          {"handedness", hand == Handedness::none ? Json() : Json(name_of(hand))},
          {"negative_volumes", json_of(block.negative)},
          {"zero_volumes", json_of(block.zero_volumes)},
          {"zero_edges", json_of(block.zero_edges)},
          {"stretching", json_of(block.stretching)},
          {"skewness", json_of(block.skewness)}};
}

Json json_of(const QualityTotals& totals) {
  return {{"cells", totals.cells},
          {"invalid_points", totals.invalid_points},
          {"negative_volumes", totals.negative},
          {"zero_volumes", totals.zero_volumes},
          {"zero_edges", totals.zero_edges},
          {"left_handed_blocks", totals.left_handed_blocks}};
}

Json json_of(const Connection& connection) {
  const auto face = [](const Face& f) { return Json{{"block", f.block + 1}, {"face", f.text()}}; };
  return {{"faces", Json::array({face(connection.one), face(connection.other)})},
          {"whole", connection.is_whole},
          {"points", connection.points},
          {"first", place_of(connection.range.first)},
          {"last", place_of(connection.range.last)}};
}

}  // namespace

std::string json_of(const std::string& path, const QualityReport& report) {
  Json json = {{"schema", quality_schema},
               {"file", original_path(path)},
               {"blocks", Json::array()},
               {"totals", json_of(totals_of(report))},
               {"connections", Json::array()}};
  for (const BlockQuality& block : report.blocks) json["blocks"].push_back(json_of(block));
  for (const Connection& c : report.connections) json["connections"].push_back(json_of(c));
  return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace p3dgrid::tool
