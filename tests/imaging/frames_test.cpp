// Headerless frames, regions and bit depths: facts that clients add advice to.
#include <gtest/gtest.h>

#include "failure.h"
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
  const RawFrame frame{2, 2, 10, 12, {0, 0, 0, 0}};
  EXPECT_EQ(bit_depth_of(frame, std::nullopt, "f"), 10);
  EXPECT_EQ(bit_depth_of(frame, 12, "f"), 12);
  const Failure failure = failure_of([&] { bit_depth_of(frame, 13, "f"); });
  EXPECT_EQ(failure.fact(), Fact::bit_depth_too_great);
  EXPECT_STREQ(failure.what(), "the bit depth 13 is more than the 12 bits of a pixel in f.");
}

TEST(Frames, HeaderlessFilesAreCountedAndCutFramesNamed) {
  const HeaderlessLayout packed{{5, 2}, PixelFormat::mono12p};  // 15 bytes
  EXPECT_EQ(count_frames(0, packed), 1U);
  EXPECT_EQ(count_frames(15, packed), 1U);
  EXPECT_EQ(count_frames(16, packed), 2U);
  EXPECT_EQ(count_frames(30, packed), 2U);
  EXPECT_EQ(count_frames(1000, {{5, 2}, std::nullopt}), 1U);
  EXPECT_EQ(format_by_length("f", {5, 2}, 10), PixelFormat::mono8);
  EXPECT_EQ(format_by_length("f", {5, 2}, 20), PixelFormat::mono16);
  EXPECT_EQ(failure_of([] { format_by_length("f", {5, 2}, 15); }).fact(), Fact::file_length);
  RawFrame frame;
  EXPECT_STREQ(failure_of([&] { unpack_frame("f", std::vector<unsigned char>(14), packed, frame); }).what(),
               "f is cut short: 5 x 2 pixels of Mono12p take 15 bytes, and 14 are there.");
}

}  // namespace
}  // namespace nerova_zel::test
