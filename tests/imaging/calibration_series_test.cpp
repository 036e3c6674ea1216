// What calibration refuses and what it doubts; the files it makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "calibration/calibration_file.h"
#include "calibration/fit_text.h"
#include "calibration/series.h"
#include "failure.h"
#include "imaging/even_light.h"

namespace nerova_zel::test {
namespace {

/** The failure of `action`, which must hold all words. */
template <class Action>
void expect_failure(const Action& action, const std::vector<std::string>& words, Fact fact = Fact::other) {
  try {
    action();
    ADD_FAILURE() << "accepted, and should say " << words.front();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.fact(), fact) << failure.what();
    for (const std::string& word : words) {
      EXPECT_NE(std::string(failure.what()).find(word), std::string::npos) << failure.what();
    }
  }
}

class SeriesTest : public ::testing::Test {
 protected:
  SeriesTest() {
    camera_.width = 32;
    camera_.height = 32;
  }

  RawFrame frame(double power, double angle) const { return frame_of(even_light(power, 1.0, angle), camera_); }

  CalibrationSeries series(const std::vector<double>& angles) const {
    CalibrationSeries series(camera_.layout, {0, 0});
    for (const double angle : angles) {
      add(series, angle, frame(0.7, angle));
    }
    return series;
  }

  void add(CalibrationSeries& series, double angle, const RawFrame& pixels) const {
    series.add("at " + std::to_string(static_cast<int>(angle)), angle, pixels, camera_.bit_depth);
  }

  /** A good series and one frame more. */
  CalibrationSeries with(const RawFrame& pixels) const {
    CalibrationSeries all = series({0, 45, 90, 135});
    all.add("last", 20, pixels, camera_.bit_depth);
    return all;
  }

  CameraSettings camera_;
};

TEST_F(SeriesTest, LightMustBeEvenAndFit) {
  expect_failure([&] { with(frame(1.3, 20)).check_light(); }, {"last is overexposed", "50.0 %"});
  expect_failure([&] { with(frame(0.003, 20)).check_light(); }, {"last shows no light"});
  RawFrame some_full = frame(0.7, 20);
  some_full.pixels[5] = 4095;  // one of 1024, within the thousandth that is let pass
  EXPECT_TRUE(with(some_full).check_light().empty());
  some_full.pixels[6] = 4095;
  expect_failure([&] { with(some_full).check_light(); }, {"last is overexposed: 0.2 %"});
  const auto tilted = [&](double difference) {
    RawFrame pixels = frame(0.7, 20);
    for (std::size_t i = 0; i < pixels.pixels.size() / 2; ++i) {
      pixels.pixels[i] = static_cast<std::uint16_t>(std::lround(pixels.pixels[i] * (1.0 - difference)));
    }
    return with(pixels).check_light();
  };
  EXPECT_TRUE(tilted(0.13).empty());
  ASSERT_EQ(tilted(0.2).size(), 1U);
  EXPECT_NE(tilted(0.2).front().find("last differs by 22 %"), std::string::npos) << tilted(0.2).front();
  EXPECT_EQ(tilted(0.38).size(), 1U);
  expect_failure([&] { tilted(0.45); }, {"last is no uniform source", "58 %"});
}

TEST_F(SeriesTest, FramesMustGoTogether) {
  CalibrationSeries good = series({0, 45, 90, 135});
  const RawFrame even = frame(0.7, 20);
  expect_failure([&] { good.add("shallow", 20, even, 11); }, {"shallow", "11 bits", "at 0", "12 bits"});
  expect_failure([&] { good.add("deep", 20, even, 10); }, {"deep", "10 bits"});
  camera_.width = 34;
  expect_failure([&] { good.add("wide", 20, frame(0.7, 20), 12); }, {"wide has 34 x 32", "at 0 has 32 x 32"});
  camera_.width = 8;
  camera_.height = 8;
  series({0});
  camera_.height = 7;
  expect_failure([&] { series({0}); }, {"at 0", "8 x 8"});
  camera_.width = 32;
  camera_.height = 32;
  CalibrationSeries first(camera_.layout, {0, 0});
  expect_failure([&] { first.add("bright", 20, even, 10); }, {"bright", "10 bits"}, Fact::value_too_great);
  for (const std::size_t place : {0U, 1U, 32U, 33U}) {  // bright under one polarizer only
    RawFrame dark = frame(0.0, 0.0);
    for (std::size_t i = 0; i < dark.pixels.size(); ++i) {
      dark.pixels[i] = (i & 33U) == place ? 1000 : 0;
    }
    expect_failure([&] { good.set_dark("dark", dark, 12); }, {"dark is no dark frame", "degree polarizer"});
  }
  good.set_dark("dark", frame(0.0, 0.0), 12);
}

TEST_F(SeriesTest, AnglesMustDetermineTheResponses) {
  expect_failure([&] { (void)series({0, 1, 2, 3}).fit(false); }, {"spread over 180"});
  // As seen from behind: 45 and 135 degrees change places.
  CalibrationSeries mirrored = series({0, 90});
  add(mirrored, 135, frame(0.7, 45));
  add(mirrored, 178, frame(0.7, 2));
  expect_failure([&] { (void)mirrored.fit(false); }, {"45 degree", "at 135.0"}, Fact::wrong_orientation);
  CalibrationSeries off = series({0, 45, 90, 135, 20});
  off.add("off", 113, frame(0.7, 110), 12);
  const std::vector<std::string> doubts = off.doubtful_frames(off.fit(false), false);
  EXPECT_TRUE(std::any_of(doubts.begin(), doubts.end(),
                          [](const std::string& doubt) { return doubt.find("off departs from the fit") == 0; }));
  const CalibrationSeries good = series({0, 45, 90, 135, 20});
  EXPECT_TRUE(good.doubtful_frames(good.fit(true), true).empty());
}

// A few pixels far from all others say nothing of the light.
TEST_F(SeriesTest, HotPixelsDoNotCount) {
  camera_.full_well = 10000;
  RawFrame pixels = frame(0.5, 45);
  const FrameGeometry geometry{camera_.layout, {0, 0}, 12};
  const PerPolarizer level = measure_uniform_frame("even", pixels, geometry).level;
  for (const std::size_t hot : {5U, 100U, 333U, 700U}) {
    pixels.pixels[hot] = 4095;
    pixels.pixels[hot + 1] = 0;
  }
  const PerPolarizer with_hot = measure_uniform_frame("hot", pixels, geometry).level;
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_NEAR(with_hot[k], level[k], 1.0) << k;
  }
}

TEST_F(SeriesTest, ExtinctionIsToldAsFarAsItIsKnown) {
  PolarizerFit fit{};
  const auto told = [&](double leakage, double uncertainty) {
    // Responses of greatest 1 and least `leakage`.
    fit.responses[0] = {0.5 * (1.0 + leakage), 0.5 * (1.0 - leakage), 0.0};
    fit.uncertainties[0].leakage = uncertainty;
    return extinction_text(fit, 0);
  };
  EXPECT_EQ(told(0.004, 0.0001), "250");
  EXPECT_EQ(told(0.004, 0.003), "above 100");
  EXPECT_EQ(told(0.000001, 0.0), "above 100000");
  EXPECT_EQ(told(0.0, 0.00001), "above 50000");
}

TEST_F(SeriesTest, DoubtsAreOfFarResidualsAndACommonTurn) {
  const CalibrationSeries two = series({0, 45});
  PolarizerFit fit{};
  fit.residuals = {{0.003, 0.0, 0.0, 0.004}, {0.004, 0.0, 0.0, -0.003}};
  EXPECT_NEAR(fit.residual_of(0), std::sqrt(0.0000125), 1e-12);
  EXPECT_NEAR(fit.residual_of_frame(1), 0.0025, 1e-12);
  const auto doubts = [&](const PerPolarizer& turns) {
    for (std::size_t k = 0; k < 4; ++k) {
      const double angle = 2.0 * (45.0 * static_cast<double>(k) + turns[k]) * pi / 180.0;
      fit.responses[k] = {0.5, 0.5 * std::cos(angle), 0.5 * std::sin(angle)};
    }
    return two.doubtful_frames(fit, false);
  };
  EXPECT_TRUE(doubts({0.19, 0.19, 0.19, 0.19}).empty());
  EXPECT_TRUE(doubts({2.0, 0.4, 0.4, 0.4}).empty());  // one that is turned more than all are
  EXPECT_TRUE(doubts({0.4, 0.4, 0.4, 2.0}).empty());
  ASSERT_EQ(doubts({0.5, 0.5, 0.4, 0.6}).size(), 1U);
  EXPECT_NE(doubts({0.5, 0.5, 0.4, 0.6}).front().find("about +0.50 degrees"), std::string::npos);
}

TEST(DarkLevel, IsTakenOffFramesOfItsOwnBitDepth) {
  CameraCalibration calibration;
  calibration.dark_levels = {10.0, 20.0, 30.0, 40.4};
  calibration.bit_depth = 12;
  const MosaicLayout layout(0);  // 0, 135 / 45, 90
  std::vector<std::uint16_t> result;
  const RawFrame frame{3, 2, 12, 16, {100, 100, 5, 100, 100, 4095}};
  without_dark_level(frame, {layout, {0, 0}, 12}, calibration, result);
  EXPECT_EQ(result, (std::vector<std::uint16_t>{90, 60, 0, 80, 70, 4075}));
  without_dark_level(frame, {layout, {1, 0}, 12}, calibration, result);
  EXPECT_EQ(result, (std::vector<std::uint16_t>{60, 90, 0, 70, 80, 4065}));
  check_bit_depth(calibration, 12, "f");
  expect_failure([&] { check_bit_depth(calibration, 10, "f"); }, {"f has 10 bits", "frames of 12"},
                 Fact::other_bit_depth);
  calibration.bit_depth.reset();
  check_bit_depth(calibration, 10, "f");
}

TEST_F(SeriesTest, CalibrationFiles) {
  const CalibrationSeries good_series = series({0, 45, 90, 135});
  const PolarizerFit fit = good_series.fit(false);
  const CameraCalibration written = good_series.calibration(fit);
  const std::string text = encode_calibration(written, fit);
  const CameraCalibration read = parse_calibration(text, "good.json");
  EXPECT_EQ(read.matrices, written.matrices);
  EXPECT_EQ(read.bit_depth, 12);
  const auto good = nlohmann::json::parse(text);
  const auto expect = [&](const std::string& content, const std::vector<std::string>& words) {
    std::vector<std::string> all = words;
    all.emplace_back("bad.json");
    expect_failure([&] { parse_calibration(content, "bad.json"); }, all);
  };
  const auto expect_changed = [&](const char* place, const nlohmann::json& value,
                                  const std::vector<std::string>& words) {
    nlohmann::json changed = good;
    changed[nlohmann::json::json_pointer(place)] = value;
    expect(changed.dump(), words);
  };
  expect("", {"not JSON"});
  expect(text.substr(0, 500), {"not JSON", "byte 50"});
  expect("[1, 2]", {"not a calibration file", "format"});
  expect(R"({"format": "nerova-polarize calibration", "version": 1})", {R"(no "matrices")"});
  expect_changed("/format", "other", {R"("format" is "other")"});
  expect_changed("/version", 2, {"version 2"});
  expect_changed("/matrices", {1, 2, 3}, {"4 \"matrices\""});
  expect_changed("/matrices/2", {1, 2, 3}, {"4 rows in matrix 2"});
  expect_changed("/matrices/3/1", {1, 2, 3, 4, 5}, {"4 numbers in row 1 of matrix 3"});
  expect_changed("/matrices/0/1/2", nullptr, {"null in matrix 0"});
  expect_changed("/matrices/0/1/2", "1", {"\"1\" in matrix 0"});
  expect_changed("/matrices/0/1/2", 1e39, {"1e+39 in matrix 0"});
  expect_changed("/dark/levels", {1, 2, 3}, {"4 dark \"levels\""});
  expect_changed("/dark/levels/0", -1, {"dark level -1"});
  expect_changed("/dark/levels/0", 4095, {"dark level 4095"});
  expect_changed("/bit_depth", 17, {"\"bit_depth\" 17"});
  auto earlier = good;  // files of earlier versions have the depth among the dark levels
  earlier["dark"]["bit_depth"] = earlier["bit_depth"];
  earlier.erase("bit_depth");
  EXPECT_EQ(parse_calibration(earlier.dump(), "earlier.json").bit_depth, 12);
  std::string odd = good.dump();
  expect(odd.replace(odd.find("1.0"), 3, "1e999"), {"too large"});
  expect(odd.replace(odd.find("1e999"), 5, "NaN"), {"not JSON"});
}

}  // namespace
}  // namespace nerova_zel::test
