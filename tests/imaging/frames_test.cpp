// Headerless frames, regions and bit depths: facts that clients add advice to.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "failure.h"
#include "frames/bit_depth.h"
#include "frames/headerless_frame.h"
#include "processor/outputs.h"

namespace nerova_zel::test {
namespace {

template <class Action>
Failure failure_of(const Action& action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure;
  }
  return Failure("nothing failed");
}

TEST(Frames, RegionsAreCutOutInPlace) {
  RawFrame frame{4, 3, 8, 8, {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23}};
  EXPECT_EQ(failure_of([&] { crop(frame, {3, 0, {2, 2}}, "f"); }).fact(), Fact::region_beyond_frame);
  EXPECT_EQ(failure_of([&] { crop(frame, {0, 2, {2, 2}}, "f"); }).fact(), Fact::region_beyond_frame);
  crop(frame, {1, 1, {3, 2}}, "f");
  EXPECT_EQ(frame.width, 3);
  EXPECT_EQ(frame.height, 2);
  EXPECT_EQ(frame.pixels, (std::vector<std::uint16_t>{11, 12, 13, 21, 22, 23}));
}

TEST(Frames, BitDepthIsTheWantedOneIfThereIsRoom) {
  RawFrame frame{2, 2, 10, 12, {0, 0, 0, 0}};
  EXPECT_EQ(settle_bit_depth(frame, {}, "f"), 10);
  EXPECT_EQ(settle_bit_depth(frame, {12}, "f"), 12);
  const Failure failure = failure_of([&] { settle_bit_depth(frame, {13}, "f"); });
  EXPECT_EQ(failure.fact(), Fact::bit_depth_too_great);
  EXPECT_STREQ(failure.what(), "the bit depth 13 is more than the 12 bits of a pixel in f.");
}

// Samples that were scaled up, or lie in the upper bits, come down to the depth; a greater depth takes them as they
// are.
TEST(Frames, SignificantBitsComeDown) {
  const struct {
    int scaled_from;
    bool is_stated;
    DepthChoice choice;
    int depth;
    int pixel;  ///< of 0xABC5
  } cases[] = {{12, true, {}, 12, 0xABC},    {12, true, {12}, 12, 0xABC},       {12, true, {10}, 10, 0xABC},
               {12, true, {16}, 16, 0xABC5}, {12, true, {{}, true}, 12, 0xABC}, {0, false, {10, true}, 10, 0x2AF},
               {0, false, {}, 16, 0xABC5}};
  for (const auto& one : cases) {
    RawFrame frame{1, 1, one.scaled_from > 0 ? one.scaled_from : 16, 16, {0xABC5}, one.is_stated, one.scaled_from};
    EXPECT_EQ(settle_bit_depth(frame, one.choice, "f"), one.depth);
    EXPECT_EQ(frame.pixels[0], one.pixel) << one.depth;
  }
  RawFrame unknown{1, 1, 16, 16, {0}, false};
  EXPECT_EQ(failure_of([&] { settle_bit_depth(unknown, {{}, true}, "f"); }).fact(), Fact::bit_depth_unknown);
}

TEST(Frames, DoubtsOfABitDepthThatNothingStates) {
  using Reason = DepthDoubt::Reason;
  const struct {
    int bits;
    std::vector<std::uint16_t> pixels;
    std::optional<DepthDoubt> doubt;
  } cases[] = {{16, {0, 8192}, std::nullopt},
               {16, {3, 8191}, DepthDoubt{Reason::small_values, 8191, 0, 14}},
               {16, {2947, 16}, DepthDoubt{Reason::small_values, 2947, 0, 12}},
               {8, {31, 1}, DepthDoubt{Reason::small_values, 31, 0, 5}},
               {8, {32, 64}, std::nullopt},
               {16, {0x8010, 0xFF00}, DepthDoubt{Reason::left_aligned, 0xFF00, 4, 12}},
               {16, {0x8002, 0xFF00}, std::nullopt},
               {16, {0x8000, 0x8000}, std::nullopt},
               {16, {0, 0}, std::nullopt}};
  for (const auto& [bits, pixels, expected] : cases) {
    RawFrame frame{2, 1, bits, bits, pixels, false};
    const PixelCounts counts = count_pixels(pixels.data(), 2, (1 << bits) - 1);
    const std::optional<DepthDoubt> doubt = doubt_bit_depth(counts, frame);
    ASSERT_EQ(doubt.has_value(), expected.has_value()) << pixels[0];
    if (expected) {
      EXPECT_EQ(doubt->reason, expected->reason) << pixels[0];
      EXPECT_EQ(doubt->zero_bits, expected->zero_bits) << pixels[0];
      EXPECT_EQ(doubt->likely_depth, expected->likely_depth) << pixels[0];
    }
    frame.depth_is_stated = true;
    EXPECT_FALSE(doubt_bit_depth(counts, frame)) << pixels[0];
  }
}

TEST(Frames, ManyPixelsBeyondFullScaleAreAnError) {
  RawFrame frame{1000, 200, 12, 16, std::vector<std::uint16_t>(200'000, 4095)};
  const auto fact_with = [&](std::size_t beyond) {
    std::fill_n(frame.pixels.begin(), beyond, std::uint16_t{4096});
    const PixelCounts counts = count_pixels(frame.pixels.data(), frame.pixels.size(), 4095);
    EXPECT_EQ(counts.above, beyond);
    EXPECT_EQ(counts.saturated, frame.pixels.size());
    return failure_of([&] { check_overflow(counts, frame, 12, "f"); }).fact();
  };
  EXPECT_EQ(fact_with(20), Fact::other);
  EXPECT_EQ(fact_with(21), Fact::overflow);
  frame = {100, 10, 12, 16, std::vector<std::uint16_t>(1000, 0)};
  frame.pixels[0] = 4095;
  EXPECT_EQ(failure_of([&] { check_overflow({0, 0, 16}, frame, 12, "f"); }).fact(), Fact::other);
  EXPECT_EQ(failure_of([&] { check_overflow({0, 0, 17}, frame, 12, "f"); }).fact(), Fact::overflow);
}

// Rows of 5 pixels in 8 bytes each; the last row's padding may be missing.
TEST(Frames, HeadersAndPaddedRows) {
  const HeaderlessLayout layout{{5, 2}, PixelFormat::mono10_packed, 7, 10};
  check_layout(layout);
  EXPECT_EQ(count_frames(7 + 20 + 18, layout), 2U);
  EXPECT_EQ(count_frames(7, layout), 1U);
  EXPECT_EQ(frame_offset(layout, 1), 27U);
  std::vector<unsigned char> bytes(18, 0xEE);
  const std::vector<unsigned char> row = {0xFF, 0x12, 0x34, 0, 0, 0, 0x80, 0x01};
  std::copy(row.begin(), row.end(), bytes.begin() + 10);
  RawFrame frame;
  unpack_frame("f", bytes, layout, frame);
  EXPECT_EQ(std::vector<std::uint16_t>(frame.pixels.begin() + 5, frame.pixels.end()),
            (std::vector<std::uint16_t>{0x3FE, 0xD1, 0, 0, 0x201}));
  bytes.pop_back();
  EXPECT_NE(std::string(failure_of([&] { unpack_frame("f", bytes, layout, frame); }).what()).find("18 bytes"),
            std::string::npos);
  EXPECT_NE(failure_of([] {
              check_layout({{5, 2}, PixelFormat::mono12p, 0, 7});
            }).what(),
            std::string("nothing failed"));
  EXPECT_EQ(failure_of([] { check_layout({{5, 2}, std::nullopt, 0, 9}); }).fact(), Fact::stride_without_format);
  if (sizeof(void*) == 4) {
    EXPECT_ANY_THROW(check_layout({{32768, 32768}, PixelFormat::mono8, 0, 0})) << "its bytes would wrap";
  }
  EXPECT_ANY_THROW(check_layout({{1, 4}, PixelFormat::mono8, 0, std::numeric_limits<std::size_t>::max() / 4}));
  EXPECT_EQ(format_by_length("f", {{5, 2}, std::nullopt, 4}, 24), PixelFormat::mono16);
}

TEST(Frames, HeaderlessFilesAreCountedAndCutFramesNamed) {
  const HeaderlessLayout packed{{5, 2}, PixelFormat::mono12p};  // 15 bytes
  EXPECT_EQ(count_frames(0, packed), 1U);
  EXPECT_EQ(count_frames(15, packed), 1U);
  EXPECT_EQ(count_frames(16, packed), 2U);
  EXPECT_EQ(count_frames(30, packed), 2U);
  EXPECT_EQ(count_frames(1000, {{5, 2}, std::nullopt}), 1U);
  EXPECT_EQ(format_by_length("f", {{5, 2}, {}}, 10), PixelFormat::mono8);
  EXPECT_EQ(format_by_length("f", {{5, 2}, {}}, 20), PixelFormat::mono16);
  EXPECT_EQ(failure_of([] { format_by_length("f", {{5, 2}, {}}, 15); }).fact(), Fact::file_length);
  RawFrame frame;
  EXPECT_STREQ(failure_of([&] { unpack_frame("f", std::vector<unsigned char>(14), packed, frame); }).what(),
               "f is cut short: 5 x 2 pixels of Mono12p take 15 bytes, and 14 are there.");
}

}  // namespace
}  // namespace nerova_zel::test
