#include "statistics/frame_statistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "angles.h"
#include "statistics/pixel_counts.h"

namespace nerova_zel {

namespace {

constexpr std::pair<CountedImage, Output> counted_outputs[] = {{CountedImage::power, Output::power},
                                                               {CountedImage::hv, Output::hv},
                                                               {CountedImage::diagonal, Output::diagonal},
                                                               {CountedImage::dolp, Output::dolp}};

void count_limits(CountedImage image, const std::uint16_t* values, std::size_t count, int greatest,
                  StatisticsSums& sums) {
  const PixelCounts counts = count_pixels(values, count, greatest);
  sums.saturated[static_cast<std::size_t>(image)] = counts.saturated;
  sums.dark[static_cast<std::size_t>(image)] = counts.dark;
}

}  // namespace

StatisticsSums& StatisticsSums::operator+=(const StatisticsSums& other) {
  pixels += other.pixels;
  without_degree += other.without_degree;
  without_angle += other.without_angle;
  for (std::size_t i = 0; i < counted_images; ++i) {
    saturated[i] += other.saturated[i];
    dark[i] += other.dark[i];
  }
  cosines += other.cosines;
  sines += other.sines;
  angle_weights += other.angle_weights;
  degrees += other.degrees;
  degree_weights += other.degree_weights;
  return *this;
}

std::optional<double> StatisticsSums::mean_angle() const {
  if (cosines == 0.0 && sines == 0.0) {
    return std::nullopt;
  }
  const double angle = 0.5 * degrees_per_radian * std::atan2(sines, cosines);
  return angle <= -90.0 ? 90.0 : angle;
}

std::optional<double> StatisticsSums::resultant() const {
  if (!(angle_weights > 0.0)) {
    return std::nullopt;
  }
  return std::min(1.0, std::hypot(cosines, sines) / angle_weights);
}

std::optional<double> StatisticsSums::angle_deviation() const {
  const std::optional<double> length = resultant();
  if (!length || *length == 0.0) {
    return std::nullopt;
  }
  return 0.5 * degrees_per_radian * std::sqrt(std::max(0.0, -2.0 * std::log(*length)));
}

std::optional<double> StatisticsSums::mean_degree() const {
  return degree_weights > 0.0 ? std::optional<double>(degrees / degree_weights) : std::nullopt;
}

const char* name_of(CountedImage image) {
  for (const auto& [counted, output] : counted_outputs) {
    if (counted == image) {
      return describe(output).name;
    }
  }
  return "frame";
}

std::set<Output> statistics_outputs() {
  return {Output::stokes, Output::power, Output::hv, Output::diagonal, Output::dolp};
}

StatisticsSums sum_up(const RawFrame& frame, int full_scale, const OutputImages& outputs, int output_maximum,
                      StatisticsWeight weight) {
  StatisticsSums sums;
  sums.pixels = frame.pixels.size();
  count_limits(CountedImage::frame, frame.pixels.data(), frame.pixels.size(), full_scale, sums);
  for (const auto& [image, output] : counted_outputs) {
    count_limits(image, outputs.values(output), frame.pixels.size(), output_maximum, sums);
  }
  const float* const stokes = outputs.stokes();
  const std::uint16_t* const power = outputs.values(Output::power);
  const std::uint16_t* const dolp = outputs.values(Output::dolp);
  for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
    const double s1 = stokes[2 * i];
    const double s2 = stokes[2 * i + 1];
    const double length = std::sqrt(s1 * s1 + s2 * s2);
    if (!std::isfinite(length)) {
      ++sums.without_degree;
      ++sums.without_angle;
      continue;
    }
    const bool by_power = weight == StatisticsWeight::power;
    const double light = by_power ? power[i] : 1.0;
    sums.degrees += light * dolp[i];
    sums.degree_weights += light * output_maximum;
    if (length == 0.0) {
      ++sums.without_angle;
      continue;
    }
    const double angle_weight = by_power ? light * length : 1.0;
    sums.cosines += angle_weight * (s1 / length);
    sums.sines += angle_weight * (s2 / length);
    sums.angle_weights += angle_weight;
  }
  return sums;
}

}  // namespace nerova_zel
