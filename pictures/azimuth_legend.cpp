#include "azimuth_legend.h"

#include <algorithm>
#include <cmath>

#include "angles.h"
#include "azimuth_colours.h"
#include "text_styles.h"

namespace nerova_zel {

void draw_wheel(cv::Mat& page, cv::Point centre, int radius, bool whole, AzimuthStyle style, const TextStyle& text) {
  for (int y = -radius; y <= (whole ? radius : 0); ++y) {
    for (int x = -radius; x <= radius; ++x) {
      const double distance = std::hypot(x, y);
      const double cover = std::clamp(radius + 0.5 - distance, 0.0, 1.0);
      const Rgb colour = azimuth_colour(style, std::atan2(-y, x) * 180.0 / pi, distance / radius, 1.0);
      cover_pixel(page, {centre.x + x, centre.y + y}, scalar(colour), cover);
    }
  }
  const int away = radius + 12;
  const int half_text = static_cast<int>(text.height / 2);
  for (int angle = 0; angle <= (whole ? 315 : 180); angle += 45) {
    const double across = std::cos(angle * pi / 180.0);
    const double up = std::sin(angle * pi / 180.0);
    TextStyle placed = text;
    placed.align = across > 0.1 ? Align::left : (across < -0.1 ? Align::right : Align::centre);
    const int down =
        static_cast<int>(std::lround(half_text * (up > 0.9 ? 0.0 : (whole ? 1.0 - up : (up > 0.1 ? 1.0 : 0.0)))));
    const cv::Point at(centre.x + static_cast<int>(std::lround(away * across)),
                       centre.y - static_cast<int>(std::lround(away * up)) + down);
    draw_text(page, std::to_string(whole ? angle % 180 : angle) + "\xC2\xB0", at, placed);
  }
}

std::string wheel_note(AzimuthStyle style, double degree_end) {
  const std::string full = "degree, full at " + short_number(degree_end);
  switch (style) {
    case AzimuthStyle::light:
    case AzimuthStyle::composite:
      return "saturation: " + full;
    case AzimuthStyle::dark:
      return "brightness: " + full;
    default:
      return "degree: not shown";
  }
}

cv::Mat draw_azimuth_legend(AzimuthStyle style, const PictureScales& scales) {
  constexpr int width = 720;
  constexpr int radius = 210;
  constexpr int notes_top = 590;
  const bool shows_power = style == AzimuthStyle::composite;
  cv::Mat page(shows_power ? 790 : 660, width, CV_8UC3, paper);
  draw_text(page, "Angle of linear polarization", {40, 56}, title_style);
  draw_wheel(page, {width / 2, 320}, radius, true, style, tick_style);
  draw_text(page, "hue: angle, repeats after 180\xC2\xB0", {40, notes_top}, note_style);
  draw_text(page, wheel_note(style, scales.degree), {40, notes_top + 36}, note_style);
  if (shows_power) {
    draw_light_bar(page, {40, notes_top + 76, width - 80, 30}, scales.power, 4, tick_style);
    draw_text(page, "brightness: total power, share of full scale", {40, notes_top + 168}, note_style);
  }
  return page;
}

}  // namespace nerova_zel
