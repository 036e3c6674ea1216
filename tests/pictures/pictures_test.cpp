// Pictures for looking at: the published colour tables against their formulas, and the pictures against the tables.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <sstream>
#include <utility>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

/** Blue, green and red, as OpenCV reads pictures. */
using Colour = cv::Vec3b;

std::vector<Colour> published_table(const std::string& name) {
  std::ifstream file(NEROVA_COLOUR_TABLES "/" + name + ".csv");
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "red,green,blue") << name;
  std::vector<Colour> table;
  while (std::getline(file, line)) {
    std::istringstream entry(line);
    int red = -1;
    int green = -1;
    int blue = -1;
    char comma = 0;
    entry >> red >> comma >> green >> comma >> blue;
    table.emplace_back(static_cast<uchar>(blue), static_cast<uchar>(green), static_cast<uchar>(red));
  }
  return table;
}

std::size_t rounded(double value) { return static_cast<std::size_t>(std::lround(value)); }

std::size_t hue_entry(double angle) { return rounded(1530.0 * (angle / 180.0 + 1.0)) % 1530; }

class PicturesTest : public ToolTest {
 protected:
  const std::vector<Colour> greys_ = published_table("grey");
  const std::vector<Colour> sequential_ = published_table("sequential");
  const std::vector<Colour> diverging_ = published_table("diverging");
  const std::vector<Colour> hues_ = published_table("hue");
};

TEST_F(PicturesTest, TablesFollowTheirFormulas) {
  ASSERT_EQ(greys_.size(), 4096U);
  ASSERT_EQ(sequential_.size(), 256U);
  ASSERT_EQ(diverging_.size(), 257U);
  ASSERT_EQ(hues_.size(), 1530U);
  const auto light_of = [](double code) {
    return code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4);
  };
  for (std::size_t i = 0; i < greys_.size(); ++i) {
    EXPECT_GE(static_cast<double>(i) / 4095.0, light_of((greys_[i][0] - 0.5) / 255.0) - 1e-9) << i;
    EXPECT_LE(static_cast<double>(i) / 4095.0, light_of((greys_[i][0] + 0.5) / 255.0) + 1e-9) << i;
    EXPECT_EQ(greys_[i], Colour::all(greys_[i][0]));
  }
  cv::Mat hsv(1, 1530, CV_32FC3);
  for (int i = 0; i < 1530; ++i) {
    hsv.at<cv::Vec3f>(i) = {static_cast<float>(i) * 360.0F / 1530.0F, 1.0F, 1.0F};
  }
  cv::cvtColor(hsv, hsv, cv::COLOR_HSV2BGR);
  for (int i = 0; i < 1530; ++i) {
    for (int channel = 0; channel < 3; ++channel) {
      EXPECT_NEAR(hues_[static_cast<std::size_t>(i)][channel], 255.0F * hsv.at<cv::Vec3f>(i)[channel], 0.01) << i;
    }
  }
  const cv::Mat corners =
      (cv::Mat_<cv::Vec3d>(1, 7) << cv::Vec3d(98, 42, 8), cv::Vec3d(190, 130, 62), cv::Vec3d(222, 196, 150),
       cv::Vec3d(246, 246, 246), cv::Vec3d(132, 168, 244), cv::Vec3d(66, 78, 208), cv::Vec3d(32, 2, 100));
  for (std::size_t i = 0; i < diverging_.size(); ++i) {
    const double place = 6.0 * static_cast<double>(i) / 256.0;
    const int before = std::min(5, static_cast<int>(place));
    const cv::Vec3d colour =
        corners.at<cv::Vec3d>(before) * (before + 1 - place) + corners.at<cv::Vec3d>(before + 1) * (place - before);
    EXPECT_LE(cv::norm(colour - cv::Vec3d(diverging_[i]), cv::NORM_INF), 0.5 + 1e-9) << i;
  }
  // Known from its ends; in between the lightness climbs without a step back.
  EXPECT_EQ(sequential_.front(), Colour(84, 1, 68));
  EXPECT_EQ(sequential_.back(), Colour(37, 231, 253));
  cv::Mat lightness;
  cv::cvtColor(cv::Mat(sequential_), lightness, cv::COLOR_BGR2Lab);
  for (int i = 1; i < 256; ++i) {
    EXPECT_GE(lightness.at<Colour>(i)[0], lightness.at<Colour>(i - 1)[0]) << i;
  }
}

// Random pixels have every angle and degree; the formulas are those of docs/pictures.md.
TEST_F(PicturesTest, AzimuthPicturesAreThoseOfTheirFormulas) {
  constexpr int maximum = 4095;
  constexpr double degree_end = 0.7;
  constexpr double power_end = 0.9;
  std::mt19937 generator(3);
  std::vector<std::uint16_t> frame(std::size_t{90} * 70);
  std::generate(frame.begin(), frame.end(), [&] { return static_cast<std::uint16_t>(generator() & 0xFFFU); });
  write_pgm("f.pgm", frame, 90, 70, 12);
  for (const std::string style : {"plain", "light", "dark", "composite"}) {
    SCOPED_TRACE(style);
    const RunResult result =
        run("transform f.pgm --overwrite --output-max 4095 --degree-max 0.7 --power-max 0.9 --outputs "
            "power,azimuth,dolp,azimuth-picture,azimuth-legend --azimuth-style " +
            style);
    ASSERT_EQ(result.exit_code, 0) << result.errors;
    const cv::Mat power = cv::imread(path("f_power.png"), cv::IMREAD_UNCHANGED);
    const cv::Mat azimuth = cv::imread(path("f_azimuth.png"), cv::IMREAD_UNCHANGED);
    const cv::Mat degree = cv::imread(path("f_dolp.png"), cv::IMREAD_UNCHANGED);
    const cv::Mat picture = cv::imread(path("f_azimuth_" + style + ".png"), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), azimuth.size());
    for (int i = 0; i < static_cast<int>(picture.total()); ++i) {
      const cv::Point at(i % picture.cols, i / picture.cols);
      const Colour hue = hues_[hue_entry(180.0 * azimuth.at<std::uint16_t>(at) / maximum - 90.0)];
      const double k = std::round(255.0 * std::min(1.0, degree.at<std::uint16_t>(at) / (maximum * degree_end)));
      const double g = greys_[rounded(4095.0 * std::min(1.0, power.at<std::uint16_t>(at) / (maximum * power_end)))][0];
      for (int c = 0; c < 3; ++c) {
        const double pale = 255.0 - k * (255.0 - hue[c]) / 255.0;
        const double expected = style == "plain"   ? hue[c]
                                : style == "light" ? pale
                                : style == "dark"  ? k * hue[c] / 255.0
                                                   : g * pale / 255.0;
        ASSERT_EQ(picture.at<Colour>(at)[c], std::round(expected)) << at;
      }
    }
    // On the legend's rim degree and power are full, and the light is as polarized as the line from the centre points.
    const cv::Mat legend = cv::imread(path("f_azimuth_" + style + "_legend.png"));
    for (const double angle : {20.0, 100.0, 200.0, 310.0}) {
      const auto& rim = legend.at<Colour>(static_cast<int>(std::lround(320 - 209 * std::sin(angle * CV_PI / 180.0))),
                                          static_cast<int>(std::lround(360 + 209 * std::cos(angle * CV_PI / 180.0))));
      EXPECT_LE(cv::norm(rim, hues_[hue_entry(angle)], cv::NORM_INF), 8) << angle;
    }
  }
}

TEST_F(PicturesTest, SheetShowsEveryQuantityInItsColours) {
  constexpr int size = 64;
  for (const double angle : {0.0, 30.0, 62.0, 90.0, 135.0, 171.0}) {
    for (const double degree : {0.43, 0.88}) {
      SCOPED_TRACE(::testing::Message() << angle << " degrees, degree " << degree);
      const double twice = angle * CV_PI / 90.0;
      const StokesVector light{0.5, 0.5 * degree * std::cos(twice), 0.5 * degree * std::sin(twice)};
      std::vector<std::uint16_t> frame;
      for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
          frame.push_back(
              static_cast<std::uint16_t>(std::lround(65535 * light.behind_polarizer(MosaicLayout(45).angle_at(x, y)))));
        }
      }
      write_pgm("even.pgm", frame, size, size, 16);
      ASSERT_EQ(
          run("transform even.pgm --overwrite --layout 45 --outputs sheet --degree-max 1 --power-max 0.8").exit_code,
          0);
      const cv::Mat sheet = cv::imread(path("even_sheet.png"));
      ASSERT_EQ(sheet.cols, 2400);
      const auto shown = [&](int column, int row) {
        return sheet.at<Colour>(row == 0 ? 500 : 1600, 422 + 777 * column);
      };
      const auto diverging = [&](double value) { return diverging_[rounded(128.0 + 128.0 * value)]; };
      EXPECT_EQ(shown(0, 0), greys_[rounded(4095 * 0.5 / 0.8)]);
      EXPECT_EQ(shown(2, 0), sequential_[rounded(255.0 * degree)]);
      EXPECT_EQ(shown(1, 1), diverging(degree * std::cos(twice)));
      EXPECT_EQ(shown(2, 1), diverging(degree * std::sin(twice)));
      cv::Mat hsv;
      cv::Mat(1, 1, CV_8UC3, shown(1, 0)).convertTo(hsv, CV_32F, 1.0 / 255.0);
      cv::cvtColor(hsv, hsv, cv::COLOR_BGR2HSV);
      EXPECT_LT(std::abs(std::remainder(hsv.at<cv::Vec3f>(0)[0] / 2.0 - angle, 180.0)), 0.5);
      EXPECT_NEAR(hsv.at<cv::Vec3f>(0)[1], 1.0, 0.01);
      EXPECT_NEAR(hsv.at<cv::Vec3f>(0)[2], degree, 0.01);
    }
  }
}

TEST_F(PicturesTest, DrawsSheetsOfAnyShape) {
  for (const auto& [width, height] : {std::pair{2, 2}, {2, 900}, {3000, 3}, {5000, 2}, {7, 5}}) {
    SCOPED_TRACE(::testing::Message() << width << " x " << height);
    write_pgm("shape.pgm", std::vector<std::uint16_t>(static_cast<std::size_t>(width * height)), width, height, 12);
    const RunResult result = run("transform shape.pgm --overwrite --outputs sheet,azimuth-picture");
    EXPECT_EQ(result.exit_code, 0) << result.errors;
  }
}

}  // namespace
}  // namespace nerova_zel::test
