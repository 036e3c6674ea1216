// The tool's readers of frames. The first byte says how: as a picture, or headerless with the size that a line of text
// gives; the rest is the file.

#include "frame_reader.h"

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
  require(frame.bit_depth >= 1 && frame.bit_depth <= 16, "a frame with a strange bit depth");
}

void check_headerless(const RawFrame& frame, const std::uint8_t* bytes, std::size_t size) {
  const std::size_t width = size / frame.pixels.size();
  require(frame.bit_depth == static_cast<int>(8 * width), "headerless pixels with another bit depth than their width");
  for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
    const unsigned high = width == 2 ? bytes[2 * i + 1] : 0U;
    require(frame.pixels[i] == (high << 8U | bytes[width * i]), "a headerless pixel with another value than its bytes");
  }
}

void read(bool headerless, const std::uint8_t* bytes, std::size_t size) {
  std::optional<FrameSize> raw_size;
  if (headerless) {
    const std::uint8_t* const end = std::find(bytes, bytes + size, '\n');
    try {
      raw_size = parse_size("--raw", std::string(bytes, std::find(bytes, end, '\0')));  // as an argument arrives
    } catch (const Failure& failure) {
      return check_sentence(failure.what(), "--raw");
    }
    const std::uint8_t* const file = std::min(end + 1, bytes + size);
    size -= static_cast<std::size_t>(file - bytes);
    bytes = file;
  }
  const MemoryFile file(bytes, size);
  try {
    const RawFrame frame = read_frame(file.path(), raw_size);
    check_frame(frame);
    if (headerless) {
      check_headerless(frame, bytes, size);
    }
    const int depth = bit_depth_of(frame, 8, file.path());
    require(depth == 8, "a bit depth that was not asked for");
  } catch (const Failure& failure) {
    check_sentence(failure.what(), file.path());
  }
}

}  // namespace
}  // namespace nerova_zel::test

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // A few bytes can name a picture of gigabytes, and whether OpenCV holds that is not the question here.
  return setenv("OPENCV_IO_MAX_IMAGE_PIXELS", "1048576", 1);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size > 0) {
    nerova_zel::test::read(bytes[0] == 'r', bytes + 1, size - 1);
  }
  return 0;
}
