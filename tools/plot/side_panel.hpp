#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/canvas.hpp"
#include "plot/levels.hpp"

namespace p3dgrid::tool::plot {

/// What explains the colours, to the right of the surfaces: a colour bar, or a list of the blocks,
/// or nothing.
struct SidePanel {
  std::optional<Levels> levels;
  std::string label;                ///< of the colour bar
  std::vector<std::size_t> blocks;  ///< from 0; where they have colours of their own

  /// How much room it takes beside the surfaces; `text` is the size of the labels.
  [[nodiscard]] double width(Canvas& canvas, double text) const;
  /// How much height it needs.
  [[nodiscard]] double least_height(double text) const;
  void draw(Canvas& canvas, double x, double y, double height, double text) const;

 private:
  void draw_bar(Canvas& canvas, double x, double y, double height, double text) const;
  void draw_blocks(Canvas& canvas, double x, double y, double text) const;
};

}  // namespace p3dgrid::tool::plot
