#include "frames/headerless_frame.h"

#include <algorithm>

#include "failure.h"

namespace nerova_zel {

namespace {

std::size_t pixel_count(const FrameSize& size) {
  return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

std::string describe(const FrameSize& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
}

}  // namespace

std::size_t frame_bytes(const HeaderlessLayout& layout) {
  return byte_count(layout.format.value(), pixel_count(layout.size));
}

std::uint64_t count_frames(std::uint64_t bytes, const HeaderlessLayout& layout) {
  if (!layout.format) {
    return 1;
  }
  const std::uint64_t one = frame_bytes(layout);
  return std::max<std::uint64_t>(1, (bytes + one - 1) / one);
}

PixelFormat format_by_length(const std::string& name, const FrameSize& size, std::uint64_t bytes) {
  const std::size_t count = pixel_count(size);
  if (bytes != count && bytes != 2 * count) {
    throw Failure(name + " holds " + std::to_string(bytes) + " bytes, but " + describe(size) + " take " +
                      std::to_string(count) + " (8-bit) or " + std::to_string(2 * count) + " (16-bit).",
                  Fact::file_length);
  }
  return bytes == count ? PixelFormat::mono8 : PixelFormat::mono16;
}

void unpack_frame(const std::string& name, const std::vector<unsigned char>& bytes, const HeaderlessLayout& layout,
                  RawFrame& frame) {
  const std::size_t needed = frame_bytes(layout);
  if (bytes.size() < needed) {
    throw Failure(name + " is cut short: " + describe(layout.size) + " of " + name_of(*layout.format) + " take " +
                  std::to_string(needed) + " bytes, and " + std::to_string(bytes.size()) + " are there.");
  }
  frame.width = layout.size.width;
  frame.height = layout.size.height;
  frame.bit_depth = significant_bits(*layout.format);
  frame.storage_bits = storage_bits(*layout.format);
  frame.pixels.resize(pixel_count(layout.size));
  unpack(*layout.format, bytes.data(), frame.pixels.size(), frame.pixels.data());
}

}  // namespace nerova_zel
