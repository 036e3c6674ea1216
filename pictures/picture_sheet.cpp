#include "picture_sheet.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "azimuth_colours.h"
#include "azimuth_legend.h"
#include "sheet_drawing.h"
#include "text_styles.h"

namespace nerova_zel {

namespace {

constexpr int gap = 44;
constexpr int panel_width = (page_width - 2 * margin - 2 * gap) / 3;
constexpr int tallest_panel = 1000;
constexpr int legend_height = 170;
constexpr int row_gap = 44;

class SheetPainter {
 public:
  SheetPainter(const PictureImages& content, const SheetPlanes& planes, AzimuthStyle style,
               const PictureScales& scales);

  cv::Mat paint();

 private:
  using PixelColour = std::function<Rgb(int x, int y)>;

  cv::Rect begin_panel(int index, const std::string& title, const std::string& note, const PixelColour& colour);
  cv::Rect light_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane, double end,
                       int bar_from);
  void signed_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                    const std::string& negative, const std::string& positive);
  void azimuth_panel(int index);
  void degree_panel(int index);
  void frame_panel(int index);
  void layout_icon(const cv::Rect& area);
  cv::Rect telling_piece() const;

  const PictureImages& content_;
  const SheetPlanes& planes_;
  const AzimuthStyle style_;
  const PictureScales scales_;
  int box_height_;
  cv::Mat page_;
};

/** What the power image leaves out or scales down. */
std::string power_text(const PictureImages& content) {
  if (content.power_headroom) {
    return "; power ends at twice full scale";
  }
  const int clipped = cv::countNonZero(content.total_power >= content.output_maximum);
  const double percent = 100.0 * clipped / static_cast<double>(content.total_power.total());
  return clipped == 0 ? std::string() : cv::format("; %.1f %% of the power clipped", percent);
}

SheetPainter::SheetPainter(const PictureImages& content, const SheetPlanes& planes, AzimuthStyle style,
                           const PictureScales& scales)
    : content_(content),
      planes_(planes),
      style_(style),
      scales_(scales),
      box_height_(std::max(240, planes_.frame.rows)),
      page_(header_height + 2 * (title_height + box_height_ + legend_height) + row_gap + margin / 2, page_width,
            CV_8UC3, paper) {}

cv::Mat SheetPainter::paint() {
  draw_page_title(page_, content_.name,
                  cv::format("%d x %d pixels of %d bits, origin %d,%d on the sensor, outputs up to %d",
                             content_.frame.cols, content_.frame.rows, content_.bit_depth, content_.origin.x,
                             content_.origin.y, content_.output_maximum) +
                      power_text(content_));
  light_panel(0, "Total power", "P = (I0 + I45 + I90 + I135) / 2", planes_.power, scales_.power, 0);
  azimuth_panel(1);
  degree_panel(2);
  frame_panel(3);
  signed_panel(4, "Horizontal / vertical", "S1 / P = (I0 - I90) / P", planes_.ratio1, "vertical", "horizontal");
  signed_panel(5, "Diagonal", "S2 / P = (I45 - I135) / P", planes_.ratio2, "135\xC2\xB0", "45\xC2\xB0");
  return page_;
}

/** Title and picture of a panel; returns the room for its legend. */
cv::Rect SheetPainter::begin_panel(int index, const std::string& title, const std::string& note,
                                   const PixelColour& colour) {
  const int left = margin + index % 3 * (panel_width + gap);
  const int top = header_height + index / 3 * (title_height + box_height_ + legend_height + row_gap);
  const cv::Rect box(left, top + title_height, panel_width, box_height_);
  draw_panel(page_, box, title, note, planes_.frame.size(), colour);
  return {left, box.br().y + 20, panel_width, legend_height - 20};
}

cv::Rect SheetPainter::light_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                                   double end, int bar_from) {
  const cv::Rect room =
      begin_panel(index, title, note, [&](int x, int y) { return grey(plane.at<float>(y, x) / end); });
  draw_light_bar(page_, {room.x + bar_from, room.y, room.width - bar_from, 30}, end, bar_from > 0 ? 2 : 4, tick_style);
  draw_text(page_, "share of full scale", {room.x + bar_from, room.y + 92}, note_style);
  return room;
}

void SheetPainter::signed_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                                const std::string& negative, const std::string& positive) {
  const cv::Rect room =
      begin_panel(index, title, note, [&](int x, int y) { return diverging(plane.at<float>(y, x) / scales_.degree); });
  const auto label = [](double value) { return (value > 0.0 ? "+" : "") + short_number(value); };
  const std::vector<Tick> ticks = even_ticks(-scales_.degree, scales_.degree, 4, label);
  draw_colour_bar(
      page_, {room.x, room.y, room.width, 30}, [](double place) { return diverging(2.0 * place - 1.0); }, ticks,
      tick_style);
  draw_text(page_, negative, {room.x, room.y + 92}, note_style);
  TextStyle right = note_style;
  right.align = Align::right;
  draw_text(page_, positive, {room.br().x, room.y + 92}, right);
}

void SheetPainter::degree_panel(int index) {
  const cv::Rect room =
      begin_panel(index, "Degree of linear polarization", "sqrt(S1*S1 + S2*S2) / P",
                  [&](int x, int y) { return sequential(planes_.degree.at<float>(y, x) / scales_.degree); });
  const std::vector<Tick> ticks = even_ticks(0.0, scales_.degree, 4, short_number);
  draw_colour_bar(page_, {room.x, room.y, room.width, 30}, sequential, ticks, tick_style);
  draw_text(page_, "0 unpolarized, 1 fully polarized", {room.x, room.y + 92}, note_style);
}

void SheetPainter::azimuth_panel(int index) {
  const cv::Rect room = begin_panel(index, "Angle of linear polarization", "atan2(S2, S1) / 2", [&](int x, int y) {
    return azimuth_colour(style_, planes_.angle.at<float>(y, x), planes_.degree.at<float>(y, x) / scales_.degree,
                          planes_.power.at<float>(y, x) / scales_.power);
  });
  constexpr int radius = 104;
  const cv::Point centre(room.x + 70 + radius, room.y + radius + 30);
  draw_wheel(page_, centre, radius, false, style_, tick_style);
  const int text_left = centre.x + radius + 76;
  draw_text(page_, "hue: angle, repeats after 180\xC2\xB0", {text_left, room.y + 66}, note_style);
  draw_text(page_, wheel_note(style_, scales_.degree), {text_left, room.y + 102}, note_style);
  if (style_ == AzimuthStyle::composite) {
    draw_text(page_, "brightness: total power", {text_left, room.y + 138}, note_style);
  }
}

/** The raw mosaic, a magnified piece of it and the polarizers that it repeats. */
void SheetPainter::frame_panel(int index) {
  constexpr int square = 108;
  const cv::Rect room = light_panel(index, "Raw frame", "one polarizer angle per pixel", planes_.frame,
                                    light_end(planes_.frame), 2 * square + 110);
  const cv::Rect piece = telling_piece();
  const cv::Rect detail(room.x, room.y, square, square);
  const double end = light_end(planes_.frame) * ((1 << content_.bit_depth) - 1);
  for (int y = 0; y < square; ++y) {
    for (int x = 0; x < square; ++x) {
      const cv::Point from(piece.x + x * piece.width / square, piece.y + y * piece.height / square);
      page_.at<cv::Vec3b>(detail.y + y, detail.x + x) = bgr(grey(content_.frame.at<std::uint16_t>(from) / end));
    }
  }
  draw_frame(page_, detail);
  const cv::Rect icon(room.x + square + 44, room.y, square, square);
  layout_icon(icon);
  TextStyle centred = note_style;
  centred.align = Align::centre;
  const int caption = room.y + square + 30;
  draw_text(page_, "detail", {detail.x + square / 2, caption}, centred);
  draw_text(page_, "pattern", {icon.x + square / 2, caption}, centred);
}

/** A few pixels of the frame where light is bright and polarized, so that the mosaic shows. */
cv::Rect SheetPainter::telling_piece() const {
  cv::Mat polarized = planes_.power.mul(planes_.degree);
  cv::blur(polarized, polarized, {9, 9});
  cv::Point brightest;
  cv::minMaxLoc(polarized, nullptr, nullptr, nullptr, &brightest);
  const cv::Size frame = content_.frame.size();
  const int pixels = std::min({12, frame.width, frame.height});
  const auto start = [&](int place, int shown, int whole) {
    const auto centre = static_cast<int>((place + 0.5) * whole / shown);
    return std::clamp(centre - pixels / 2, 0, whole - pixels) / 2 * 2;
  };
  return {start(brightest.x, polarized.cols, frame.width), start(brightest.y, polarized.rows, frame.height), pixels,
          pixels};
}

void SheetPainter::layout_icon(const cv::Rect& area) {
  const int cell = area.width / 2;
  for (const int row : {0, 1}) {
    for (const int column : {0, 1}) {
      const cv::Rect box(area.x + column * cell, area.y + row * cell, cell, cell);
      const int angle = content_.layout.angle_at(content_.origin.x + column, content_.origin.y + row);
      page_(box).setTo(scalar(hue(angle)) * 0.35 + cv::Scalar::all(255 * 0.65));
      draw_frame(page_, box);
      TextStyle centred = tick_style;
      centred.align = Align::centre;
      draw_text(page_, std::to_string(angle) + "\xC2\xB0",
                {box.x + cell / 2, box.y + (cell + static_cast<int>(tick_style.height)) / 2}, centred);
    }
  }
}

}  // namespace

cv::Size sheet_panel() { return {panel_width, tallest_panel}; }

cv::Mat draw_sheet(const PictureImages& content, const SheetPlanes& planes, AzimuthStyle style,
                   const PictureScales& scales) {
  return SheetPainter(content, planes, style, scales).paint();
}

}  // namespace nerova_zel
