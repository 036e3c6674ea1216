#include "frames/pixel_formats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "frames/colour_formats.h"
#include "support/guarded_buffer.h"

namespace nerova_zel::test {
namespace {

/** Where bit `bit` of pixel `pixel` lies, counted from the lowest bit of the first byte. */
using BitPlace = std::size_t (*)(std::size_t pixel, std::size_t bit);

struct Layout {
  PixelFormat format;
  std::size_t bits;
  BitPlace place;
};

std::size_t place_in_10_packed(std::size_t pixel, std::size_t bit) {
  const bool second = pixel % 2 == 1;
  const std::size_t in_group = bit >= 2 ? (second ? 16 : 0) + bit - 2 : (second ? 12 : 8) + bit;
  return pixel / 2 * 24 + in_group;
}

std::size_t place_in_12_packed(std::size_t pixel, std::size_t bit) {
  const bool second = pixel % 2 == 1;
  const std::size_t in_group = bit >= 4 ? (second ? 16 : 0) + bit - 4 : (second ? 12 : 8) + bit;
  return pixel / 2 * 24 + in_group;
}

const Layout layouts[] = {
    {PixelFormat::mono8, 8, [](std::size_t pixel, std::size_t bit) { return 8 * pixel + bit; }},
    {PixelFormat::mono10, 10, [](std::size_t pixel, std::size_t bit) { return 16 * pixel + bit; }},
    {PixelFormat::mono12, 12, [](std::size_t pixel, std::size_t bit) { return 16 * pixel + bit; }},
    {PixelFormat::mono16, 16, [](std::size_t pixel, std::size_t bit) { return 16 * pixel + bit; }},
    {PixelFormat::mono10p, 10, [](std::size_t pixel, std::size_t bit) { return 10 * pixel + bit; }},
    {PixelFormat::mono12p, 12, [](std::size_t pixel, std::size_t bit) { return 12 * pixel + bit; }},
    {PixelFormat::mono10_packed, 10, place_in_10_packed},
    {PixelFormat::mono12_packed, 12, place_in_12_packed}};

// Packed bit by bit into bytes that end where memory ends, and unpacked to where memory ends.
TEST(PixelFormats, AnyNumberOfPixelsComesBackAndNothingElseIsTouched) {
  constexpr std::size_t most = 300;
  std::mt19937 generator(11);
  GuardedBuffer input(2 * most);
  GuardedBuffer output(2 * most);
  for (const Layout& layout : layouts) {
    for (std::size_t count = 1; count <= most; count += count < 40 ? 1 : 13) {
      SCOPED_TRACE(::testing::Message() << name_of(layout.format) << ", " << count << " pixels");
      std::vector<std::uint16_t> pixels(count);
      std::vector<unsigned char> packed(2 * count);
      std::size_t used = 0;
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint_fast32_t value = generator() & ((1U << layout.bits) - 1U);
        pixels[i] = static_cast<std::uint16_t>(value);
        for (std::size_t bit = 0; bit < layout.bits; ++bit) {
          const std::size_t place = layout.place(i, bit);
          packed[place / 8] = static_cast<unsigned char>(packed[place / 8] | (value >> bit & 1U) << place % 8);
          used = std::max(used, place / 8 + 1);
        }
      }
      ASSERT_EQ(byte_count(layout.format, count), used);
      auto* bytes = static_cast<unsigned char*>(input.place(used, GuardedBuffer::Placement::BeforeGuard));
      std::copy_n(packed.begin(), used, bytes);
      auto* unpacked = static_cast<std::uint16_t*>(output.place(2 * count, GuardedBuffer::Placement::BeforeGuard));
      unpack(layout.format, bytes, count, unpacked);
      ASSERT_TRUE(std::equal(pixels.begin(), pixels.end(), unpacked));
      ASSERT_TRUE(output.surroundings_intact());
    }
  }
}

TEST(PixelFormats, CamerasNamesMeanTheSameBits) {
  const auto known = pixel_format_aliases();
  for (const auto& [name, format] : {std::pair{"Polarized8", PixelFormat::mono8},
                                     {"Polarized10p", PixelFormat::mono10p},
                                     {"Polarized12p", PixelFormat::mono12p},
                                     {"PolarizeMono8", PixelFormat::mono8},
                                     {"PolarizeMono12Packed", PixelFormat::mono12_packed}}) {
    const std::pair<std::string, PixelFormat> alias{name, format};
    EXPECT_NE(std::find(known.begin(), known.end(), alias), known.end()) << name;
  }
}

TEST(PixelFormats, ColourNamesAreThoseOfCameras) {
  const std::vector<ColourFormat> known = colour_formats();
  for (const auto& [name, format, pattern] :
       {ColourFormat{"BayerRGPolarized8", PixelFormat::mono8, ColourPattern::rggb},
        {"BayerBGPolarized10p", PixelFormat::mono10p, ColourPattern::bggr},
        {"BayerGRPolarized12p", PixelFormat::mono12p, ColourPattern::grbg},
        {"BayerGBPolarized16", PixelFormat::mono16, ColourPattern::gbrg}}) {
    const auto found = std::find_if(known.begin(), known.end(), [&](const auto& one) { return one.name == name; });
    ASSERT_NE(found, known.end()) << name;
    EXPECT_EQ(found->format, format) << name;
    EXPECT_EQ(found->pattern, pattern) << name;
  }
}

}  // namespace
}  // namespace nerova_zel::test
