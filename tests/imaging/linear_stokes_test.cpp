// What imaging computes beside the library, held to what the library makes of the same numbers.
#include "processor/linear_stokes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "angles.h"
#include "processor/frame_transformer.h"

namespace nerova_zel::test {
namespace {

bool same(float a, float b) { return std::memcmp(&a, &b, sizeof(a)) == 0 || (std::isnan(a) && std::isnan(b)); }

/** Samples of a frame, many of them 0, so that some pixels have no light. */
RawFrame noise(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  RawFrame frame{width, height, 12, 16, {}};
  for (int i = 0; i < width * height; ++i) {
    frame.pixels.push_back(random() % 3 == 0 ? 0 : static_cast<std::uint16_t>(random() % 4096));
  }
  return frame;
}

Calibration disturbed(Calibration matrices) {
  std::mt19937 random(5);
  for (CalibrationMatrix& matrix : matrices) {
    for (float& weight : matrix) {
      weight += 0.1F * static_cast<float>(random() % 1000) / 1000.0F;
    }
  }
  return matrices;
}

FrameTransformer run(const TransformSettings& settings, const Library& library, const RawFrame& frame) {
  FrameTransformer transformer(settings, library, {Output::power, Output::s0, Output::s1, Output::s2, Output::angle});
  transformer.frame() = frame;
  transformer.run("frame");
  return transformer;
}

/** Rounds to nearest, ties to even, after clamping, as the library's outputs are. */
std::uint16_t power_code(float s0) {
  return static_cast<std::uint16_t>(std::lrint(std::min(s0 * 1000.0F / 4095.0F, 1000.0F)));
}

// The pair and the power are divisions and scalings of P, S1 and S2 where a plugin computes; sizes cover odd sides,
// whose corner takes another matrix, and rows that do not fill a step.
TEST(LinearStokes, AreWhatAPluginDividesAndScales) {
  Library library(NEROVA_LIBRARY);
  if (!library.calibrates_every_pixel()) {
    GTEST_SKIP() << "no plugin serves this computer";
  }
  for (const bool calibrated : {false, true}) {
    if (calibrated) {
      library.set_calibration(disturbed(library.calibration()));
    }
    unsigned seed = 1;
    for (const FrameSize size : {FrameSize{2, 2}, {3, 2}, {2, 5}, {16, 3}, {17, 4}, {50, 7}, {67, 9}}) {
      TransformSettings settings;
      settings.layout = MosaicLayout(mosaic_layouts[seed % 4]);
      settings.origin = {static_cast<int>(seed / 2 % 2), static_cast<int>(seed % 2)};
      settings.output_maximum = 1000;
      const RawFrame frame = noise(size.width, size.height, ++seed);
      const FrameTransformer transformer = run(settings, library, frame);
      const OutputImages& made = transformer.outputs();
      for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
        const float s0 = made.floats(Output::s0)[i];
        ASSERT_TRUE(same(made.floats(Output::s1)[i] / s0, made.stokes()[2 * i])) << size.width << ", pixel " << i;
        ASSERT_TRUE(same(made.floats(Output::s2)[i] / s0, made.stokes()[2 * i + 1])) << size.width << ", pixel " << i;
        ASSERT_EQ(power_code(s0), made.values(Output::power)[i]) << size.width << ", pixel " << i;
      }
    }
  }
}

TEST(LinearStokes, AnglesAreHalfThoseOfTheLibrarysPairs) {
  for (const char* file : {NEROVA_TESTED_LIBRARIES}) {
    const Library library(file);
    const RawFrame frame = noise(67, 34, 9);
    const FrameTransformer transformer = run({}, library, frame);
    int dark = 0;
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
      const float* const pair = transformer.outputs().stokes() + 2 * i;
      const float angle = transformer.outputs().floats(Output::angle)[i];
      if (!std::isfinite(pair[0]) || !std::isfinite(pair[1])) {  // P is 0, as this route computes it
        ASSERT_TRUE(std::isnan(angle));
        ++dark;
        continue;
      }
      const double truth = std::atan2(pair[1], pair[0] + 0.0F) * 90.0 / std::acos(-1.0);
      ASSERT_NEAR(angle, truth < 0.0 ? truth + 180.0 : truth, 1e-5) << pair[0] << ", " << pair[1];
      ASSERT_LT(angle, 180.0F);
    }
    EXPECT_GT(dark, 0);
  }
}

/** A frame of 2 x 2 cells that shows another light from column `edge` on. */
RawFrame edge_frame(int edge) {
  RawFrame frame{32, 16, 12, 16, {}};
  const MosaicLayout layout(90);
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const double angle = x < edge ? 20.0 : 110.0;
      const double twice = 2.0 * (layout.angle_at(x, y) - angle) * 3.14159265358979 / 180.0;
      frame.pixels.push_back(static_cast<std::uint16_t>(std::lround(1000.0 * (1.0 + 0.8 * std::cos(twice)))));
    }
  }
  return frame;
}

// Even light without polarization, whose P is twice the pixel value: beyond full scale, or just below the doubled one.
TEST(Sampling, PowerHeadroomHoldsAllPower) {
  const Library library(NEROVA_LIBRARY);
  for (const Sampling sampling : {Sampling::window, Sampling::superpixel, Sampling::bilinear}) {
    for (const bool headroom : {false, true}) {
      TransformSettings settings;
      settings.sampling = sampling;
      settings.power_headroom = headroom;
      FrameTransformer transformer(settings, library, {Output::power, Output::dolp});
      transformer.frame() = {2, 2, 12, 16, std::vector<std::uint16_t>(4, 4000)};
      transformer.run("frame");
      EXPECT_EQ(transformer.outputs().values(Output::power)[0], headroom ? 64007 : 65535);  // 8000 / 8191 of 65535
      EXPECT_EQ(transformer.clipped_power(), headroom ? 0.0 : 1.0);
      EXPECT_EQ(transformer.outputs().values(Output::dolp)[0], 0);
    }
  }
}

// Away from the edge all samplings show the light. Bilinear pixels mix both sides over two columns, symmetrically,
// where windows do over one; superpixels that begin at the edge mix nothing.
TEST(Sampling, OfAnEdge) {
  const Library library(NEROVA_LIBRARY);
  for (const Sampling sampling : {Sampling::window, Sampling::superpixel, Sampling::bilinear}) {
    TransformSettings settings;
    settings.sampling = sampling;
    FrameTransformer transformer(settings, library,
                                 {Output::angle, Output::azimuth, Output::dolp, Output::power, Output::stokes});
    transformer.frame() = edge_frame(16);
    transformer.run("frame");
    const OutputImages& made = transformer.outputs();
    const bool halved = sampling == Sampling::superpixel;
    ASSERT_EQ(made.width(), halved ? 16 : 32);
    ASSERT_EQ(made.height(), halved ? 8 : 16);
    for (int x = 0; x < made.width(); ++x) {
      const int column = halved ? 2 * x : x;
      const auto at = static_cast<std::size_t>(5 * made.width() + x);
      const bool mixed = (sampling == Sampling::window && column == 15) ||
                         (sampling == Sampling::bilinear && (column == 15 || column == 16));
      if (mixed) {
        EXPECT_LT(made.values(Output::dolp)[at], 0.6 * 65535) << column;
        continue;
      }
      EXPECT_NEAR(made.floats(Output::angle)[at], column < 16 ? 20.0 : 110.0, 0.1) << column;
      EXPECT_NEAR(made.values(Output::azimuth)[at] * 180.0 / 65535, column < 16 ? 110.0 : 20.0, 0.25) << column;
      EXPECT_NEAR(made.values(Output::dolp)[at] / 65535.0, 0.8, 0.002) << column;
      EXPECT_NEAR(made.values(Output::power)[at] / 65535.0, 2000.0 / 4095, 0.001) << column;
      const double twice = 2.0 * (column < 16 ? 20.0 : 110.0) * pi / 180.0;
      EXPECT_NEAR(made.stokes()[2 * at], 0.8 * std::cos(twice), 0.003) << column;
      EXPECT_NEAR(made.stokes()[2 * at + 1], 0.8 * std::sin(twice), 0.003) << column;
    }
  }
}

TEST(LinearStokes, AnglesAtTheEndsOfTheScale) {
  constexpr float infinity = HUGE_VALF;
  const struct {
    float s1;
    float s2;
    float angle;
  } cases[] = {{1, 0, 0},
               {0, 1, 45},
               {-1, 0, 90},
               {-1, -0.0F, 90},
               {0, -1, 135},
               {1, -1e-12F, 0},
               {0, 0, 0},
               {1e-45F, 1e-45F, 22.5F},
               {-0.0F, -0.0F, 0},
               {1, 1, 22.5F},
               {infinity, 1, NAN},
               {NAN, -infinity, NAN},
               {-infinity, NAN, NAN},
               {1, NAN, NAN}};
  for (const auto& [s1, s2, angle] : cases) {
    std::vector<float> pairs;
    for (int i = 0; i < 17; ++i) {  // a whole step, and what is left over
      pairs.insert(pairs.end(), {s1, s2});
    }
    float degrees[17] = {};
    angles_of_pairs(pairs.data(), 17, degrees);
    EXPECT_TRUE(same(degrees[0], angle) && same(degrees[16], angle)) << s1 << ", " << s2 << ": " << degrees[0];
  }
}

}  // namespace
}  // namespace nerova_zel::test
