#pragma once

#include <string>
#include <vector>

#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {

/// The text without what cannot be drawn: control characters, bytes that are no UTF-8.
[[nodiscard]] std::string drawable(const std::string& text);

/// The text, with its middle left out where it is wider than `room`.
[[nodiscard]] std::string fitted(Canvas& canvas, const std::string& text, const Font& font,
                                 double room);

/// The remarks one after another, on as many lines as they need.
[[nodiscard]] std::vector<std::string> wrapped(Canvas& canvas,
                                               const std::vector<std::string>& remarks,
                                               const Font& font, double room);

}  // namespace p3dgrid::tool::plot
