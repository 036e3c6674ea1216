#include "colour_maps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace nerova_zel {

namespace {

double limited(double value, double least, double greatest) {
  return std::isnan(value) ? 0.0 : std::clamp(value, least, greatest);
}

cv::Vec3b from_rgb(double red, double green, double blue) {
  return {cv::saturate_cast<uchar>(blue), cv::saturate_cast<uchar>(green), cv::saturate_cast<uchar>(red)};
}

cv::Mat sequential_table() {
  cv::Mat levels(1, 256, CV_8U);
  for (int i = 0; i < 256; ++i) {
    levels.at<uchar>(i) = static_cast<uchar>(i);
  }
  cv::Mat table;
  cv::applyColorMap(levels, table, cv::COLORMAP_VIRIDIS);
  return table;
}

}  // namespace

cv::Vec3b grey(double intensity) {
  const double linear = limited(intensity, 0.0, 1.0);
  const double encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
  return from_rgb(255.0 * encoded, 255.0 * encoded, 255.0 * encoded);
}

cv::Vec3b sequential(double value) {
  static const cv::Mat table = sequential_table();
  return table.at<cv::Vec3b>(static_cast<int>(std::lround(255.0 * limited(value, 0.0, 1.0))));
}

cv::Vec3b diverging(double value) {
  // From the middle outwards; either side falls in lightness alike.
  static constexpr std::array<std::array<double, 3>, 4> blues = {
      {{246, 246, 246}, {150, 196, 222}, {62, 130, 190}, {8, 42, 98}}};
  static constexpr std::array<std::array<double, 3>, 4> reds = {
      {{246, 246, 246}, {244, 168, 132}, {208, 78, 66}, {100, 2, 32}}};
  const double limited_value = limited(value, -1.0, 1.0);
  const auto& side = limited_value < 0.0 ? blues : reds;
  const double place = 3.0 * std::abs(limited_value);
  const auto from = std::min<std::size_t>(2, static_cast<std::size_t>(place));
  const double share = place - static_cast<double>(from);
  const auto mix = [&](std::size_t channel) {
    return side[from][channel] + share * (side[from + 1][channel] - side[from][channel]);
  };
  return from_rgb(mix(0), mix(1), mix(2));
}

cv::Vec3b cyclic(double angle_degrees, double brightness) {
  const double turns = angle_degrees / 180.0;
  const double hue = 6.0 * limited(turns - std::floor(turns), 0.0, 1.0);
  const double value = 255.0 * limited(brightness, 0.0, 1.0);
  const auto channel = [&](double centre) {
    double distance = std::abs(hue - centre);
    distance = std::min(distance, 6.0 - distance);
    return value * std::clamp(2.0 - distance, 0.0, 1.0);
  };
  return from_rgb(channel(0.0), channel(2.0), channel(4.0));
}

}  // namespace nerova_zel
