// The tool's readers of frames. An input that begins with "r" is headerless: a line with the values of --raw and, after
// a blank, of --pixel-format, then the file. Any other is a picture behind its first byte.

#include "batch/frame_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "failure.h"
#include "fuzz/finding.h"
#include "fuzz/memory_file.h"
#include "option_values.h"

namespace nerova_zel::test {
namespace {

/** One sentence that names the file or the option, for a user to read. */
void check_sentence(const std::string& sentence, const std::string& subject) {
  require(sentence.find(subject) != std::string::npos, "a failure that does not say with what");
  require(sentence.back() == '.', "a failure that is no sentence");
}

void check_frame(const RawFrame& frame) {
  require(frame.width > 0 && frame.height > 0, "a frame without pixels");
  require(frame.pixels.size() == static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height),
          "a frame with another number of pixels than its size");
  require(frame.bit_depth >= 1 && frame.bit_depth <= frame.storage_bits && frame.storage_bits <= 16,
          "a frame with a strange bit depth");
  require(bit_depth_of(frame, 8, "") == 8, "a bit depth that was not asked for");
}

/** A pixel of a headerless frame, bit by bit. */
unsigned plain_pixel(PixelFormat format, const std::uint8_t* bytes, std::size_t pixel) {
  const auto bits = static_cast<std::size_t>(storage_bits(format));
  if (format == PixelFormat::mono12_packed) {
    const std::uint8_t* const pair = bytes + pixel / 2 * 3;
    const unsigned low_bits = pair[1];
    const unsigned high_bits = pair[pixel % 2 == 0 ? 0 : 2];
    return high_bits << 4U | (pixel % 2 == 0 ? low_bits & 15U : low_bits >> 4U);
  }
  unsigned value = 0;
  for (std::size_t i = 0; i < bits; ++i) {
    const std::size_t at = pixel * bits + i;
    value |= (unsigned{bytes[at / 8]} >> (at % 8) & 1U) << i;
  }
  return value;
}

std::optional<HeaderlessLayout> parse_line(const std::string& line) {
  const std::size_t blank = line.find(' ');
  return parse_headerless(line.substr(0, blank),
                          blank == std::string::npos ? std::nullopt : std::optional(line.substr(blank + 1)));
}

void read_headerless(const std::uint8_t* bytes, std::size_t size) {
  const std::uint8_t* const end = std::find(bytes, bytes + size, '\n');
  std::optional<HeaderlessLayout> layout;
  try {
    layout = parse_line(std::string(bytes, std::find(bytes, end, '\0')));  // as arguments arrive
  } catch (const Failure& failure) {
    return check_sentence(failure.what(), "--");
  }
  const std::uint8_t* const content = std::min(end + 1, bytes + size);
  const auto length = static_cast<std::size_t>(bytes + size - content);
  const MemoryFile file(content, length);
  const std::uint64_t frames = std::min<std::uint64_t>(3, count_frames(file.path(), layout));
  Bytes room;
  RawFrame frame;
  for (std::uint64_t number = 0; number < frames; ++number) {
    try {
      read_frame(file.path(), number, file.path(), layout, room, frame);
    } catch (const Failure& failure) {
      check_sentence(failure.what(), file.path());
      continue;
    }
    check_frame(frame);
    const PixelFormat format =
        layout->format.value_or(length == frame.pixels.size() ? PixelFormat::mono8 : PixelFormat::mono16);
    const std::size_t start = number * byte_count(format, frame.pixels.size());
    require(start + byte_count(format, frame.pixels.size()) <= length, "a frame beyond the end of its file");
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
      require(frame.pixels[i] == plain_pixel(format, content + start, i), "a pixel with another value than its bits");
    }
  }
}

void read_picture_file(const std::uint8_t* bytes, std::size_t size) {
  const MemoryFile file(bytes, size);
  try {
    check_frame(read_only_frame(file.path(), std::nullopt));
  } catch (const Failure& failure) {
    check_sentence(failure.what(), file.path());
  }
}

}  // namespace
}  // namespace nerova_zel::test

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // A few bytes can name a picture of gigabytes, and whether OpenCV holds that is not the question here.
  return setenv("OPENCV_IO_MAX_IMAGE_PIXELS", "1048576", 1);
}

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size > 0) {
    (bytes[0] == 'r' ? nerova_zel::test::read_headerless : nerova_zel::test::read_picture_file)(bytes + 1, size - 1);
  }
  return 0;
}
