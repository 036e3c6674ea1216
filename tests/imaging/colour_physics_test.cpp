// Colours of simulated frames against their truth: planes, the checks of the pattern, interpolation, calibrations.
#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "failure.h"
#include "frames/colour_interpolation.h"
#include "imaging/sampled_light.h"
#include "processor/sensor_transformer.h"
#include "simulation/colour_scene.h"
#include "statistics/colour_contrast.h"

namespace nerova_zel::test {
namespace {

constexpr int full_output = 65535;

CameraSettings camera_at(int layout, const Origin& origin, const FrameSize& size) {
  CameraSettings camera;
  camera.width = size.width;
  camera.height = size.height;
  camera.layout = MosaicLayout(layout);
  camera.origin_x = origin.x;
  camera.origin_y = origin.y;
  return camera;
}

struct ColourCase {
  ColourPattern pattern;
  int layout;
  Origin origin;
  FrameSize size;
  std::optional<Region> region;
};

// Every pattern, layout and remainder of the origin; sizes and regions that cut through the pattern.
TEST(ColourPhysics, EveryPixelOfEveryPlaneIsWithinItsBound) {
  const ColourCase cases[] = {
      {ColourPattern::rggb, 90, {0, 0}, {400, 300}, std::nullopt},
      {ColourPattern::grbg, 0, {1, 3}, {402, 301}, std::nullopt},
      {ColourPattern::gbrg, 45, {2, 2}, {403, 303}, std::nullopt},
      {ColourPattern::bggr, 135, {103, 65}, {401, 302}, std::nullopt},
      {ColourPattern::rggb, 0, {0, 0}, {400, 300}, Region{3, 1, {381, 277}}},
      {ColourPattern::gbrg, 135, {5, 6}, {400, 300}, Region{14, 5, {382, 279}}},
  };
  for (const ColourCase& one : cases) {
    const CameraSettings camera = camera_at(one.layout, one.origin, one.size);
    const ColourScene scene(camera.width, camera.height, {}, 0.013);
    TransformSettings settings;
    settings.layout = camera.layout;
    settings.origin = one.origin;
    settings.region = one.region;
    const ColourSettings colour{one.pattern};
    const SensorLibraries libraries(NEROVA_LIBRARY, settings, colour);
    SensorTransformer transformer(settings, colour, libraries, {Output::azimuth, Output::dolp});
    transformer.frame() = {camera.width, camera.height, camera.bit_depth, 16,
                           simulate_colour_frame(scene, camera, one.pattern)};
    transformer.run("frame");
    const Origin corner = one.region ? Origin{one.region->x, one.region->y} : Origin{0, 0};
    const ColourMosaic whole(one.pattern, one.origin, one.size);
    const ColourMosaic cut(one.pattern, transformer.origin(), {transformer.frame().width, transformer.frame().height});
    for (std::size_t i = 0; i < colour_plane_count; ++i) {
      const ColourPlane plane = colour.plane(i);
      SCOPED_TRACE(::testing::Message() << name_of(one.pattern) << ", layout " << one.layout << ", origin "
                                        << one.origin.x << "," << one.origin.y << ", " << name_of(plane));
      const Region common = cut.common_region(plane);
      const auto centre_of = [&](int x, int y) {
        const Origin pixel = cut.frame_pixel(plane, common.x + x, common.y + y);
        return std::pair(corner.x + pixel.x + 0.5, corner.y + pixel.y + 0.5);
      };
      const FrameTransformer& result = transformer.plane(i);
      const int width = result.outputs().width();
      const int height = result.outputs().height();
      const SampledLight sampled{
          width,
          height,
          static_cast<double>(result.full_scale()),
          [&](int x, int y) {
            const auto [at_x, at_y] = centre_of(x, y);
            return camera.layout.angle_at(one.origin.x + static_cast<int>(at_x), one.origin.y + static_cast<int>(at_y));
          },
          [&](int x, int y) {
            const auto [at_x, at_y] = centre_of(x, y);
            return scene.seen_by(plane).light_at(at_x, at_y);
          },
          [&](int x, int y) {
            const auto [left, top] = centre_of(std::min(x, width - 2), std::min(y, height - 2));
            const auto [right, bottom] = centre_of(std::min(x, width - 2) + 1, std::min(y, height - 2) + 1);
            return scene.seen_by(plane).light_at(0.5 * (left + right), 0.5 * (top + bottom));
          }};
      const BoundCheck check = check_bounds(sampled, result.outputs().values(Output::azimuth),
                                            result.outputs().values(Output::dolp), full_output);
      EXPECT_EQ(check.outside, 0);
      EXPECT_GT(check.sharply_bounded, width * height / 20);
      if (!one.region) {
        for (const int at : {0, 7, height - 1}) {
          EXPECT_EQ(true_colour_light(scene, whole, plane, at, at).s1, sampled.truth(at, at).s1);
        }
      }
    }
  }
}

TEST(ColourPhysics, IndexFallsWithTheWavelength) {
  EXPECT_DOUBLE_EQ(cauchy_index(1.5, 0.0042, 0.5893), 1.5);
  // BK7 by its catalogue: 1.5224 at 486.1 and 1.5143 at 656.3 nanometres.
  EXPECT_NEAR(cauchy_index(1.5168, 0.0042, 0.4861), 1.5224, 2e-3);
  EXPECT_NEAR(cauchy_index(1.5168, 0.0042, 0.6563), 1.5143, 2e-3);
}

TEST(ColourPhysics, TheWheelIsTintedAround) {
  const ColourScene scene(400, 300, {}, 0.0);
  const std::pair<ColourPlane, double> brightest[] = {
      {ColourPlane::red, 0.0}, {ColourPlane::green1, 112.5}, {ColourPlane::blue, 247.5}};
  for (const auto& [plane, degrees] : brightest) {
    const auto light = [&, seen = &scene.seen_by(plane)](double angle) {
      return seen->light_at(296 + 70 * std::cos(angle * pi / 180.0), 150 - 70 * std::sin(angle * pi / 180.0)).s0;
    };
    for (int sector = 1; sector < 16; ++sector) {
      EXPECT_LT(light(degrees + 22.5 * sector), light(degrees)) << name_of(plane) << " " << sector;
    }
    EXPECT_NEAR(light(degrees + 180.0) / light(degrees), 0.1, plane == ColourPlane::red ? 1e-9 : 0.02);
  }
}

/** Each pixel from its definition: weights by distance to the nearest samples of the colour under the polarizer. */
double bilinear(const ColourMosaic& mosaic, ColourPlane plane, const std::vector<std::uint16_t>& frame, int x, int y) {
  const auto value = [&](int column, int row) -> std::optional<double> {
    const FrameSize& size = mosaic.size();
    const bool inside = column >= 0 && column < size.width && row >= 0 && row < size.height;
    return inside && mosaic.plane_at(column, row) == plane
               ? std::optional<double>(*(frame.begin() + std::ptrdiff_t{row} * size.width + column))
               : std::nullopt;
  };
  double sum = 0.0;
  double count = 0.0;
  for (const int down : {-2, 0, 2}) {
    for (const int across : {-2, 0, 2}) {
      if (const auto sample = value(x + across, y + down)) {
        sum += *sample;
        ++count;
      }
    }
  }
  return sum / count;
}

TEST(ColourPhysics, InterpolationIsBilinearBetweenPixelsOfOnePolarizer) {
  std::mt19937 generator(7);
  for (int at = 0; at < 16; ++at) {
    const FrameSize size{4 + at % 7, 4 + at % 5};
    const ColourMosaic mosaic(colour_patterns[static_cast<std::size_t>(at % 4)].second, {at % 4, at / 4}, size);
    std::vector<std::uint16_t> frame(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    std::generate(frame.begin(), frame.end(), [&] { return static_cast<std::uint16_t>(generator()); });
    PerPlane<std::vector<std::uint16_t>> planes;
    PerPlane<std::uint16_t*> places{};
    for (std::size_t i = 0; i < colour_plane_count; ++i) {
      const FrameSize half = mosaic.plane_size(colour_planes[i]);
      planes[i].resize(static_cast<std::size_t>(half.width) * static_cast<std::size_t>(half.height));
      places[i] = planes[i].data();
    }
    mosaic.split(frame.data(), places);
    for (const ColourPlane plane : colour_planes) {
      std::vector<std::uint16_t> whole(frame.size());
      interpolate_plane(mosaic, plane, planes[static_cast<std::size_t>(plane)].data(), whole.data());
      for (std::size_t i = 0; i < whole.size(); ++i) {
        const int column = static_cast<int>(i) % size.width;
        const int row = static_cast<int>(i) / size.width;
        ASSERT_EQ(whole[i], std::floor(bilinear(mosaic, plane, frame, column, row) + 0.5))
            << at << ": " << column << "," << row;
      }
    }
  }
}

TEST(ColourPhysics, PatternShowsInStatisticsWhereThereIsOne) {
  CameraSettings camera = camera_at(90, {1, 2}, {403, 301});
  camera.full_well = 5000;
  const RawFrame colour{
      camera.width, camera.height, 12, 16,
      simulate_colour_frame(ColourScene(camera.width, camera.height, {}, 0.0042), camera, ColourPattern::bggr)};
  const auto in_colour = measure_colour_contrast(colour, {1, 2}, 4095);
  ASSERT_TRUE(in_colour);
  EXPECT_TRUE(in_colour->is_colour());
  EXPECT_FALSE(in_colour->is_grey());
  const RawFrame grey{camera.width, camera.height, 12, 16,
                      simulate_frame(SimulatedScene(camera.width, camera.height, {}), camera)};
  const auto in_grey = measure_colour_contrast(grey, {1, 2}, 4095);
  ASSERT_TRUE(in_grey);
  EXPECT_FALSE(in_grey->is_colour());
  EXPECT_TRUE(in_grey->is_grey());
  // Too little to tell, dark and saturated frames: nothing is said.
  RawFrame flat{64, 64, 12, 16, std::vector<std::uint16_t>(64UL * 64UL, 5)};
  EXPECT_FALSE(measure_colour_contrast(flat, {0, 0}, 4095));
  std::fill(flat.pixels.begin(), flat.pixels.end(), std::uint16_t{4095});
  EXPECT_FALSE(measure_colour_contrast(flat, {0, 0}, 4095));
  EXPECT_FALSE(measure_colour_contrast({18, 15, 12, 16, std::vector<std::uint16_t>(270, 1000)}, {0, 0}, 4095));
  // Noise that hides any colour is no proof of a grey sensor, nor of a colour sensor.
  std::mt19937 generator(3);
  std::generate(flat.pixels.begin(), flat.pixels.end(), [&] { return static_cast<std::uint16_t>(generator() % 4000); });
  const auto in_noise = measure_colour_contrast(flat, {0, 0}, 4095);
  ASSERT_TRUE(in_noise);
  EXPECT_FALSE(in_noise->is_colour());
  EXPECT_FALSE(in_noise->is_grey());
}

// One tile, which begins with the first whole pattern: cells of 1000 to 1300, the first one 40 more or less in turns.
TEST(ColourContrast, OfCellsThatAreKnown) {
  RawFrame frame{19, 18, 12, 16, std::vector<std::uint16_t>(19UL * 18UL)};
  for (int y = 2; y < 18; ++y) {
    for (int x = 3; x < 19; ++x) {
      const int cell = (x - 3) / 2 % 2 + 2 * ((y - 2) / 2 % 2);
      const int turn = cell != 0 ? 0 : (x - 3) / 4 % 2 == 0 ? 40 : -40;
      frame.pixels[static_cast<std::size_t>(19) * static_cast<std::size_t>(y) + static_cast<std::size_t>(x)] =
          static_cast<std::uint16_t>(1000 + 100 * cell + turn);
    }
  }
  const auto contrast = measure_colour_contrast(frame, {1, 2}, 4095);
  ASSERT_TRUE(contrast);
  EXPECT_NEAR(contrast->contrast, 300.0 / 1150.0, 1e-9);
  // Of 16 patterns, each with deviations of 120 and three times 40 from a sum of 4600.
  EXPECT_NEAR(contrast->uncertainty, std::sqrt(16 * (120 * 120 + 3 * 40 * 40) / (3.0 * 15)) * 4 / (16 * 4600), 1e-9);
}

// Even light in one colour after the other, each with a calibration that halves or keeps its power: a plane that took
// another's pixels, matrices or dark level would show.
TEST(ColourPhysics, PlanesTakeTheirOwnPixelsAndCalibration) {
  const FrameSize size{37, 26};
  const Origin origin{3, 1};
  const ColourMosaic mosaic(ColourPattern::grbg, origin, size);
  RawFrame frame{size.width, size.height, 12, 16, {}};
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      frame.pixels.push_back(static_cast<std::uint16_t>(800 + 400 * static_cast<int>(mosaic.plane_at(x, y))));
    }
  }
  TransformSettings settings;
  settings.origin = origin;
  Library trial(NEROVA_LIBRARY);
  const bool calibrates = trial.calibrates_every_pixel();
  CameraCalibration same;
  same.matrices = trial.calibration();
  PerPlane<CameraCalibration> calibrations{same, same, same, same};
  calibrations[1].dark_levels = {200, 200, 200, 200};
  calibrations[2].dark_levels = {400, 400, 400, 400};
  for (PerPlane<CameraCalibration>::value_type& calibration : calibrations) {
    calibration.bit_depth = 12;
  }
  for (CalibrationMatrix& matrix : calibrations[3].matrices) {
    for (float& weight : matrix) {
      weight *= 0.5F;
    }
  }
  const double blue = calibrates ? 2.0 * 1000.0 : 2.0 * 2000.0;
  struct Expected {
    ColourSettings colour;
    int width;
    std::vector<std::pair<const char*, double>> power;  ///< pixel values
  };
  // 37 columns from 3 on: the planes have 18 in common.
  const Expected all[] = {
      {{ColourPattern::grbg}, 18, {{"R", 1600.0}, {"G1", 2400.0}, {"G2", 3200.0}, {"B", 4000.0}}},
      {{ColourPattern::grbg, true}, 18, {{"R", 1600.0}, {"G", 2800.0}, {"B", 4000.0}}},
      {{ColourPattern::grbg, false, true}, 37, {{"R", 1600.0}, {"G1", 2400.0}, {"G2", 3200.0}, {"B", 4000.0}}},
      {{ColourPattern::grbg, true, false, calibrations}, 18, {{"R", 1600.0}, {"G", 2200.0}, {"B", blue}}},
      {{ColourPattern::grbg, false, false, calibrations},
       18,
       {{"R", 1600.0}, {"G1", 2000.0}, {"G2", 2400.0}, {"B", blue}}}};
  for (const Expected& one : all) {
    const SensorLibraries libraries(NEROVA_LIBRARY, settings, one.colour);
    SensorTransformer transformer(settings, one.colour, libraries, {Output::power, Output::dolp});
    for (int repeat = 0; repeat < 2; ++repeat) {  // memory is used again
      transformer.frame() = frame;
      transformer.run("frame");
    }
    ASSERT_EQ(transformer.plane_count(), one.power.size());
    for (std::size_t i = 0; i < one.power.size(); ++i) {
      const auto& [name, power] = one.power[i];
      EXPECT_STREQ(one.colour.name(i), name);
      const OutputImages& outputs = transformer.plane(i).outputs();
      ASSERT_EQ(outputs.width(), one.width);
      const int middle = outputs.height() / 2 * outputs.width() + outputs.width() / 2;
      EXPECT_NEAR(outputs.values(Output::power)[middle], std::min(65535.0, power / 4095 * 65535), 66.0) << name;
      EXPECT_EQ(outputs.values(Output::dolp)[middle], 0) << name;
    }
  }
  const ColourSettings plain{ColourPattern::grbg};
  const SensorLibraries libraries(NEROVA_LIBRARY, settings, plain);
  SensorTransformer transformer(settings, plain, libraries, {Output::power});
  transformer.frame() = {4, 6, 12, 16, std::vector<std::uint16_t>(24)};
  EXPECT_THROW(transformer.run("small"), Failure);
}

}  // namespace
}  // namespace nerova_zel::test
