#include "console.hpp"
#include "quality.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

/// "(3,1,1)", counted from 1.
std::string place_text(const BlockExtents& place) {
  return "(" + std::to_string(place.i + 1) + "," + std::to_string(place.j + 1) + "," +
         std::to_string(place.k + 1) + ")";
}

std::string text_of(const Occurrences& found) {
  return found.count == 0 ? "0" : std::to_string(found.count) + " " + place_text(found.first);
}

std::string text_of(const std::optional<Worst>& worst) {
  return worst ? rounded(worst->value, 4) + " " + place_text(worst->place) : "-";
}

std::string range_text(const Connection& connection) {
  std::string text;
  for (const Direction d : all_directions) {
    if (d == connection.one.direction) continue;
    const Indices indices = connection.range.of(d);
    if (indices.first == indices.last) continue;
    text += std::string(text.empty() ? "" : ", ") + name_of(d) + " " +
            std::to_string(indices.first + 1) + ":" + std::to_string(indices.last + 1);
  }
  return text;
}

void print_totals(const QualityTotals& totals) {
  print_line("total: " + counted(totals.cells, "cell") + ", " + std::to_string(totals.negative) +
             " of negative volume; " + counted(totals.zero_edges, "edge") + " of length 0; " +
             counted(totals.left_handed_blocks, "left-handed block"));
}

}  // namespace

void print_quality(const std::string& path, const QualityReport& report) {
  print_line(path + ": first or worst places are (i,j,k), counted from 1");
  Table table({"block", "cells", "handed", "negative", "zero volume", "zero edges", "stretching",
               "skewness"});
  for (std::size_t b = 0; b < report.blocks.size(); ++b) {
    const BlockQuality& block = report.blocks[b];
    table.add({std::to_string(b + 1), std::to_string(block.cells),
               block.handedness == Handedness::none ? "-" : name_of(block.handedness),
               text_of(block.negative), text_of(block.zero_volumes), text_of(block.zero_edges),
               text_of(block.stretching), text_of(block.skewness)});
  }
  table.print();
  print_totals(totals_of(report));
  for (std::size_t b = 0; b < report.blocks.size(); ++b) {
    if (report.blocks[b].invalid_points == 0) continue;
    print_line("block " + std::to_string(b + 1) + ": " +
               counted(report.blocks[b].invalid_points, "point") + " not finite, left out");
  }
  for (const Connection& c : report.connections) {
    const std::string common = c.is_whole ? "coincide"
                                          : "share " + counted(c.points, "point") + " in " +
                                                range_text(c) + " of the first";
    print_line("block " + std::to_string(c.one.block + 1) + " " + c.one.text() + " and block " +
               std::to_string(c.other.block + 1) + " " + c.other.text() + " " + common);
  }
  if (report.connections.empty()) print_line("no faces coincide");
}

}  // namespace p3dgrid::tool
