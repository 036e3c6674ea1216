#include "colour_maps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace nerova_zel {

namespace {

// So many that no step is wider than one of 8 bits: greys climb 12.92 times as fast as light from black, and a turn of
// hues has six flanks of 255 steps. The diverging table has a middle.
constexpr int greys = 4096;
constexpr int hues = 6 * 255;
constexpr int sequential_colours = 256;
constexpr int diverging_colours = 257;

double limited(double value, double least, double greatest) {
  return std::isnan(value) ? 0.0 : std::clamp(value, least, greatest);
}

template <int count>
using Table = std::array<cv::Vec3b, static_cast<std::size_t>(count)>;

template <int count, class ColourOf>
Table<count> make_table(const ColourOf& colour_of) {
  Table<count> table;
  for (int i = 0; i < count; ++i) {
    table[static_cast<std::size_t>(i)] = colour_of(i);
  }
  return table;
}

/** The entry nearest to a place from 0 (the first) to 1 (the last). */
template <std::size_t count>
cv::Vec3b at(const std::array<cv::Vec3b, count>& table, double place) {
  return table[static_cast<std::size_t>(std::lround(static_cast<double>(count - 1) * place))];
}

cv::Vec3b grey_entry(int entry) {
  const double linear = static_cast<double>(entry) / (greys - 1);
  const double encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
  return cv::Vec3b::all(cv::saturate_cast<uchar>(255.0 * encoded));
}

cv::Vec3b sequential_entry(int entry) {
  const cv::Mat level(1, 1, CV_8U, cv::Scalar(entry));
  cv::Mat colour;
  cv::applyColorMap(level, colour, cv::COLORMAP_VIRIDIS);
  return colour.at<cv::Vec3b>(0);
}

cv::Vec3b diverging_entry(int entry) {
  // From the middle outwards; either side falls in lightness alike.
  static constexpr std::array<std::array<double, 3>, 4> blues = {
      {{246, 246, 246}, {150, 196, 222}, {62, 130, 190}, {8, 42, 98}}};
  static constexpr std::array<std::array<double, 3>, 4> reds = {
      {{246, 246, 246}, {244, 168, 132}, {208, 78, 66}, {100, 2, 32}}};
  constexpr int middle = diverging_colours / 2;
  const auto& side = entry < middle ? blues : reds;
  const double place = 3.0 * std::abs(entry - middle) / middle;
  const auto from = std::min<std::size_t>(2, static_cast<std::size_t>(place));
  const double share = place - static_cast<double>(from);
  const auto mix = [&](std::size_t channel) {
    return cv::saturate_cast<uchar>(side[from][channel] + share * (side[from + 1][channel] - side[from][channel]));
  };
  return {mix(2), mix(1), mix(0)};
}

cv::Vec3b hue_entry(int entry) {
  const auto channel = [&](int centre) {
    const int distance = std::abs(entry - centre);
    return cv::saturate_cast<uchar>(510 - std::min(distance, hues - distance));
  };
  return {channel(4 * 255), channel(2 * 255), channel(0)};
}

}  // namespace

cv::Vec3b grey(double intensity) {
  static const Table<greys> table = make_table<greys>(grey_entry);
  return at(table, limited(intensity, 0.0, 1.0));
}

cv::Vec3b sequential(double value) {
  static const Table<sequential_colours> table = make_table<sequential_colours>(sequential_entry);
  return at(table, limited(value, 0.0, 1.0));
}

cv::Vec3b diverging(double value) {
  static const Table<diverging_colours> table = make_table<diverging_colours>(diverging_entry);
  return at(table, 0.5 + 0.5 * limited(value, -1.0, 1.0));
}

cv::Vec3b hue(double angle_degrees) {
  static const Table<hues> table = make_table<hues>(hue_entry);
  const double turns = angle_degrees / 180.0;
  const double turn = limited(turns - std::floor(turns), 0.0, 1.0);
  return table[static_cast<std::size_t>(std::lround(hues * turn) % hues)];
}

int mixing_level(double share) { return static_cast<int>(std::lround(255.0 * limited(share, 0.0, 1.0))); }

cv::Vec3b mix_azimuth(AzimuthStyle style, const cv::Vec3b& hue, int degree_level, int power_grey) {
  cv::Vec3b mixed;
  for (int channel = 0; channel < 3; ++channel) {
    const int pure = hue[channel];
    const int pale = 255 * 255 - degree_level * (255 - pure);  // out of 255 * 255
    int value = pure;
    if (style == AzimuthStyle::light) {
      value = (pale + 127) / 255;
    } else if (style == AzimuthStyle::dark) {
      value = (degree_level * pure + 127) / 255;
    } else if (style == AzimuthStyle::composite) {
      value = (power_grey * pale + 255 * 255 / 2) / (255 * 255);
    }
    mixed[channel] = static_cast<uchar>(value);
  }
  return mixed;
}

cv::Vec3b azimuth_colour(AzimuthStyle style, double angle_degrees, double degree, double power) {
  return mix_azimuth(style, hue(angle_degrees), mixing_level(degree), grey(power)[0]);
}

}  // namespace nerova_zel
