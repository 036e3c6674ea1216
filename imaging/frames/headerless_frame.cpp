#include "frames/headerless_frame.h"

#include <algorithm>
#include <limits>

#include "failure.h"

namespace nerova_zel {

namespace {

std::size_t pixel_count(const FrameSize& size) {
  return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

std::string describe(const FrameSize& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
}

std::size_t row_bytes(const HeaderlessLayout& layout) {
  return byte_count(layout.format.value(), static_cast<std::size_t>(layout.size.width));
}

/** Bytes up to the end of a frame's last pixel. */
std::size_t pixel_bytes(const HeaderlessLayout& layout) {
  if (layout.stride == 0) {
    return byte_count(layout.format.value(), pixel_count(layout.size));
  }
  return layout.stride * static_cast<std::size_t>(layout.size.height - 1) + row_bytes(layout);
}

void check_rows(const FrameSize& size, std::uint64_t bytes_of_row) {
  constexpr std::uint64_t most = std::numeric_limits<std::ptrdiff_t>::max();
  if (bytes_of_row > most / static_cast<std::uint64_t>(size.height)) {
    throw Failure("a frame of " + describe(size) + " is larger than the memory that this program can address.");
  }
}

void describe_frame(const HeaderlessLayout& layout, RawFrame& frame) {
  frame.width = layout.size.width;
  frame.height = layout.size.height;
  frame.bit_depth = significant_bits(*layout.format);
  frame.storage_bits = value_bits(*layout.format);
  frame.depth_is_stated = *layout.format != PixelFormat::mono16;  // cameras fill it with fewer bits too
}

void check_length(const std::string& name, std::size_t bytes, const HeaderlessLayout& layout) {
  const std::size_t needed = pixel_bytes(layout);
  if (bytes < needed) {
    throw Failure(name + " is cut short: " + describe(layout.size) + " of " + name_of(*layout.format) + " take " +
                  std::to_string(needed) + " bytes, and " + std::to_string(bytes) + " are there.");
  }
}

}  // namespace

void check_size(const FrameSize& size) {
  check_rows(size, sizeof(std::uint16_t) * static_cast<std::uint64_t>(size.width));
}

void check_layout(const HeaderlessLayout& layout) {
  check_size(layout.size);
  if (layout.stride == 0) {
    return;
  }
  if (!layout.format) {
    throw Failure("a stride says nothing without a pixel format.", Fact::stride_without_format);
  }
  check_rows(layout.size, layout.stride);
  if (layout.stride < row_bytes(layout)) {
    throw Failure("a stride of " + std::to_string(layout.stride) + " bytes is less than the " +
                  std::to_string(row_bytes(layout)) + " that a row of " + std::to_string(layout.size.width) +
                  " pixels of " + name_of(*layout.format) + " takes.");
  }
}

std::size_t frame_bytes(const HeaderlessLayout& layout) {
  return layout.stride == 0 ? pixel_bytes(layout) : layout.stride * static_cast<std::size_t>(layout.size.height);
}

std::uint64_t frame_offset(const HeaderlessLayout& layout, std::uint64_t number) {
  return layout.header + number * frame_bytes(layout);
}

std::uint64_t count_frames(std::uint64_t bytes, const HeaderlessLayout& layout) {
  if (!layout.format) {
    return 1;
  }
  const std::uint64_t one = frame_bytes(layout);
  const std::uint64_t of_frames = bytes - std::min(bytes, layout.header);
  return std::max<std::uint64_t>(1, (of_frames + one - 1) / one);
}

PixelFormat format_by_length(const std::string& name, const HeaderlessLayout& layout, std::uint64_t bytes) {
  const std::size_t count = pixel_count(layout.size);
  if (bytes != layout.header + count && bytes != layout.header + 2 * count) {
    const std::string behind = layout.header == 0 ? "" : " behind a header of " + std::to_string(layout.header);
    throw Failure(name + " holds " + std::to_string(bytes) + " bytes, but " + describe(layout.size) + " take " +
                      std::to_string(count) + " (8-bit) or " + std::to_string(2 * count) + " (16-bit)" + behind + ".",
                  Fact::file_length);
  }
  return bytes == layout.header + count ? PixelFormat::mono8 : PixelFormat::mono16;
}

void unpack_frame(const std::string& name, const std::vector<unsigned char>& bytes, const HeaderlessLayout& layout,
                  RawFrame& frame) {
  check_length(name, bytes.size(), layout);
  describe_frame(layout, frame);
  frame.pixels.resize(pixel_count(layout.size));
  if (layout.stride == 0) {
    unpack(*layout.format, bytes.data(), frame.pixels.size(), frame.pixels.data());
    return;
  }
  const auto width = static_cast<std::size_t>(layout.size.width);
  for (std::size_t y = 0; y < static_cast<std::size_t>(layout.size.height); ++y) {
    unpack(*layout.format, bytes.data() + y * layout.stride, width, frame.pixels.data() + y * width);
  }
}

void take_unpacked_frame(const std::string& name, std::size_t bytes, const HeaderlessLayout& layout, RawFrame& frame) {
  check_length(name, bytes, layout);
  describe_frame(layout, frame);
}

}  // namespace nerova_zel
