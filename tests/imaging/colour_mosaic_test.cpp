// Colour planes of frames, from the definition of the patterns.
#include "frames/colour_mosaic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "frames/colour_interpolation.h"
#include "support/guarded_buffer.h"

namespace nerova_zel::test {
namespace {

/** From the name: the greens are told apart by the colour that they share rows with. */
std::string colour_at(const std::string& pattern, int sensor_x, int sensor_y) {
  const std::size_t row = sensor_y / 2 % 2 == 0 ? 0 : 2;
  const char colour = pattern[row + static_cast<std::size_t>(sensor_x / 2 % 2)];
  if (colour != 'G') {
    return {colour};
  }
  return pattern.substr(row, 2).find('R') != std::string::npos ? "G1" : "G2";
}

/** Everything about the planes of one frame whose pixels are all different. */
void check_planes(const std::string& name, ColourPattern pattern, const Origin& origin, const FrameSize& size) {
  SCOPED_TRACE(::testing::Message() << name << " at " << origin.x << "," << origin.y << ", " << size.width << " x "
                                    << size.height);
  std::vector<std::uint16_t> frame(static_cast<std::size_t>(size.width * size.height));
  std::iota(frame.begin(), frame.end(), std::uint16_t{1});
  const ColourMosaic mosaic(pattern, origin, size);
  GuardedBuffer buffers[] = {GuardedBuffer(8192), GuardedBuffer(8192), GuardedBuffer(8192), GuardedBuffer(8192)};
  PerPlane<std::vector<std::uint16_t>> expected;
  PerPlane<std::uint16_t*> planes{};
  PerPlane<const std::uint16_t*> constant{};
  for (const ColourPlane plane : colour_planes) {
    const auto i = static_cast<std::size_t>(plane);
    const FrameSize half = mosaic.plane_size(plane);
    const Origin corner = mosaic.plane_origin(plane);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        if (colour_at(name, origin.x + x, origin.y + y) != name_of(plane)) {
          continue;
        }
        ASSERT_EQ(mosaic.plane_at(x, y), plane);
        const auto at = static_cast<int>(expected[i].size());
        const Origin from = mosaic.frame_pixel(plane, at % half.width, at / half.width);
        ASSERT_EQ(from.x, x);
        ASSERT_EQ(from.y, y);
        // The polarizer over the pixel is that of the plane's mosaic at its place.
        ASSERT_EQ((corner.x + at % half.width) % 2, (origin.x + x) % 2);
        ASSERT_EQ((corner.y + at / half.width) % 2, (origin.y + y) % 2);
        expected[i].push_back(*(frame.begin() + std::ptrdiff_t{y} * size.width + x));
      }
    }
    ASSERT_EQ(expected[i].size(), static_cast<std::size_t>(half.width * half.height));
    planes[i] =
        static_cast<std::uint16_t*>(buffers[i].place(2 * expected[i].size(), GuardedBuffer::Placement::BeforeGuard));
    constant[i] = planes[i];
  }
  mosaic.split(frame.data(), planes);
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    ASSERT_TRUE(std::equal(expected[i].begin(), expected[i].end(), planes[i]));
    ASSERT_TRUE(buffers[i].surroundings_intact());
  }
  std::vector<std::uint16_t> joined(frame.size());
  mosaic.join(constant, joined.data());
  ASSERT_EQ(joined, frame);
}

TEST(ColourMosaic, PlanesHoldTheirPixelsAtEveryOriginAndSize) {
  for (const auto& [name, pattern] : colour_patterns) {
    for (int origin = 0; origin < 16; ++origin) {
      for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 15, 16, 17, 18, 19, 20, 33, 50, 67}) {
        check_planes(name, pattern, {origin % 4 + 4, origin / 4}, {width, 4 + (width + origin) % 5});
      }
      check_planes(name, pattern, {origin % 4, origin / 4}, {9, 1 + origin % 3});
    }
  }
}

TEST(ColourMosaic, MeansOfImagesAreRoundedUpAndEndWithThem) {
  const std::vector<std::uint16_t> first = {0, 1, 65535, 7};
  const std::vector<std::uint16_t> second = {1, 1, 65535, 9};
  std::vector<std::uint16_t> mean(4, 5);
  average_images(first.data(), second.data(), 3, mean.data());
  EXPECT_EQ(mean, (std::vector<std::uint16_t>{1, 1, 65535, 5}));
}

// All planes of a common region show the same 4 x 4 pattern at the same place, and no such pattern is left out.
TEST(ColourMosaic, CommonRegionsHoldWholePatterns) {
  for (int origin = 0; origin < 16; ++origin) {
    for (int width = 1; width < 14; ++width) {
      const ColourMosaic mosaic(ColourPattern::grbg, {origin % 4, origin / 4}, {width, 9});
      const Region red = mosaic.common_region(ColourPlane::red);
      for (const ColourPlane plane : colour_planes) {
        const Region region = mosaic.common_region(plane);
        const FrameSize half = mosaic.plane_size(plane);
        ASSERT_EQ(region.size.width, red.size.width);
        ASSERT_EQ(region.size.height, red.size.height);
        if (region.size.width > 0) {
          ASSERT_LE(region.x + region.size.width, half.width);
          ASSERT_LE(region.y + region.size.height, half.height);
          ASSERT_EQ(mosaic.plane_origin(plane).x + region.x, mosaic.plane_origin(ColourPlane::red).x + red.x);
          ASSERT_EQ(mosaic.plane_origin(plane).y + region.y, mosaic.plane_origin(ColourPlane::red).y + red.y);
        }
      }
      int whole = 0;  // columns of which the one two to the right is there too, in the first cells
      for (int x = 0; x < width - 2; ++x) {
        whole += (origin % 4 + x) / 2 % 2 == 0 ? 1 : 0;
      }
      EXPECT_EQ(red.size.width, whole) << origin << ", " << width;
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
