// Statistics of light whose angle, degree and power are known, and counts against the library's own images.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <random>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

constexpr double radians = 3.14159265358979323846 / 180.0;

class StatsTest : public ToolTest {
 protected:
  /** A frame of 32 x 20 pixels of even light. */
  void write_even(const std::string& name, double power, double degree, double angle) const {
    SceneSettings settings;
    settings.uniform_light = StokesVector{power, power * degree * std::cos(2.0 * angle * radians),
                                          power * degree * std::sin(2.0 * angle * radians)};
    CameraSettings camera;
    camera.width = 32;
    camera.height = 20;
    camera.bit_depth = 16;
    write_pgm(name, simulate_frame({1, 1, settings}, camera), 32, 20, 16);
  }

  nlohmann::json stats(const std::string& arguments) const {
    const RunResult result = run("stats --json " + arguments);
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    return nlohmann::json::parse(result.output);
  }
};

// 85 and -85 degrees are ten apart: their mean is vertical, where that of the numbers would be horizontal.
TEST_F(StatsTest, MeansAreThoseOfAxes) {
  write_even("a.pgm", 0.8, 0.8, 85.0);
  write_even("b.pgm", 0.4, 0.4, -85.0);
  const auto equal = stats("a.pgm b.pgm --jobs 2");
  const auto& all = equal.at("all");
  ASSERT_EQ(equal.at("frames").size(), 2U);
  EXPECT_EQ(equal.at("frames").at(1).at("name"), "b.pgm");
  EXPECT_NEAR(equal.at("frames").at(0).at("mean_angle_degrees").get<double>(), 85.0, 0.01);
  EXPECT_NEAR(equal.at("frames").at(1).at("mean_angle_degrees").get<double>(), -85.0, 0.01);
  EXPECT_NEAR(equal.at("frames").at(1).at("angle_deviation_degrees").get<double>(), 0.0, 0.01);
  EXPECT_NEAR(std::abs(all.at("mean_angle_degrees").get<double>()), 90.0, 0.01);
  EXPECT_NEAR(all.at("resultant_length").get<double>(), std::cos(10.0 * radians), 1e-5);
  EXPECT_NEAR(all.at("angle_deviation_degrees").get<double>(),
              std::sqrt(-2.0 * std::log(std::cos(10.0 * radians))) / 2.0 / radians, 0.01);
  EXPECT_NEAR(all.at("mean_degree").get<double>(), 0.6, 1e-3);

  // All light together: Stokes vectors add up.
  const auto weighted = stats("a.pgm b.pgm --weight power --summary");
  const double s1 = 0.64 * std::cos(170.0 * radians) + 0.16 * std::cos(170.0 * radians);
  const double s2 = 0.64 * std::sin(170.0 * radians) - 0.16 * std::sin(170.0 * radians);
  EXPECT_FALSE(weighted.contains("frames"));
  EXPECT_NEAR(weighted.at("all").at("mean_angle_degrees").get<double>(), std::atan2(s2, s1) / 2.0 / radians, 0.01);
  EXPECT_NEAR(weighted.at("all").at("resultant_length").get<double>(), std::hypot(s1, s2) / 0.8, 1e-3);
  EXPECT_NEAR(weighted.at("all").at("mean_degree").get<double>(), 0.8 / 1.2, 1e-3);

  const std::string text = run("stats a.pgm b.pgm").output;
  EXPECT_NE(text.find("angle      85.0"), std::string::npos) << text;
  EXPECT_NE(text.find("all 2 frames: 1280 pixels"), std::string::npos) << text;
}

TEST_F(StatsTest, CountsAreThoseOfTheImages) {
  CameraSettings camera;
  camera.width = 61;
  camera.height = 30;
  camera.bit_depth = 12;
  camera.layout = MosaicLayout(45);
  std::mt19937 generator(11);
  std::vector<std::uint16_t> frame(std::size_t{61} * 30);
  std::generate(frame.begin(), frame.end(), [&] { return static_cast<std::uint16_t>(generator() & 0xFFFU); });
  std::fill(frame.begin() + 300, frame.begin() + 700, std::uint16_t{0});
  std::fill(frame.begin() + 900, frame.begin() + 1400, std::uint16_t{4095});
  write_pgm("f.pgm", frame, 61, 30, 12);
  const Outputs expected = transform_by_library(camera, frame, 65535);
  const auto counted = stats("f.pgm --layout 45").at("all");
  const auto expect = [&](const char* image, const std::vector<std::uint16_t>& values, int greatest) {
    EXPECT_EQ(counted.at("dark_pixels").at(image), std::count(values.begin(), values.end(), 0)) << image;
    EXPECT_EQ(counted.at("saturated_pixels").at(image), std::count(values.begin(), values.end(), greatest)) << image;
  };
  expect("frame", frame, 4095);
  expect("power", expected.power, 65535);
  expect("hv", expected.hv, 65535);
  expect("diagonal", expected.diagonal, 65535);
  expect("dolp", expected.dolp, 65535);
  const auto unlit = std::count_if(expected.power.begin(), expected.power.end(), [](int value) { return value == 0; });
  EXPECT_EQ(counted.at("pixels_without_degree"), unlit);
  EXPECT_GT(counted.at("pixels_without_angle"), unlit);  // full pixels have no angle either
}

TEST_F(StatsTest, WhatFailsLeavesTheDocumentWhole) {
  write_even("a.pgm", 0.0, 0.0, 0.0);
  const RunResult result = run("stats --json a.pgm missing.pgm");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.errors.find("missing.pgm"), std::string::npos) << result.errors;
  const auto document = nlohmann::json::parse(result.output);
  EXPECT_EQ(document.at("frames_done"), 1);
  EXPECT_EQ(document.at("frames_failed"), 1);
  EXPECT_TRUE(document.at("all").at("mean_angle_degrees").is_null());
  EXPECT_TRUE(document.at("all").at("mean_degree").is_null());
  expect_refusal("stats a.pgm --weight degree", {"--weight degree", "equal or power"});
  expect_refusal("stats missing.pgm", {"missing.pgm"});
}

}  // namespace
}  // namespace nerova_zel::test
