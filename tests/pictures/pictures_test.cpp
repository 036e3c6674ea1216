// Sheets, azimuth pictures and legends against the tables of colours and the light that they show.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "angles.h"
#include "colour_pictures.h"
#include "frame_pictures.h"
#include "imaging/even_light.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel::test {
namespace {

constexpr std::size_t channels = 3;

Rgb pixel_of(const Picture& picture, int x, int y) {
  const std::size_t at =
      channels * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(x));
  return {picture.pixels[at], picture.pixels[at + 1], picture.pixels[at + 2]};
}

void expect_near(const Rgb& shown, const Rgb& expected) {
  EXPECT_NEAR(shown.red, expected.red, 3);
  EXPECT_NEAR(shown.green, expected.green, 3);
  EXPECT_NEAR(shown.blue, expected.blue, 3);
}

class PicturesTest : public ::testing::Test {
 protected:
  Picture draw(RawFrame frame, PictureKind kind) {
    FrameTransformer transformer(settings_, library_, outputs_for_pictures());
    transformer.frame() = std::move(frame);
    transformer.run("frame");
    const PictureContent content{"frame",
                                 settings_.layout,
                                 transformer.origin(),
                                 transformer.bit_depth(),
                                 settings_.output_maximum,
                                 transformer.frame(),
                                 transformer.outputs()};
    azimuth_.assign(transformer.outputs().values(Output::azimuth),
                    transformer.outputs().values(Output::azimuth) + transformer.frame().pixels.size());
    degree_.assign(transformer.outputs().values(Output::dolp),
                   transformer.outputs().values(Output::dolp) + transformer.frame().pixels.size());
    power_.assign(transformer.outputs().values(Output::power),
                  transformer.outputs().values(Output::power) + transformer.frame().pixels.size());
    return FramePictures(content, style_).draw(kind);
  }

  const Library library_{NEROVA_LIBRARY};
  TransformSettings settings_;
  PictureStyle style_;
  std::vector<std::uint16_t> azimuth_;
  std::vector<std::uint16_t> degree_;
  std::vector<std::uint16_t> power_;
};

// The colours themselves are tested where they are made: here, that each pixel has those of its own angle and light.
TEST_F(PicturesTest, AzimuthPicturesAndLegendsHaveTheColoursOfTheirScales) {
  settings_.output_maximum = 4095;
  std::mt19937 generator(3);
  RawFrame frame{90, 70, 12, 16, std::vector<std::uint16_t>(std::size_t{90} * 70)};
  std::generate(frame.pixels.begin(), frame.pixels.end(),
                [&] { return static_cast<std::uint16_t>(generator() & 0xFFFU); });
  for (const NamedAzimuthStyle& style : azimuth_styles) {
    SCOPED_TRACE(style.name);
    style_ = {style.style, {0.7, 0.9}};
    const Picture picture = draw(frame, PictureKind::azimuth_picture);
    ASSERT_EQ(picture.pixels.size(), channels * frame.pixels.size());
    for (int i = 0; i < 90 * 70; ++i) {
      const auto at = static_cast<std::size_t>(i);
      const Rgb expected = azimuth_colour(style.style, 180.0 * azimuth_[at] / 4095.0 - 90.0, degree_[at] / 4095.0 / 0.7,
                                          power_[at] / 4095.0 / 0.9);
      ASSERT_EQ(pixel_of(picture, i % 90, i / 90), expected) << i;
    }
    // On the legend's rim degree and power are full, and the light is as polarized as the line from the centre points.
    const Picture legend = draw(frame, PictureKind::azimuth_legend);
    for (const double angle : {20.0, 100.0, 200.0, 310.0}) {
      const Rgb rim = pixel_of(legend, static_cast<int>(std::lround(360 + 209 * std::cos(angle * pi / 180.0))),
                               static_cast<int>(std::lround(320 - 209 * std::sin(angle * pi / 180.0))));
      EXPECT_NEAR(rim.red, hue(angle).red, 8) << angle;
      EXPECT_NEAR(rim.green, hue(angle).green, 8) << angle;
      EXPECT_NEAR(rim.blue, hue(angle).blue, 8) << angle;
    }
  }
}

TEST_F(PicturesTest, SheetShowsEveryQuantityInItsColours) {
  constexpr int size = 64;
  settings_.layout = MosaicLayout(45);
  style_ = {AzimuthStyle::dark, {1.0, 0.8}};
  for (const double angle : {0.0, 30.0, 62.0, 90.0, 135.0, 171.0}) {
    for (const double degree : {0.43, 0.88}) {
      SCOPED_TRACE(::testing::Message() << angle << " degrees, degree " << degree);
      const double twice = angle * pi / 90.0;
      const StokesVector light{0.5, 0.5 * degree * std::cos(twice), 0.5 * degree * std::sin(twice)};
      RawFrame frame{size, size, 16, 16, {}};
      for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
          frame.pixels.push_back(
              static_cast<std::uint16_t>(std::lround(65535 * light.behind_polarizer(settings_.layout.angle_at(x, y)))));
        }
      }
      const Picture sheet = draw(frame, PictureKind::sheet);
      ASSERT_EQ(sheet.width, 2400);
      const auto shown = [&](int column, int row) {
        return pixel_of(sheet, 422 + 777 * column, row == 0 ? 500 : 1600);
      };
      EXPECT_EQ(shown(0, 0), grey(0.5 / 0.8));
      expect_near(shown(2, 0), sequential(degree));  // the degree comes from an estimate
      EXPECT_EQ(shown(1, 1), diverging(degree * std::cos(twice)));
      EXPECT_EQ(shown(2, 1), diverging(degree * std::sin(twice)));
      const Rgb azimuth = azimuth_colour(AzimuthStyle::dark, angle, degree, 0.5);
      expect_near(shown(1, 0), azimuth);
    }
  }
}

TEST_F(PicturesTest, DrawsSheetsOfAnyShape) {
  for (const auto& [width, height] : {std::pair{2, 2}, {2, 900}, {3000, 3}, {5000, 2}, {7, 5}}) {
    SCOPED_TRACE(::testing::Message() << width << " x " << height);
    const RawFrame frame{
        width, height, 12, 16,
        std::vector<std::uint16_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))};
    EXPECT_EQ(draw(frame, PictureKind::sheet).width, 2400);
    EXPECT_EQ(draw(frame, PictureKind::azimuth_picture).width, width);
  }
}

// Even light of another angle in each colour, as bright after white balance: each panel must show its own.
TEST_F(PicturesTest, ColourSheetShowsPowerAndEachAngleAndDegree) {
  style_ = {AzimuthStyle::dark, {1.0, 1.0}};
  const FrameSize size{64, 48};
  constexpr double degrees[] = {0.3, 0.5, 0.7, 0.9};
  constexpr double angles[] = {10.0, 50.0, 95.0, 160.0};
  for (const bool merge : {false, true}) {
    SCOPED_TRACE(merge);
    const ColourSettings colour{ColourPattern::rggb, merge};
    const ColourMosaic mosaic(colour.pattern, {0, 0}, size);
    RawFrame frame{size.width, size.height, 12, 16, {}};
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        auto plane = static_cast<std::size_t>(mosaic.plane_at(x, y));
        plane = merge && plane == 2 ? 1 : plane;
        const double power = plane == 3 ? 0.3 : 0.6;
        const double twice = angles[plane] * pi / 90.0;
        const StokesVector light{power, power * degrees[plane] * std::cos(twice),
                                 power * degrees[plane] * std::sin(twice)};
        frame.pixels.push_back(
            static_cast<std::uint16_t>(std::lround(4095 * light.behind_polarizer(settings_.layout.angle_at(x, y)))));
      }
    }
    const SensorLibraries libraries(NEROVA_LIBRARY, settings_, colour);
    SensorTransformer transformer(settings_, colour, libraries, outputs_for_pictures());
    transformer.frame() = frame;
    transformer.run("frame");
    ColourPictureContent content{"frame", colour.pattern, settings_.layout, {0, 0}, transformer.frame(), {}, {}};
    for (std::size_t i = 0; i < transformer.plane_count(); ++i) {
      const FrameTransformer& plane = transformer.plane(i);
      content.planes.push_back({colour.name(i), settings_.layout, plane.origin(), 12, settings_.output_maximum,
                                plane.frame(), plane.outputs()});
    }
    const Picture power = ColourPictures(content, style_).power();
    ASSERT_EQ(power.width, size.width / 2);
    expect_near(pixel_of(power, 5, 5), grey(0.6));  // the grey world doubles blue
    content.balance = WhiteBalance{0.5, 1.0, 1.0};
    const Picture sheet = ColourPictures(content, style_).sheet();
    ASSERT_EQ(sheet.width, 2400);
    const int columns = merge ? 3 : 4;
    const int pitch = (2400 - 2 * 56 + 40) / columns;
    const int panel = pitch - 40;
    const int shown_height = panel / 32 * 24;
    const auto shown = [&](int column, int row) {
      return pixel_of(sheet, 56 + column * pitch + panel / 2, 150 + row * (88 + shown_height + 190) + 88 + 100);
    };
    expect_near(shown(0, 0), {grey(0.3).red, grey(0.6).red, grey(0.3).red});
    for (int i = 0; i < columns; ++i) {
      const auto plane = static_cast<std::size_t>(merge && i == 2 ? 3 : i);
      expect_near(shown(i, 1), azimuth_colour(AzimuthStyle::dark, angles[plane], degrees[plane], 1.0));
      expect_near(shown(i, 2), sequential(degrees[plane]));
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
