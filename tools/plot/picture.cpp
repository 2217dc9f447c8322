#include "plot/picture.hpp"

#include <algorithm>
#include <cmath>

#include "plot/axes.hpp"
#include "plot/canvas.hpp"
#include "plot/raster.hpp"
#include "plot/render.hpp"

namespace p3dgrid::tool::plot {
namespace {

// In largest widths of the page.
constexpr double text_size = 1.0 / 62;
constexpr double tallest = 0.72;  // of the surfaces
constexpr double narrowest = 0.6;

// In sizes of the text.
constexpr double margin = 1.0;
constexpr double title_size = 1.25;
constexpr double remark_size = 0.9;
constexpr double line_height = 1.45;
constexpr double side_gap = 1.5;
constexpr double padding = 0.8;  // around the surfaces, inside their area
constexpr double name_beside = 2.4;
constexpr double flat_bottom = 3.2;
constexpr double box_left = 4.0;
constexpr double box_right = 2.2;
constexpr double box_bottom = 1.8;
constexpr double line_width = 1.0 / 36;
constexpr double least_line_distance = 1.0 / 7;
constexpr double least_line_distance_on_colour = 0.5;
constexpr double bar_width = 1.1;
constexpr double least_bar = 9.0;
constexpr double bar_label_height = 1.8;
constexpr double swatch_width = 1.6;
constexpr double block_height = 1.5;  // of the name of a block

constexpr std::size_t most_blocks_listed = 12;

/// Omits the middle of a text that is wider than `room`.
std::string fitted(Canvas& canvas, const std::string& text, const Font& font, double room) {
  if (canvas.text_width(text, font) <= room) return text;
  std::vector<std::size_t> starts;  // of UTF-8 characters
  for (std::size_t n = 0; n < text.size(); ++n) {
    if ((static_cast<unsigned char>(text[n]) & 0xc0U) != 0x80) starts.push_back(n);
  }
  starts.push_back(text.size());
  for (std::size_t kept = starts.size() - 1; kept-- > 0;) {
    const std::string shorter = text.substr(0, starts[kept - kept / 2]) + "\u2026" +
                                text.substr(starts[starts.size() - 1 - kept / 2]);
    if (canvas.text_width(shorter, font) <= room) return shorter;
  }
  return "";
}

/// Joins the remarks into as few lines as possible.
std::vector<std::string> wrapped(Canvas& canvas, const std::vector<std::string>& remarks,
                                 const Font& font, double room) {
  std::vector<std::string> lines;
  for (const std::string& remark : remarks) {
    const std::string joined = lines.empty() ? remark : lines.back() + "   \u00b7   " + remark;
    if (!lines.empty() && canvas.text_width(joined, font) <= room) {
      lines.back() = joined;
    } else {
      lines.push_back(fitted(canvas, remark, font, room));
    }
  }
  return lines;
}

/// The legend to the right of the surfaces: a colour bar, a list of blocks, or nothing.
class Legend {
 public:
  Legend(const Picture& picture, double text)
      : levels_(picture.levels), label_(picture.bar_label), text_(text) {
    if (levels_) return;
    for (const Surface& surface : picture.surfaces) {
      if (blocks_.empty() || blocks_.back() != surface.block) blocks_.push_back(surface.block);
    }
    if (blocks_.size() < 2 || blocks_.size() > most_blocks_listed) blocks_.clear();
  }

  [[nodiscard]] double width(Canvas& canvas) const {
    if (levels_) {
      const double labels = widest_label(canvas, levels_->ticks, text_);
      return std::max((bar_width + label_gap) * text_ + labels, canvas.text_width(label_, {text_}));
    }
    double widest = 0;
    for (const std::size_t block : blocks_) {
      widest = std::max(widest, canvas.text_width(name_of(block), {text_}));
    }
    return blocks_.empty() ? 0 : (swatch_width + label_gap) * text_ + widest;
  }

  [[nodiscard]] double least_height() const {
    if (levels_) return (least_bar + bar_label_height) * text_;
    return static_cast<double>(blocks_.size()) * block_height * text_;
  }

  void draw(Canvas& canvas, double x, double y, double height) const {
    if (levels_) return draw_bar(canvas, x, y, std::floor(y + height));
    double middle = y + 0.5 * block_height * text_;
    for (const std::size_t block : blocks_) {
      canvas.line(x, middle, x + swatch_width * text_, middle, text_ / 6, block_colour(block));
      canvas.text(x + (swatch_width + label_gap) * text_, middle, name_of(block), {text_},
                  {0, 0.5});
      middle += block_height * text_;
    }
  }

 private:
  static std::string name_of(std::size_t block) { return "block " + std::to_string(block + 1); }

  void draw_bar(Canvas& canvas, double x, double y, double bottom) const {
    canvas.text(x, y, label_, {text_}, {0, 1});
    const double top = std::floor(y + bar_label_height * text_);
    const double band = (bottom - top) / static_cast<double>(levels_->colours.size());
    const double wide = std::floor(bar_width * text_);
    for (std::size_t n = 0; n < levels_->colours.size(); ++n) {
      const double upper = std::floor(bottom - static_cast<double>(n + 1) * band);
      const double lower = std::floor(bottom - static_cast<double>(n) * band);
      canvas.fill(x, upper, wide, lower - upper, levels_->colours[n]);
    }
    const double thin = thin_line(text_);
    canvas.frame(x - 0.5, top - 0.5, wide + 1, bottom - top + 1, thin, ink);
    const double per_value = (bottom - top) / (levels_->high() - levels_->low);
    for (const double value : levels_->ticks.values) {
      const double at = std::floor(bottom - (value - levels_->low) * per_value) - 0.5;
      canvas.line(x + wide, at, x + wide + tick_length * text_, at, thin, ink);
      canvas.text(x + wide + label_gap * text_, at, levels_->ticks.label(value), {text_}, {0, 0.5});
    }
  }

  const std::optional<Levels>& levels_;
  const std::string& label_;         ///< of the colour bar
  double text_;                      ///< size of the labels
  std::vector<std::size_t> blocks_;  ///< those listed, from 0
};

/// Positions and sizes of everything on the page, in pixels.
class Page {
 public:
  explicit Page(const Picture& picture)
      : picture_(picture),
        flat_(picture.view.plane.has_value()),
        text_(picture.width * text_size),
        margin_(margin * text_),
        title_font_{title_size * text_, true},
        remark_font_{remark_size * text_, false, pale_ink},
        legend_(picture, text_),
        style_{line_width * text_, picture.levels},
        title_(picture.title),
        remarks_(picture.remarks) {
    projection_.view = picture.view;
    // In a flat view the frame clips the surfaces.
    if (picture.is_part && !flat_) style_.clip = picture.box;
    const auto scratch = make_canvas(1, 1);
    place_across(*scratch);
    const double distance = style_.levels ? least_line_distance_on_colour : least_line_distance;
    style_.line_stride = line_stride(picture_.surfaces, projection_, distance * text_);
    if (style_.line_stride > 1 && draws_lines()) {
      remarks_.push_back("1 of " + std::to_string(style_.line_stride) + " mesh lines drawn");
    }
    place_down(*scratch);
  }

  void draw(const std::string& path) const {
    const auto canvas = make_canvas(width_, height_);
    draw_text(*canvas);
    draw_surfaces(*canvas);
    legend_.draw(*canvas, legend_x_, area_.y, legend_height_);
    canvas->write(path);
  }

 private:
  /// Sets scale and size of the surfaces for the width left beside them.
  void fit(double beside) {
    Range across, up;
    for (unsigned corner = 0; corner < 8; ++corner) {
      across.include(dot(picture_.view.right, picture_.box.corner(corner)));
      up.include(dot(picture_.view.up, picture_.box.corner(corner)));
    }
    const double wide = across.high - across.low;
    const double tall = up.high - up.low;
    const double pad = padding * text_;
    const Vector& toward = picture_.view.toward;
    projection_.scale = std::min(wide > 0 ? (picture_.width - beside - 2 * pad) / wide : INFINITY,
                                 tall > 0 ? (tallest * picture_.width - 2 * pad) / tall : INFINITY);
    projection_.left = across.low - pad / projection_.scale;
    projection_.top = up.high + pad / projection_.scale;
    projection_.middle =
        (dot(toward, picture_.box.corner(0)) + dot(toward, picture_.box.corner(7))) / 2;
    area_.width = static_cast<int>(std::ceil(wide * projection_.scale + 2 * pad));
    area_.height = static_cast<int>(std::ceil(tall * projection_.scale + 2 * pad));
  }

  /// Places axis labels, surfaces and legend from left to right.
  void place_across(Canvas& scratch) {
    const double legend = legend_.width(scratch);
    double left = (margin + box_left) * text_;
    double right =
        (flat_ ? 0 : box_right * text_) + (legend > 0 ? side_gap * text_ + legend : 0) + margin_;
    fit(left + right);
    // The labels of this first fit show how much room they take.
    if (flat_) {
      left = (margin + name_beside) * text_ + widest_label(scratch, axes().ticks_up(), text_);
    } else {
      const Range reach = axes().draw_box(scratch);
      left = std::max(left, margin_ - reach.low);
      right += std::max(0.0, reach.high - area_.width - box_right * text_);
    }
    fit(left + right);
    const double needed = left + area_.width + right;
    const double title = scratch.text_width(title_, title_font_) + 2 * margin_;
    const double least = std::clamp<double>(title, narrowest * picture_.width, picture_.width);
    width_ = static_cast<int>(std::ceil(std::max(needed, least)));
    area_.x = static_cast<int>(left + std::max(0.0, least - needed) / 2);
    legend_x_ = area_.x + area_.width + right - legend - margin_;
  }

  /// Places title, remarks, surfaces and axis labels from top to bottom.
  void place_down(Canvas& scratch) {
    const double room = width_ - 2 * margin_;
    title_ = fitted(scratch, title_, title_font_, room);
    remarks_ = wrapped(scratch, remarks_, remark_font_, room);
    area_.y = static_cast<int>(
        margin_ + line_height * title_font_.size +
        static_cast<double>(remarks_.size()) * (line_height * remark_font_.size) + 0.4 * text_);
    legend_height_ = std::max<double>(area_.height, legend_.least_height());
    const double surfaces = area_.height + (flat_ ? flat_bottom : box_bottom) * text_;
    height_ = area_.y + static_cast<int>(std::ceil(std::max(surfaces, legend_height_) + margin_));
  }

  void draw_text(Canvas& canvas) const {
    double y = margin_;
    canvas.text(margin_, y, title_, title_font_, {0, 1});
    y += line_height * title_font_.size;
    for (const std::string& line : remarks_) {
      canvas.text(margin_, y, line, remark_font_, {0, 1});
      y += line_height * remark_font_.size;
    }
  }

  void draw_surfaces(Canvas& canvas) const {
    Raster raster(area_.width, area_.height);
    render(picture_.surfaces, projection_, style_, raster);
    if (!flat_) axes().draw_box_behind(canvas);
    canvas.image(area_.x, area_.y, area_.width, area_.height, raster.reduced());
    flat_ ? axes().draw_flat(canvas) : static_cast<void>(axes().draw_box(canvas));
  }

  /// Whether there are mesh lines besides outlines.
  [[nodiscard]] bool draws_lines() const {
    return !style_.levels || std::ranges::any_of(picture_.surfaces, [](const Surface& surface) {
      return !surface.cell_values.empty();
    });
  }

  [[nodiscard]] Axes axes() const { return {projection_, area_, picture_.box, text_}; }

  const Picture& picture_;
  bool flat_;
  double text_;  ///< size of ordinary text
  double margin_;
  Font title_font_;
  Font remark_font_;
  Legend legend_;
  Style style_;
  std::string title_;
  std::vector<std::string> remarks_;
  Projection projection_;
  Area area_;  ///< of the surfaces
  int width_ = 0;
  int height_ = 0;
  double legend_x_ = 0;
  double legend_height_ = 0;
};

}  // namespace

void draw(const Picture& picture, const std::string& path) {
  Page(picture).draw(path);
}

}  // namespace p3dgrid::tool::plot
