#include "calibration_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <opencv2/imgproc.hpp>

#include "angles.h"
#include "azimuth_colours.h"
#include "calibration/fit_text.h"
#include "drawn_picture.h"
#include "sheet_drawing.h"
#include "text_styles.h"

namespace nerova_zel {

namespace {

constexpr int page_height = 1360;
const cv::Rect response_area(150, 220, 1290, 620);
const cv::Rect residual_area(150, 980, 1290, 260);
constexpr int table_left = 1560;

const cv::Scalar grid_colour(225, 225, 225);
const TextStyle number_style{19.0, 0.1, {40, 40, 40}, Align::right};

cv::Scalar colour_of(std::size_t polarizer) {
  return scalar(azimuth_colour(AzimuthStyle::dark, 45.0 * static_cast<double>(polarizer), 0.78, 1.0));
}

/** 1, 2 or 5 times a power of ten, at least `value`. */
double round_up(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  for (const double step : {1.0, 2.0, 5.0}) {
    if (value <= step * power) {
      return step * power;
    }
  }
  return 10.0 * power;
}

/** A panel with angles of 0 to 180 degrees across and values from `least` to `greatest` up. */
class Panel {
 public:
  Panel(cv::Mat& page, const cv::Rect& area, double least, double greatest)
      : page_(page), area_(area), least_(least), greatest_(greatest) {}

  void draw_grid(const std::vector<double>& values) {
    for (int angle = 0; angle <= 180; angle += 15) {
      const cv::Point foot = at(angle, least_);
      cv::line(page_, foot, {foot.x, area_.y}, grid_colour, 1);
      TextStyle centred = tick_style;
      centred.align = Align::centre;
      draw_text(page_, std::to_string(angle) + degree_sign, {foot.x, area_.br().y + 32}, centred);
    }
    for (const double value : values) {
      const cv::Point left = at(0.0, value);
      cv::line(page_, left, {area_.br().x, left.y}, grid_colour, value == 0.0 ? 3 : 1);
      TextStyle right = tick_style;
      right.align = Align::right;
      draw_text(page_, cv::format("%.3g", value), {area_.x - 14, left.y + 8}, right);
    }
    draw_frame(page_, area_);
  }

  void draw_curve(const std::vector<cv::Point2d>& points, const cv::Scalar& colour) {
    std::vector<cv::Point> fixed_point;
    fixed_point.reserve(points.size());
    for (const cv::Point2d& point : points) {
      fixed_point.emplace_back(fixed(place(point.x, point.y)));
    }
    cv::polylines(page_, fixed_point, false, colour, 3, cv::LINE_AA, shift);
  }

  void draw_dot(double angle, double value, const cv::Scalar& colour) {
    const cv::Point centre = fixed(place(angle, value));
    cv::circle(page_, centre, 8 << shift, paper, cv::FILLED, cv::LINE_AA, shift);
    cv::circle(page_, centre, 6 << shift, colour, cv::FILLED, cv::LINE_AA, shift);
  }

 private:
  static constexpr int shift = 4;

  cv::Point2d place(double angle, double value) const {
    return {area_.x + angle / 180.0 * area_.width, area_.y + (greatest_ - value) / (greatest_ - least_) * area_.height};
  }
  cv::Point at(double angle, double value) const { return place(angle, value); }
  static cv::Point fixed(const cv::Point2d& point) { return point * static_cast<double>(1 << shift); }

  cv::Mat& page_;
  cv::Rect area_;
  double least_;
  double greatest_;
};

double signal_of(const PolarizerResponse& response, double angle) {
  return response.unpolarized + response.cosine * std::cos(angle * pi / 90.0) +
         response.sine * std::sin(angle * pi / 90.0);
}

/** 0 to below 180; 180 stays, at the right end. */
double shown_angle(double angle) { return angle == 180.0 ? angle : angle - 180.0 * std::floor(angle / 180.0); }

void draw_responses(cv::Mat& page, const PolarizerFit& fit, const std::vector<double>& angles) {
  double greatest = 0.0;
  for (const PolarizerResponse& response : fit.responses) {
    greatest = std::max(greatest, response.unpolarized + std::hypot(response.cosine, response.sine));
  }
  const double end = 0.1 * std::ceil(10.0 * greatest + 0.5);
  Panel panel(page, response_area, -0.05, end);
  std::vector<double> ticks;
  for (int tick = 0; 0.2 * tick <= end; ++tick) {
    ticks.push_back(tick / 5.0);
  }
  draw_text(page, "Response", {margin, response_area.y - 50}, title_style);
  draw_text(page, "dots: measured, as a share of the source; lines: fitted; across: angle of the source's polarizer",
            {margin, response_area.y - 16}, note_style);
  panel.draw_grid(ticks);
  for (std::size_t k = 0; k < 4; ++k) {
    std::vector<cv::Point2d> curve;
    for (int angle = 0; angle <= 180; ++angle) {
      curve.emplace_back(angle, signal_of(fit.responses[k], angle));
    }
    panel.draw_curve(curve, colour_of(k));
  }
  const double mean = std::accumulate(fit.source.begin(), fit.source.end(), 0.0) / static_cast<double>(angles.size());
  for (std::size_t frame = 0; frame < angles.size(); ++frame) {
    for (std::size_t k = 0; k < 4; ++k) {
      const double departure = fit.residuals[frame][k] * mean / fit.source[frame];
      panel.draw_dot(shown_angle(angles[frame]), signal_of(fit.responses[k], angles[frame]) + departure, colour_of(k));
    }
  }
}

void draw_residuals(cv::Mat& page, const PolarizerFit& fit, const std::vector<double>& angles) {
  double greatest = 1e-6;
  for (const PerPolarizer& residual : fit.residuals) {
    for (const double value : residual) {
      greatest = std::max(greatest, 100.0 * std::abs(value));
    }
  }
  const double end = round_up(1.05 * greatest);
  Panel panel(page, residual_area, -end, end);
  draw_text(page, "Residuals", {margin, residual_area.y - 50}, title_style);
  draw_text(page, "measured less fitted, in % of the source", {margin, residual_area.y - 16}, note_style);
  panel.draw_grid({-end, -0.5 * end, 0.0, 0.5 * end, end});
  for (std::size_t frame = 0; frame < angles.size(); ++frame) {
    for (std::size_t k = 0; k < 4; ++k) {
      panel.draw_dot(shown_angle(angles[frame]), 100.0 * fit.residuals[frame][k], colour_of(k));
    }
  }
}

/** Cells of one row, right-aligned at their columns; a dot of the polarizer's colour before the first. */
void draw_row(cv::Mat& page, int base_line, const std::vector<std::string>& cells, const TextStyle& style) {
  constexpr int first_column = 130;
  constexpr int column = 205;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    draw_text(page, cells[i], {table_left + first_column + static_cast<int>(i) * column, base_line}, style);
  }
}

void mark_row(cv::Mat& page, int base_line, std::size_t polarizer) {
  cv::circle(page, {table_left + 12, base_line - 9}, 11, colour_of(polarizer), cv::FILLED, cv::LINE_AA);
}

void draw_tables(cv::Mat& page, const PolarizerFit& fit) {
  constexpr int row_height = 56;
  TextStyle head = note_style;
  head.align = Align::right;
  const auto name = [](std::size_t k) { return std::to_string(45 * k) + degree_sign; };
  int y = response_area.y - 50;
  draw_text(page, "Polarizers", {table_left, y}, title_style);
  y += 74;
  draw_row(page, y, {"", "angle error", "extinction", "gain"}, head);
  for (std::size_t k = 0; k < 4; ++k) {
    y += row_height;
    mark_row(page, y, k);
    draw_row(page, y,
             {name(k), angle_error_text(fit, k) + degree_sign, extinction_text(fit, k),
              cv::format("%.4f", fit.responses[k].gain())},
             number_style);
  }
  y += 110;
  draw_text(page, "Uncertainty", {table_left, y}, title_style);
  y += 74;
  draw_row(page, y, {"", "angle, std. error", "residual, rms"}, head);
  for (std::size_t k = 0; k < 4; ++k) {
    y += row_height;
    mark_row(page, y, k);
    draw_row(page, y,
             {name(k), cv::format("%.4f", fit.uncertainties[k].angle_degrees) + degree_sign,
              cv::format("%.4f %%", 100.0 * fit.residual_of(k))},
             number_style);
  }
  y += 110;
  draw_text(page, "Weights", {table_left, y}, title_style);
  y += 74;
  draw_row(page, y, {"", "2 P", "S1", "S2"}, head);
  // Matrix 0 holds the polarizers 0, 135, 45 and 90 degrees in this order.
  const CalibrationMatrix matrix = calibration_matrices(fit.responses)[0];
  constexpr std::array<std::size_t, 4> column_of = {0, 2, 3, 1};
  for (std::size_t k = 0; k < 4; ++k) {
    y += row_height;
    mark_row(page, y, k);
    std::vector<std::string> cells = {name(k)};
    for (std::size_t row = 0; row < 3; ++row) {
      cells.push_back(cv::format("%+.4f", matrix[4 * row + column_of[k]]));
    }
    draw_row(page, y, cells, number_style);
  }
}

cv::Mat draw_page(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name) {
  cv::Mat page(page_height, page_width, CV_8UC3, paper);
  const auto [dimmest, brightest] = std::minmax_element(fit.source.begin(), fit.source.end());
  draw_text(page, name, {margin, 76}, page_title_style);
  draw_text(page,
            cv::format("%d frames of a source behind a linear polarizer, %.0f to %.0f pixel values bright",
                       static_cast<int>(angles.size()), *dimmest, *brightest),
            {margin, 120}, page_note_style);
  draw_responses(page, fit, angles);
  draw_residuals(page, fit, angles);
  draw_tables(page, fit);
  return page;
}

}  // namespace

Picture draw_calibration(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name) {
  return drawn_picture([&] { return draw_page(fit, angles, name); });
}

}  // namespace nerova_zel
