#include "azimuth_picture.h"

#include <vector>

#include "colour_maps.h"

namespace nerova_zel {

namespace {

/** `value_of(share)` for every value from 0 to `maximum` that an output can have. */
template <class Value, class ValueOf>
std::vector<Value> table_of(int maximum, const ValueOf& value_of) {
  std::vector<Value> table;
  table.reserve(static_cast<std::size_t>(maximum) + 1);
  for (int value = 0; value <= maximum; ++value) {
    table.push_back(value_of(static_cast<double>(value) / maximum));
  }
  return table;
}

}  // namespace

cv::Mat draw_azimuth_picture(const PictureImages& content, AzimuthStyle style, const PictureScales& scales) {
  const int maximum = content.output_maximum;
  const auto hues = table_of<cv::Vec3b>(maximum, [](double share) { return hue(180.0 * share - 90.0); });
  const auto degrees = table_of<int>(maximum, [&](double share) { return mixing_level(share / scales.degree); });
  const auto lights = table_of<int>(maximum, [&](double share) { return grey(share / scales.power)[0]; });
  cv::Mat picture(content.azimuth.size(), CV_8UC3);
  for (int y = 0; y < picture.rows; ++y) {
    const auto* azimuth = content.azimuth.ptr<std::uint16_t>(y);
    const auto* degree = content.degree.ptr<std::uint16_t>(y);
    const auto* power = content.total_power.ptr<std::uint16_t>(y);
    auto* row = picture.ptr<cv::Vec3b>(y);
    for (int x = 0; x < picture.cols; ++x) {
      row[x] = mix_azimuth(style, hues[azimuth[x]], degrees[degree[x]], lights[power[x]]);
    }
  }
  return picture;
}

}  // namespace nerova_zel
