#include "azimuth_colours.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace nerova_zel::test {
namespace {

/** A channel by its formula: [numerator / denominator] to nearest, in whole numbers. */
int nearest(long long numerator, long long denominator) {
  return static_cast<int>((2 * numerator + denominator) / (2 * denominator));
}

int mixed(AzimuthStyle style, int h, int k, int g) {
  switch (style) {
    case AzimuthStyle::light:
      return nearest(255 * 255 - k * (255 - h), 255);
    case AzimuthStyle::dark:
      return nearest(k * h, 255);
    case AzimuthStyle::composite:
      return nearest(static_cast<long long>(g) * (255 * 255 - k * (255 - h)), 255 * 255);
    case AzimuthStyle::plain:
      break;
  }
  return h;
}

struct Images {
  std::vector<std::uint16_t> azimuth;
  std::vector<std::uint16_t> degree;
  std::vector<std::uint16_t> power;

  std::vector<std::uint8_t> painted(const AzimuthColours& colours) const {
    std::vector<std::uint8_t> picture(3 * azimuth.size() + 1, 77);
    colours.paint(azimuth.data(), colours.needs_degree() ? degree.data() : nullptr,
                  colours.needs_power() ? power.data() : nullptr, azimuth.size(), picture.data());
    EXPECT_EQ(picture.back(), 77) << "no byte behind the picture";
    picture.pop_back();
    return picture;
  }
};

/** Pixels as the formulas have them. */
std::vector<std::uint8_t> expected(const Images& images, AzimuthStyle style, const AzimuthColours::Scales& scales) {
  const double maximum = scales.output_maximum;
  std::vector<std::uint8_t> picture;
  for (std::size_t i = 0; i < images.azimuth.size(); ++i) {
    const auto share = [&](std::uint16_t value) { return std::min(1.0, value / maximum); };
    const Rgb pure = hue(180.0 * share(images.azimuth[i]) - 90.0);
    const auto k = static_cast<int>(std::lround(255.0 * std::min(1.0, share(images.degree[i]) / scales.degree_end)));
    const int g = grey(share(images.power[i]) / scales.power_end).red;
    for (const int h : {pure.red, pure.green, pure.blue}) {
      picture.push_back(static_cast<std::uint8_t>(mixed(style, h, k, g)));
    }
  }
  return picture;
}

/** For each grey a power of that grey, of an output maximum of 65535. */
std::vector<std::uint16_t> powers_by_grey() {
  std::vector<std::uint16_t> powers(256);
  for (std::uint32_t value = 0; value < 65536; ++value) {
    powers[grey(value / 65535.0).red] = static_cast<std::uint16_t>(value);
  }
  return powers;
}

TEST(AzimuthColours, EveryMixtureFollowsItsFormula) {
  const std::vector<std::uint16_t> powers = powers_by_grey();
  for (const NamedAzimuthStyle& known : azimuth_styles) {
    const AzimuthColours colours(known.style, {});
    const int greys = colours.needs_power() ? 256 : 1;
    int wrong = 0;
    for (int h = 0; h < 256; ++h) {
      Images images;  // on the flank of hues between red and yellow, green takes every level
      const auto azimuth = static_cast<std::uint16_t>(std::lround(65535.0 * (0.5 + h / 1530.0)));
      for (int k = 0; k < 256; ++k) {
        for (int g = 0; g < greys; ++g) {
          images.azimuth.push_back(azimuth);
          images.degree.push_back(static_cast<std::uint16_t>(257 * k));
          images.power.push_back(powers[static_cast<std::size_t>(g)]);
        }
      }
      const std::vector<std::uint8_t> picture = images.painted(colours);
      for (int k = 0; k < 256; ++k) {
        for (int g = 0; g < greys; ++g) {
          wrong += picture[3 * static_cast<std::size_t>(k * greys + g) + 1] != mixed(known.style, h, k, g) ? 1 : 0;
        }
      }
    }
    EXPECT_EQ(wrong, 0) << known.name;
  }
}

TEST(AzimuthColours, EveryValueScaleEndAndOrder) {
  for (const int maximum : {1, 255, 4095, 65535}) {
    Images images;
    for (std::uint32_t value = 0; value < 65536; value += maximum < 65535 ? 37 : 1) {  // also those above the maximum
      images.azimuth.push_back(static_cast<std::uint16_t>(value));
      images.degree.push_back(static_cast<std::uint16_t>(value * 13));
      images.power.push_back(static_cast<std::uint16_t>(value * 29));
    }
    const AzimuthColours::Scales scales{maximum, 0.37, 0.11};
    for (const NamedAzimuthStyle& known : azimuth_styles) {
      std::vector<std::uint8_t> wanted = expected(images, known.style, scales);
      EXPECT_TRUE(images.painted(AzimuthColours(known.style, scales)) == wanted) << known.name << " " << maximum;
      const AzimuthColours baseline(known.style, scales, ChannelOrder::rgb, VectorCode::baseline);
      EXPECT_TRUE(images.painted(baseline) == wanted) << known.name << " " << maximum;
      for (std::size_t i = 0; i < wanted.size(); i += 3) {
        std::swap(wanted[i], wanted[i + 2]);
      }
      EXPECT_TRUE(images.painted(AzimuthColours(known.style, scales, ChannelOrder::bgr)) == wanted) << known.name;
    }
  }
}

TEST(AzimuthColours, LegendsHaveTheColoursOfPictures) {
  for (const NamedAzimuthStyle& known : azimuth_styles) {
    const Images pixel{{150}, {40}, {90}};
    const std::vector<std::uint8_t> picture = pixel.painted(AzimuthColours(known.style, {180, 0.5, 0.75}));
    const Rgb colour = azimuth_colour(known.style, 60.0, 40.0 / 90, 90.0 / 135);
    EXPECT_TRUE((colour == Rgb{picture[0], picture[1], picture[2]})) << known.name;
    EXPECT_EQ(find_azimuth_style(known.name), known.style);
    EXPECT_STREQ(name_of(known.style), known.name);
  }
  EXPECT_FALSE(find_azimuth_style("bright").has_value());
}

}  // namespace
}  // namespace nerova_zel::test
