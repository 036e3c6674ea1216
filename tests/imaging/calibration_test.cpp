// From simulated frames of a uniform source through a calibration to the errors of azimuth and degree.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "calibration/calibration_file.h"
#include "calibration/colour_series.h"
#include "calibration/series.h"
#include "failure.h"
#include "imaging/even_light.h"
#include "processor/frame_transformer.h"

namespace nerova_zel::test {
namespace {

constexpr double output_maximum = 65535.0;

constexpr std::array<PixelPolarizer, 4> poor_polarizers = {
    PixelPolarizer{1.2, 300.0, 1.05}, {-0.8, 150.0, 0.97}, {-1.5, 220.0, 1.0}, {0.6, 90.0, 0.94}};

/** Root mean squares over some of the pixels. */
struct Errors {
  double azimuth;
  double stokes_angle;  ///< of the exact arctangent of the normalized Stokes pair
  double degree;
  std::size_t pixels;
};

double rms(const std::vector<double>& values) {
  double squares = 0.0;
  for (const double value : values) {
    squares += value * value;
  }
  return std::sqrt(squares / static_cast<double>(values.size()));
}

class CalibrationTest : public ::testing::Test {
 protected:
  CalibrationTest() {
    camera_.width = 96;
    camera_.height = 80;
    camera_.polarizers = poor_polarizers;
  }

  Origin origin() const { return {camera_.origin_x, camera_.origin_y}; }

  /** Frames at the angles, each with its brightness; and a dark frame. */
  CalibrationSeries series(const std::vector<double>& angles, double drift, bool with_dark) {
    CalibrationSeries series(camera_.layout, origin());
    for (std::size_t i = 0; i < angles.size(); ++i) {
      const double power = 0.7 * (1.0 + drift * std::sin(2.0 * static_cast<double>(i)));
      series.add("frame", angles[i], frame_of(even_light(power, 1.0, angles[i]), camera_), camera_.bit_depth);
      ++camera_.seed;
    }
    if (with_dark) {
      series.set_dark("dark", frame_of(even_light(0.0, 0.0, 0.0), camera_), camera_.bit_depth);
    }
    EXPECT_TRUE(series.check_light().empty());
    return series;
  }

  /** Outputs against the light, where that is smooth; of the last two columns and rows, or the others. */
  Errors transform(const std::string& library, const std::optional<CameraCalibration>& calibration,
                   const SimulatedScene& scene, bool edges) const;

  CameraSettings camera_;
};

Errors CalibrationTest::transform(const std::string& library_file, const std::optional<CameraCalibration>& calibration,
                                  const SimulatedScene& scene, bool edges) const {
  Library library(library_file);
  TransformSettings settings;
  settings.layout = camera_.layout;
  settings.origin = origin();
  settings.calibration = calibration;
  if (calibration) {
    library.set_calibration(calibration->matrices);
  }
  FrameTransformer transformer(settings, library, {Output::azimuth, Output::dolp, Output::stokes});
  transformer.frame() = frame_of(scene, camera_);
  transformer.run("frame");
  const std::uint16_t* const azimuth = transformer.outputs().values(Output::azimuth);
  const std::uint16_t* const degree = transformer.outputs().values(Output::dolp);
  const float* const stokes = transformer.outputs().stokes();
  std::vector<double> azimuth_errors;
  std::vector<double> stokes_angle_errors;
  std::vector<double> degree_errors;
  for (int y = 0; y < camera_.height; ++y) {
    for (int x = 0; x < camera_.width; ++x) {
      if (edges != (x >= camera_.width - 2 || y >= camera_.height - 2)) {
        continue;
      }
      const StokesVector light = true_light(scene, camera_, x, y);
      bool smooth = true;
      for (const auto& [across, down] : {std::pair{-3.0, -3.0}, {5.0, -3.0}, {-3.0, 5.0}, {5.0, 5.0}}) {
        const StokesVector near = scene.light_at(x + across, y + down);
        smooth = smooth && std::hypot(light.s1 - near.s1, light.s2 - near.s2, light.s0 - near.s0) < 0.08 * light.s0;
      }
      if (smooth && light.degree() > 0.3) {
        const auto at =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(camera_.width) + static_cast<std::size_t>(x);
        const double angle = azimuth[at] * 180.0 / output_maximum - 90.0;
        azimuth_errors.push_back(std::abs(std::remainder(angle - light.angle_degrees(), 180.0)));
        const double stokes_angle = std::atan2(stokes[2 * at + 1], stokes[2 * at]) * 90.0 / pi;
        stokes_angle_errors.push_back(std::abs(std::remainder(stokes_angle - light.angle_degrees(), 180.0)));
        degree_errors.push_back(std::abs(degree[at] / output_maximum - light.degree()));
      }
    }
  }
  return {rms(azimuth_errors), rms(stokes_angle_errors), rms(degree_errors), azimuth_errors.size()};
}

TEST_F(CalibrationTest, AnIdealSensorGivesTheDefaultMatrices) {
  camera_.polarizers = {};
  camera_.bit_depth = 16;
  const Calibration defaults = Library(NEROVA_LIBRARY).calibration();
  for (const int layout : mosaic_layouts) {
    camera_.layout = MosaicLayout(layout);
    camera_.origin_x = layout % 2;
    const Calibration matrices = calibration_matrices(series({0, 40, 75, 110, 160}, 0.1, false).fit(false).responses);
    for (std::size_t m = 0; m < 4; ++m) {
      for (std::size_t i = 0; i < 16; ++i) {
        // A rounded pixel value is off by half at most, of 45000.
        EXPECT_NEAR(matrices[m][i], defaults[m][i], 3e-5) << m << ", " << i;
      }
    }
  }
}

// What a pixel under a polarizer receives from light is known from the simulation: matrix times that must give twice
// the power, S1 and S2, whatever the light, up to one common scale.
TEST_F(CalibrationTest, MatricesUndoTheSensor) {
  camera_.full_well = 10000;
  camera_.dark_level = 40.3;
  camera_.layout = MosaicLayout(45);
  camera_.origin_x = 1;
  camera_.origin_y = 2;
  const CalibrationSeries frames = series({0, 22.5, 45, 67.5, 270, 112.5, -45, 157.5}, 0.1, true);
  const PolarizerFit fit = frames.fit(false);
  // As a transform reads it.
  const CameraCalibration calibration = parse_calibration(encode_calibration(frames.calibration(fit), fit), "file");
  for (std::size_t k = 0; k < 4; ++k) {
    const double uncertainty = fit.uncertainties[k].angle_degrees;
    EXPECT_LT(uncertainty, 0.03);
    EXPECT_NEAR(fit.angle_error(k), poor_polarizers[k].angle_error, 5.0 * uncertainty);
    EXPECT_NEAR(fit.responses[k].leakage(), 1.0 / poor_polarizers[k].extinction, 5.0 * fit.uncertainties[k].leakage);
    EXPECT_EQ(calibration.dark_levels[k], 40.0);
  }
  for (std::size_t m = 0; m < 4; ++m) {
    double product[3][3] = {};
    for (int column = 0; column < 4; ++column) {
      const int nominal = MosaicLayout(static_cast<int>(45 * m)).angle_at(column % 2, column / 2);
      const PixelPolarizer& polarizer = poor_polarizers[static_cast<std::size_t>(nominal / 45)];
      const double twice = (nominal + polarizer.angle_error) * pi / 90.0;
      const double even = 0.5 * polarizer.gain * (1.0 + 1.0 / polarizer.extinction);
      const double swing = 0.5 * polarizer.gain * (1.0 - 1.0 / polarizer.extinction);
      const double response[3] = {even, swing * std::cos(twice), swing * std::sin(twice)};
      for (std::size_t row = 0; row < 3; ++row) {
        const double weight = calibration.matrices[m][4 * row + static_cast<std::size_t>(column)];
        for (std::size_t of = 0; of < 3; ++of) {
          product[row][of] += weight * response[of];
        }
      }
    }
    const double scale = product[1][1];
    EXPECT_NEAR(scale, 1.0, 0.02);
    for (int row = 0; row < 3; ++row) {
      for (int of = 0; of < 3; ++of) {
        EXPECT_NEAR(product[row][of] / scale, row == of ? (row == 0 ? 2.0 : 1.0) : 0.0, 0.002) << m << row << of;
      }
    }
  }
}

// Each colour's polarizers are poor in a way of their own: the file must give them back to the colour they are of.
TEST_F(CalibrationTest, EachColourIsFittedByItself) {
  constexpr ColourPattern pattern = ColourPattern::gbrg;
  camera_.width = 101;
  camera_.height = 90;
  camera_.origin_x = 3;
  camera_.dark_level = 64.0;
  const ColourMosaic mosaic(pattern, {3, camera_.origin_y}, {camera_.width, camera_.height});
  const auto turned = [](std::size_t i) { return 0.5 * static_cast<double>(i) - 1.0; };
  const auto frame_at = [&](double power, double angle) {
    RawFrame frame{camera_.width, camera_.height, camera_.bit_depth, 16, {}};
    PerPlane<std::vector<std::uint16_t>> pixels;
    for (std::size_t i = 0; i < colour_plane_count; ++i) {
      camera_.polarizers[1].angle_error = turned(i);
      pixels[i] = simulate_frame(even_light(power, 1.0, angle), camera_);
    }
    for (std::size_t at = 0; at < pixels[0].size(); ++at) {
      const int x = static_cast<int>(at) % camera_.width;
      const int y = static_cast<int>(at) / camera_.width;
      frame.pixels.push_back(pixels[static_cast<std::size_t>(mosaic.plane_at(x, y))][at]);
    }
    return frame;
  };
  ColourCalibrationSeries series(pattern, camera_.layout, {3, camera_.origin_y});
  for (const double angle : {0.0, 40.0, 80.0, 120.0, 160.0}) {
    series.add("frame", angle, frame_at(0.7, angle), 12);
  }
  series.set_dark("dark", frame_at(0.0, 0.0), 12);
  PerPlane<CameraCalibration> calibrations;
  PerPlane<PolarizerFit> fits;
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    fits[i] = series.plane(colour_planes[i]).fit(false);
    calibrations[i] = series.plane(colour_planes[i]).calibration(fits[i]);
    EXPECT_NEAR(fits[i].angle_error(1), turned(i), 0.02) << i;
  }
  const std::string text = encode_colour_calibration(calibrations, fits);
  const PerPlane<CameraCalibration> read = parse_colour_calibration(text, "file");
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    EXPECT_EQ(read[i].matrices, calibrations[i].matrices) << i;
    EXPECT_EQ(read[i].dark_levels[0], 64.0) << i;
  }
  const auto fact_of = [](const auto& action) {
    try {
      action();
    } catch (const Failure& failure) {
      return failure.fact();
    }
    return Fact::other;
  };
  EXPECT_EQ(fact_of([&] { parse_calibration(text, "file"); }), Fact::colour_calibration);
  EXPECT_EQ(fact_of([&] { parse_colour_calibration(encode_calibration(calibrations[0], fits[0]), "file"); }),
            Fact::grey_calibration);
}

class CalibratedRoute : public CalibrationTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(CalibratedRoute, ErrorsBeforeAndAfter) {
  const std::string library = GetParam();
  const bool plugin = Library(library).calibrates_every_pixel();
  camera_.width = 306;
  camera_.height = 256;
  camera_.dark_level = 64.0;
  camera_.full_well = 10000;
  const CalibrationSeries frames = series({0, 15, 30, 45, 60, 75, 90, 105, 120, 135, 150, 165}, 0.05, true);
  const CameraCalibration calibration = frames.calibration(frames.fit(false));

  // Without noise, what is left is the sensor's doing, and the library's documented 0.16 degrees.
  camera_.full_well = 0.0;
  camera_.width = 612;
  camera_.height = 512;
  const SimulatedScene scene(camera_.width, camera_.height, {});
  const Errors before = transform(library, std::nullopt, scene, false);
  const Errors after = transform(library, calibration, scene, false);
  const SimulatedScene even = even_light(0.6, 0.7, 20.0);
  const Errors edges_before = transform(library, std::nullopt, even, true);
  const Errors edges_after = transform(library, calibration, even, true);
  camera_.polarizers = {};
  camera_.dark_level = 0.0;
  const Errors ideal = transform(library, std::nullopt, scene, false);
  ASSERT_GT(after.pixels, 20000U);

  EXPECT_GT(before.azimuth, 0.5);
  EXPECT_GT(edges_before.azimuth, 0.5);
  EXPECT_LT(edges_after.azimuth, 0.2);
  EXPECT_LT(edges_after.degree, 0.002);
  if (plugin) {
    EXPECT_LT(after.azimuth, ideal.azimuth + 0.01);
    EXPECT_LT(after.stokes_angle, ideal.stokes_angle + 0.01);
    EXPECT_LT(after.degree, ideal.degree + 0.0005);
  } else {
    EXPECT_EQ(after.azimuth, before.azimuth);
  }
}

INSTANTIATE_TEST_SUITE_P(Calibration, CalibratedRoute, ::testing::Values(NEROVA_TESTED_LIBRARIES),
                         [](const auto& library) { return library.index == 0 ? "WithPlugins" : "BuiltIn"; });

}  // namespace
}  // namespace nerova_zel::test
