#include "picture_sheet.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "colour_maps.h"
#include "sheet_drawing.h"
#include "sheet_planes.h"

namespace nerova_zel {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr int page_width = 2400;
constexpr int margin = 56;
constexpr int gap = 44;
constexpr int panel_width = (page_width - 2 * margin - 2 * gap) / 3;
constexpr int tallest_panel = 1000;
constexpr int header_height = 150;
constexpr int title_height = 88;
constexpr int legend_height = 170;
constexpr int row_gap = 44;

const cv::Scalar paper(252, 252, 252);
const cv::Scalar empty_colour(232, 232, 232);
const TextStyle page_title_style{34.0, 0.12, {30, 30, 30}, Align::left};
const TextStyle page_note_style{19.0, 0.09, {95, 95, 95}, Align::left};
const TextStyle title_style{24.0, 0.12, {30, 30, 30}, Align::left};
const TextStyle note_style{17.0, 0.09, {95, 95, 95}, Align::left};
const TextStyle tick_style{16.0, 0.1, {60, 60, 60}, Align::left};

/** A number with as few decimals as it needs, at most two. */
std::string number(double value) {
  std::string text = cv::format("%.2f", value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

/** The name, shortened in the middle if it is wider than the page. */
std::string fitting_name(const std::string& name) {
  std::string fitting = name;
  for (std::size_t kept = name.size() / 2; text_width(fitting, page_title_style) > page_width - 2 * margin; --kept) {
    fitting = name.substr(0, kept) + "..." + name.substr(name.size() - kept);
  }
  return fitting;
}

class SheetPainter {
 public:
  SheetPainter(const SheetContent& content, const SheetStyle& style);

  cv::Mat paint();

 private:
  using PixelColour = std::function<cv::Vec3b(int x, int y)>;

  cv::Rect begin_panel(int index, const std::string& title, const std::string& note, const PixelColour& colour);
  cv::Rect light_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                       int bar_from);
  void signed_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                    const std::string& negative, const std::string& positive);
  void azimuth_panel(int index);
  void degree_panel(int index);
  void frame_panel(int index);
  void half_disc(cv::Point centre, int radius);
  void layout_icon(const cv::Rect& area);
  cv::Rect telling_piece() const;

  const SheetContent& content_;
  const SheetStyle& style_;
  SheetPlanes planes_;
  double degree_limit_;
  int box_height_;
  cv::Mat page_;
};

SheetPainter::SheetPainter(const SheetContent& content, const SheetStyle& style)
    : content_(content),
      style_(style),
      planes_(make_planes(content, {panel_width, tallest_panel})),
      degree_limit_(style.degree_limit > 0.0 ? style.degree_limit : degree_end(planes_)),
      box_height_(std::max(240, planes_.frame.rows)),
      page_(header_height + 2 * (title_height + box_height_ + legend_height) + row_gap + margin / 2, page_width,
            CV_8UC3, paper) {}

cv::Mat SheetPainter::paint() {
  draw_text(page_, fitting_name(content_.name), {margin, 76}, page_title_style);
  draw_text(page_,
            cv::format("%d x %d pixels of %d bits, origin %d,%d on the sensor, outputs up to %d", content_.frame.cols,
                       content_.frame.rows, content_.bit_depth, content_.origin_x, content_.origin_y,
                       content_.output_maximum),
            {margin, 120}, page_note_style);
  light_panel(0, "Total power", "P = (I0 + I45 + I90 + I135) / 2", planes_.power, 0);
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
  draw_text(page_, title, {left, top + 30}, title_style);
  draw_text(page_, note, {left, top + 66}, note_style);
  const cv::Rect box(left, top + title_height, panel_width, box_height_);
  const cv::Size size = planes_.frame.size();
  const cv::Rect area(box.x + (box.width - size.width) / 2, box.y + (box.height - size.height) / 2, size.width,
                      size.height);
  page_(box).setTo(empty_colour);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      page_.at<cv::Vec3b>(area.y + y, area.x + x) = colour(x, y);
    }
  }
  draw_frame(page_, box);
  return {left, box.br().y + 20, panel_width, legend_height - 20};
}

cv::Rect SheetPainter::light_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                                   int bar_from) {
  const double end = light_end(plane);
  const cv::Rect room =
      begin_panel(index, title, note, [&](int x, int y) { return grey(plane.at<float>(y, x) / end); });
  std::vector<Tick> ticks;
  const int steps = bar_from > 0 ? 2 : 4;
  for (int i = 0; i <= steps; ++i) {
    const double place = static_cast<double>(i) / steps;
    ticks.push_back({place, number(100.0 * end * place) + " %"});
  }
  draw_colour_bar(page_, {room.x + bar_from, room.y, room.width - bar_from, 30}, grey, ticks, tick_style);
  draw_text(page_, "share of full scale", {room.x + bar_from, room.y + 92}, note_style);
  return room;
}

void SheetPainter::signed_panel(int index, const std::string& title, const std::string& note, const cv::Mat& plane,
                                const std::string& negative, const std::string& positive) {
  const cv::Rect room =
      begin_panel(index, title, note, [&](int x, int y) { return diverging(plane.at<float>(y, x) / degree_limit_); });
  std::vector<Tick> ticks;
  for (int i = -2; i <= 2; ++i) {
    const double value = degree_limit_ * i / 2.0;
    ticks.push_back({(i + 2) / 4.0, (i > 0 ? "+" : "") + number(value)});
  }
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
                  [&](int x, int y) { return sequential(planes_.degree.at<float>(y, x) / degree_limit_); });
  std::vector<Tick> ticks;
  for (int i = 0; i <= 4; ++i) {
    ticks.push_back({i / 4.0, number(degree_limit_ * i / 4.0)});
  }
  draw_colour_bar(page_, {room.x, room.y, room.width, 30}, sequential, ticks, tick_style);
  draw_text(page_, "0 unpolarized, 1 fully polarized", {room.x, room.y + 92}, note_style);
}

void SheetPainter::azimuth_panel(int index) {
  const cv::Rect room = begin_panel(index, "Angle of linear polarization", "atan2(S2, S1) / 2", [&](int x, int y) {
    const double brightness = style_.degree_as_brightness ? planes_.degree.at<float>(y, x) / degree_limit_ : 1.0;
    return cyclic(planes_.angle.at<float>(y, x), brightness);
  });
  constexpr int radius = 104;
  const cv::Point centre(room.x + 70 + radius, room.y + radius + 30);
  half_disc(centre, radius);
  const int text_left = centre.x + radius + 76;
  const std::string brightness =
      style_.degree_as_brightness ? "brightness: degree, full at " + number(degree_limit_) : "brightness: always full";
  draw_text(page_, "hue: angle, repeats after 180\xC2\xB0", {text_left, room.y + 66}, note_style);
  draw_text(page_, brightness, {text_left, room.y + 102}, note_style);
}

void SheetPainter::half_disc(cv::Point centre, int radius) {
  for (int y = -radius; y <= 0; ++y) {
    for (int x = -radius; x <= radius; ++x) {
      const double distance = std::hypot(x, y);
      const double cover = std::clamp(radius + 0.5 - distance, 0.0, 1.0);
      const cv::Vec3b colour =
          cyclic(std::atan2(-y, x) * 180.0 / pi, style_.degree_as_brightness ? distance / radius : 1.0);
      cover_pixel(page_, {centre.x + x, centre.y + y}, colour, cover);
    }
  }
  const int away = radius + 12;
  const int half_text = static_cast<int>(tick_style.height / 2);
  for (const int angle : {0, 45, 90, 135, 180}) {
    TextStyle placed = tick_style;
    placed.align = angle < 90 ? Align::left : (angle == 90 ? Align::centre : Align::right);
    const cv::Point at(centre.x + static_cast<int>(std::lround(away * std::cos(angle * pi / 180.0))),
                       centre.y - static_cast<int>(std::lround(away * std::sin(angle * pi / 180.0))));
    const int down = angle == 90 ? 0 : (angle % 180 == 0 ? 0 : half_text);
    draw_text(page_, std::to_string(angle) + "\xC2\xB0", {at.x, at.y + down}, placed);
  }
}

/** The raw mosaic, a magnified piece of it and the polarizers that it repeats. */
void SheetPainter::frame_panel(int index) {
  constexpr int square = 108;
  const cv::Rect room =
      light_panel(index, "Raw frame", "one polarizer angle per pixel", planes_.frame, 2 * square + 110);
  const cv::Rect piece = telling_piece();
  const cv::Rect detail(room.x, room.y, square, square);
  const double end = light_end(planes_.frame) * ((1 << content_.bit_depth) - 1);
  for (int y = 0; y < square; ++y) {
    for (int x = 0; x < square; ++x) {
      const cv::Point from(piece.x + x * piece.width / square, piece.y + y * piece.height / square);
      page_.at<cv::Vec3b>(detail.y + y, detail.x + x) = grey(content_.frame.at<std::uint16_t>(from) / end);
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
      const int angle = content_.layout.angle_at(content_.origin_x + column, content_.origin_y + row);
      page_(box).setTo(cv::Scalar(cyclic(angle, 1.0)) * 0.35 + cv::Scalar::all(255 * 0.65));
      draw_frame(page_, box);
      TextStyle centred = tick_style;
      centred.align = Align::centre;
      draw_text(page_, std::to_string(angle) + "\xC2\xB0",
                {box.x + cell / 2, box.y + (cell + static_cast<int>(tick_style.height)) / 2}, centred);
    }
  }
}

}  // namespace

cv::Mat draw_sheet(const SheetContent& content, const SheetStyle& style) {
  return SheetPainter(content, style).paint();
}

}  // namespace nerova_zel
