// Headerless frames: a line with the values of --raw and, after a blank, of --pixel-format, then a file's bytes.

#include "frames/headerless_frame.h"

#include <algorithm>
#include <cstdint>

#include "failure.h"
#include "frames/bit_depth.h"
#include "fuzz/finding.h"
#include "option_values.h"

namespace nerova_zel::test {
namespace {

/** One sentence that names the file or the option, for a user to read. */
void check_sentence(const std::string& sentence, const std::string& subject) {
  require(sentence.find(subject) != std::string::npos, "a failure that does not say with what");
  require(sentence.back() == '.', "a failure that is no sentence");
}

void check_frame(RawFrame& frame) {
  require(frame.width > 0 && frame.height > 0, "a frame without pixels");
  require(frame.pixels.size() == static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height),
          "a frame with another number of pixels than its size");
  require(frame.bit_depth >= 1 && frame.bit_depth <= frame.storage_bits && frame.storage_bits <= 16,
          "a frame with a strange bit depth");
  require(settle_bit_depth(frame, {8}, "") == 8, "a bit depth that was not asked for");
}

HeaderlessLayout parse_line(const std::string& line) {
  const std::size_t blank = line.find(' ');
  HeaderlessLayout layout{parse_size("--raw", line.substr(0, blank)), std::nullopt};
  if (blank != std::string::npos) {
    for (const auto& [name, format] : pixel_format_names()) {
      if (line.substr(blank + 1) == name) {
        layout.format = format;
      }
    }
  }
  return layout;
}

void read_frames(HeaderlessLayout layout, const std::uint8_t* content, std::size_t length) {
  if (!layout.format) {
    layout.format = format_by_length("file", layout, length);
  }
  const std::uint64_t frames = std::min<std::uint64_t>(3, count_frames(length, layout));
  RawFrame frame;
  for (std::uint64_t number = 0; number < frames; ++number) {
    const std::size_t start = std::min(length, static_cast<std::size_t>(number) * frame_bytes(layout));
    const std::vector<unsigned char> bytes(content + start, content + length);
    unpack_frame("file", bytes, layout, frame);
    check_frame(frame);
    require(bytes.size() >= frame_bytes(layout), "a frame beyond the end of its file");
  }
}

}  // namespace
}  // namespace nerova_zel::test

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace nerova_zel;
  const std::uint8_t* const end = std::find(bytes, bytes + size, '\n');
  const std::uint8_t* const content = std::min(end + 1, bytes + size);
  try {
    const std::string line(bytes, std::find(bytes, end, '\0'));  // as arguments arrive
    test::read_frames(test::parse_line(line), content, static_cast<std::size_t>(bytes + size - content));
  } catch (const Failure& failure) {
    test::check_sentence(failure.what(), std::string(failure.what()).rfind("--raw", 0) == 0 ? "--raw" : "file");
  }
  return 0;
}
