// Descriptions of recordings: what is written is read back, and what would be read wrong is refused.
#include <gtest/gtest.h>

#include "failure.h"
#include "frames/recording.h"

namespace nerova_zel::test {
namespace {

TEST(Recording, IsReadAsItWasWritten) {
  Recording written;
  written.format = PixelFormat::mono12p;
  written.size = {612, 512};
  written.origin = {3, 5};
  written.layout = MosaicLayout(135);
  written.colour = ColourPattern::gbrg;
  written.frames = 3;
  written.camera = "a \"camera\" \xFF";  // not UTF-8
  written.exposure_us = 0.1;
  written.timestamps_ns = {1, 18446744073709551615U, 3};
  written.incomplete_frames = 7;
  written.dropped_frames = 8;
  const Recording read = parse_recording(encode_recording(written), "r.json");
  EXPECT_EQ(read.format, written.format);
  EXPECT_EQ(read.size.width, 612);
  EXPECT_EQ(read.size.height, 512);
  EXPECT_EQ(read.origin.x, 3);
  EXPECT_EQ(read.origin.y, 5);
  EXPECT_EQ(read.layout.phase(), written.layout.phase());
  EXPECT_EQ(read.colour, written.colour);
  EXPECT_EQ(read.frames, 3U);
  EXPECT_EQ(read.exposure_us, 0.1);
  EXPECT_FALSE(read.gain);
  EXPECT_EQ(read.timestamps_ns, written.timestamps_ns);
  EXPECT_EQ(read.incomplete_frames, 7U);
  EXPECT_EQ(read.dropped_frames, 8U);
}

TEST(Recording, RefusesWhatWouldBeReadWrong) {
  Recording recording;
  recording.format = PixelFormat::mono12;
  recording.size = {8, 4};
  const std::string good = encode_recording(recording);
  const std::array<std::array<const char*, 3>, 8> cases = {{
      {"nerova-zel-recording", "other", "does not describe a recording"},
      {"\"version\": 1", "\"version\": 2", "newer version"},
      {"Mono12", "Mono13", "unknown pixel format \"Mono13\""},
      {"\"width\": 8", "\"width\": -8", "\"width\""},
      {"\"height\": 4", "\"height\": 99999999999", "\"height\""},
      {"\"layout\": 90", "\"layout\": 91", "layout 91"},
      {"\"frames\"", "\"pictures\"", "no \"frames\""},
      {"\"layout\": 90", "\"layout\": 90, \"colour\": \"RGBG\"", "pattern \"RGBG\""},
  }};
  for (const auto& [from, to, words] : cases) {
    std::string text = good;
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, std::string(from).size(), to);
    try {
      parse_recording(text, "r.json");
      ADD_FAILURE() << to;
    } catch (const Failure& failure) {
      EXPECT_NE(std::string(failure.what()).find(words), std::string::npos) << failure.what();
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
