// Statistics of light whose angle, degree and power are known, and counts against the library's own images.
#include "statistics/frame_statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "imaging/even_light.h"
#include "processor/frame_transformer.h"

namespace nerova_zel::test {
namespace {

constexpr double radians = pi / 180.0;

StatisticsSums sums_of(RawFrame frame, const MosaicLayout& layout, StatisticsWeight weight) {
  TransformSettings settings;
  settings.layout = layout;
  const Library library(NEROVA_LIBRARY);
  FrameTransformer transformer(settings, library, statistics_outputs());
  transformer.frame() = std::move(frame);
  transformer.run("frame");
  return sum_up(transformer.frame(), transformer.full_scale(), transformer.outputs(), 65535, weight);
}

/** Of 32 x 20 pixels of even light. */
StatisticsSums sums_of_even(double power, double degree, double angle, StatisticsWeight weight) {
  CameraSettings camera;
  camera.width = 32;
  camera.height = 20;
  camera.bit_depth = 16;
  return sums_of(frame_of(even_light(power, degree, angle), camera), camera.layout, weight);
}

// 85 and -85 degrees are ten apart: their mean is vertical, where that of the numbers would be horizontal.
TEST(Statistics, MeansAreThoseOfAxes) {
  const StatisticsSums first = sums_of_even(0.8, 0.8, 85.0, StatisticsWeight::equal);
  const StatisticsSums second = sums_of_even(0.4, 0.4, -85.0, StatisticsWeight::equal);
  StatisticsSums all = first;
  all += second;
  EXPECT_NEAR(first.mean_angle().value(), 85.0, 0.01);
  EXPECT_NEAR(second.mean_angle().value(), -85.0, 0.01);
  EXPECT_NEAR(second.angle_deviation().value(), 0.0, 0.01);
  EXPECT_NEAR(std::abs(all.mean_angle().value()), 90.0, 0.01);
  EXPECT_NEAR(all.resultant().value(), std::cos(10.0 * radians), 1e-5);
  EXPECT_NEAR(all.angle_deviation().value(), std::sqrt(-2.0 * std::log(std::cos(10.0 * radians))) / 2.0 / radians,
              0.01);
  EXPECT_NEAR(all.mean_degree().value(), 0.6, 1e-3);
  EXPECT_EQ(all.pixels, 1280U);

  // All light together: Stokes vectors add up.
  StatisticsSums weighted = sums_of_even(0.8, 0.8, 85.0, StatisticsWeight::power);
  weighted += sums_of_even(0.4, 0.4, -85.0, StatisticsWeight::power);
  const double s1 = 0.64 * std::cos(170.0 * radians) + 0.16 * std::cos(170.0 * radians);
  const double s2 = 0.64 * std::sin(170.0 * radians) - 0.16 * std::sin(170.0 * radians);
  EXPECT_NEAR(weighted.mean_angle().value(), std::atan2(s2, s1) / 2.0 / radians, 0.01);
  EXPECT_NEAR(weighted.resultant().value(), std::hypot(s1, s2) / 0.8, 1e-3);
  EXPECT_NEAR(weighted.mean_degree().value(), 0.8 / 1.2, 1e-3);

  const StatisticsSums darkness = sums_of_even(0.0, 0.0, 0.0, StatisticsWeight::equal);
  EXPECT_FALSE(darkness.mean_angle() || darkness.mean_degree() || darkness.resultant() || darkness.angle_deviation());
}

TEST(Statistics, CountsAreThoseOfTheImages) {
  EXPECT_STREQ(name_of(CountedImage::frame), "frame");
  EXPECT_STREQ(name_of(CountedImage::diagonal), "diagonal");
  RawFrame frame{61, 30, 12, 16, std::vector<std::uint16_t>(std::size_t{61} * 30)};
  std::mt19937 generator(11);
  std::generate(frame.pixels.begin(), frame.pixels.end(),
                [&] { return static_cast<std::uint16_t>(generator() & 0xFFFU); });
  std::fill(frame.pixels.begin() + 300, frame.pixels.begin() + 700, std::uint16_t{0});
  std::fill(frame.pixels.begin() + 900, frame.pixels.begin() + 1400, std::uint16_t{4095});
  TransformSettings settings;
  const Library library(NEROVA_LIBRARY);
  FrameTransformer transformer(settings, library, statistics_outputs());
  transformer.frame() = frame;
  transformer.run("frame");
  const OutputImages& outputs = transformer.outputs();
  const StatisticsSums sums = sum_up(frame, 4095, outputs, 65535, StatisticsWeight::equal);
  const auto expect = [&](CountedImage image, const std::uint16_t* values, int greatest) {
    const auto at = static_cast<std::size_t>(image);
    EXPECT_EQ(sums.dark[at], std::count(values, values + frame.pixels.size(), 0)) << name_of(image);
    EXPECT_EQ(sums.saturated[at], std::count(values, values + frame.pixels.size(), greatest)) << name_of(image);
  };
  expect(CountedImage::frame, frame.pixels.data(), 4095);
  expect(CountedImage::power, outputs.values(Output::power), 65535);
  expect(CountedImage::hv, outputs.values(Output::hv), 65535);
  expect(CountedImage::diagonal, outputs.values(Output::diagonal), 65535);
  expect(CountedImage::dolp, outputs.values(Output::dolp), 65535);
  const auto* power = outputs.values(Output::power);
  const auto unlit = static_cast<std::uint64_t>(std::count(power, power + frame.pixels.size(), 0));
  EXPECT_EQ(sums.without_degree, unlit);
  EXPECT_GT(sums.without_angle, unlit);  // full pixels have no angle either
}

}  // namespace
}  // namespace nerova_zel::test
