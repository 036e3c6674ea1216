#include "colour_sheet.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <string>

#include "azimuth_legend.h"
#include "sheet_drawing.h"
#include "text_styles.h"

namespace nerova_zel {

namespace {

constexpr int column_gap = 40;
constexpr int tallest_plane = 720;
constexpr int below_plane = 190;

cv::Mat gained(const cv::Mat& plane, double gain) { return plane * gain; }

/** Red, green and blue after white balance. */
std::vector<cv::Mat> balanced_power(const std::vector<SheetPlanes>& planes, const WhiteBalance& balance) {
  const std::size_t last = planes.size() - 1;
  return {gained(planes[0].power, balance.red), gained(0.5 * (planes[1].power + planes[last - 1].power), balance.green),
          gained(planes[last].power, balance.blue)};
}

/** As the sensor's filters look, pale enough for text. */
cv::Scalar filter_colour(ColourPlane plane) {
  switch (plane) {
    case ColourPlane::red:
      return scalar({240, 160, 150});
    case ColourPlane::blue:
      return scalar({160, 185, 245});
    default:
      return scalar({165, 220, 160});
  }
}

class ColourSheetPainter {
 public:
  ColourSheetPainter(const ColourPictureContent& content, const std::vector<SheetPlanes>& planes,
                     const WhiteBalance& balance, AzimuthStyle style, const PictureScales& scales)
      : content_(content),
        planes_(planes),
        balance_(balance),
        style_(style),
        scales_(scales),
        box_(colour_sheet_panel(planes.size()).width, std::max(240, planes.front().power.rows)),
        page_(header_height + 3 * (title_height + box_.height + below_plane), page_width, CV_8UC3, paper) {}

  cv::Mat paint() {
    draw_page_title(page_, content_.name,
                    cv::format("%d x %d pixels of %d bits, %s, origin %d,%d on the sensor; colours of %d x %d pixels",
                               content_.frame.width, content_.frame.height, content_.planes.front().bit_depth,
                               name_of(content_.pattern), content_.origin.x, content_.origin.y,
                               content_.planes.front().frame.width, content_.planes.front().frame.height));
    power_panel();
    frame_panel();
    pattern_panel();
    angle_panels();
    degree_panels();
    return page_;
  }

 private:
  cv::Rect box(int column, int row) const {
    return {margin + column * (box_.width + column_gap),
            header_height + row * (title_height + box_.height + below_plane) + title_height, box_.width, box_.height};
  }

  void power_panel() {
    const std::vector<cv::Mat> light = balanced_power(planes_, balance_);
    const cv::Rect area = box(0, 0);
    draw_panel(page_, area, "Total power in colour",
               cv::format("white balance %s, %s, %s%s", short_number(balance_.red).c_str(),
                          short_number(balance_.green).c_str(), short_number(balance_.blue).c_str(),
                          content_.balance ? "" : " (grey world)"),
               light[0].size(), [&](int x, int y) -> Rgb {
                 const auto level = [&](std::size_t i) { return grey(light[i].at<float>(y, x) / scales_.power).red; };
                 return {level(0), level(1), level(2)};
               });
    draw_light_bar(page_, {area.x, area.br().y + 20, area.width, 30}, scales_.power, 4, tick_style);
    draw_text(page_, "share of full scale, after white balance", {area.x, area.br().y + 112}, note_style);
  }

  void frame_panel() {
    const RawFrame& frame = content_.frame;
    cv::Mat plane;
    cv::Mat(frame.height, frame.width, CV_16U, const_cast<std::uint16_t*>(frame.pixels.data()))
        .convertTo(plane, CV_32F, 1.0 / ((1 << content_.planes.front().bit_depth) - 1));
    plane = fit_plane(plane, box_);
    const double end = light_end(plane);
    const cv::Rect area = box(1, 0);
    draw_panel(page_, area, "Raw frame", "one polarizer and one filter per pixel", plane.size(),
               [&](int x, int y) { return grey(plane.at<float>(y, x) / end); });
    draw_light_bar(page_, {area.x, area.br().y + 20, area.width, 30}, end, 4, tick_style);
    draw_text(page_, "share of full scale", {area.x, area.br().y + 112}, note_style);
  }

  /** The 4 x 4 pixels at the frame's top-left corner. */
  void pattern_panel() {
    const cv::Rect area = box(2, 0);
    draw_text(page_, "Pattern", {area.x, area.y - title_height + 30}, title_style);
    draw_text(page_, "at the frame's top-left corner", {area.x, area.y - title_height + 66}, note_style);
    const int cell = std::min(area.width, area.height) / 4;
    const ColourMosaic mosaic(content_.pattern, content_.origin, {4, 4});
    TextStyle centred = tick_style;
    centred.align = Align::centre;
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 4; ++x) {
        const cv::Rect pixel(area.x + x * cell, area.y + y * cell, cell, cell);
        const ColourPlane plane = mosaic.plane_at(x, y);
        page_(pixel).setTo(filter_colour(plane));
        draw_frame(page_, pixel);
        const int middle = pixel.x + cell / 2;
        const int angle = content_.layout.angle_at(content_.origin.x + x, content_.origin.y + y);
        draw_text(page_, name_of(plane), {middle, pixel.y + cell / 2 - 4}, centred);
        draw_text(page_, std::to_string(angle) + degree_sign, {middle, pixel.y + cell / 2 + 22}, centred);
      }
    }
  }

  void angle_panels() {
    for (std::size_t i = 0; i < planes_.size(); ++i) {
      const SheetPlanes& plane = planes_[i];
      draw_panel(page_, box(static_cast<int>(i), 1), "Angle, " + content_.planes[i].name, "atan2(S2, S1) / 2",
                 plane.power.size(), [&](int x, int y) {
                   return azimuth_colour(style_, plane.angle.at<float>(y, x),
                                         plane.degree.at<float>(y, x) / scales_.degree,
                                         plane.power.at<float>(y, x) / scales_.power);
                 });
    }
    constexpr int radius = 96;
    const cv::Point corner(margin, box(0, 1).br().y);
    draw_wheel(page_, {corner.x + 70 + radius, corner.y + 40 + radius}, radius, false, style_, tick_style);
    const int text_left = corner.x + 2 * radius + 190;
    draw_text(page_, "hue: angle, repeats after 180\xC2\xB0", {text_left, corner.y + 66}, note_style);
    draw_text(page_, wheel_note(style_, scales_.degree), {text_left, corner.y + 102}, note_style);
    if (style_ == AzimuthStyle::composite) {
      draw_text(page_, "brightness: power of the colour", {text_left, corner.y + 138}, note_style);
    }
  }

  void degree_panels() {
    for (std::size_t i = 0; i < planes_.size(); ++i) {
      const SheetPlanes& plane = planes_[i];
      draw_panel(page_, box(static_cast<int>(i), 2), "Degree, " + content_.planes[i].name, "sqrt(S1*S1 + S2*S2) / P",
                 plane.power.size(),
                 [&](int x, int y) { return sequential(plane.degree.at<float>(y, x) / scales_.degree); });
    }
    const cv::Rect first = box(0, 2);
    draw_colour_bar(page_, {first.x, first.br().y + 20, first.width, 30}, sequential,
                    even_ticks(0.0, scales_.degree, 4, short_number), tick_style);
    draw_text(page_, "0 unpolarized, 1 fully polarized", {first.x, first.br().y + 112}, note_style);
  }

  const ColourPictureContent& content_;
  const std::vector<SheetPlanes>& planes_;
  const WhiteBalance& balance_;
  const AzimuthStyle style_;
  const PictureScales scales_;
  const cv::Size box_;
  cv::Mat page_;
};

}  // namespace

cv::Size colour_sheet_panel(std::size_t colours) {
  const int columns = static_cast<int>(colours);
  return {(page_width - 2 * margin - (columns - 1) * column_gap) / columns, tallest_plane};
}

cv::Mat draw_colour_sheet(const ColourPictureContent& content, const std::vector<SheetPlanes>& planes,
                          const WhiteBalance& balance, AzimuthStyle style, const PictureScales& scales) {
  return ColourSheetPainter(content, planes, balance, style, scales).paint();
}

cv::Mat brightest_power(const std::vector<SheetPlanes>& planes, const WhiteBalance& balance) {
  const std::vector<cv::Mat> light = balanced_power(planes, balance);
  cv::Mat brightest = cv::max(light[0], light[1]);
  return cv::max(brightest, light[2]);
}

}  // namespace nerova_zel
