#include "frames/raw_frame.h"

#include <cstring>

#include "failure.h"

namespace nerova_zel {

namespace {

std::string size_of(const RawFrame& frame) {
  return std::to_string(frame.width) + " x " + std::to_string(frame.height) + " pixels";
}

}  // namespace

void check_mosaic_size(const RawFrame& frame, const std::string& name) {
  if (frame.width < 2 || frame.height < 2) {
    throw Failure(name + " is " + size_of(frame) + "; a mosaic frame has at least 2 x 2.");
  }
}

void crop(RawFrame& frame, const Region& region, const std::string& name) {
  if (region.x > frame.width - region.size.width || region.y > frame.height - region.size.height) {
    throw Failure(name + " is " + size_of(frame) + ", which the region reaches beyond.", Fact::region_beyond_frame);
  }
  frame.counted.reset();
  const auto from = static_cast<std::size_t>(frame.width);
  const auto to = static_cast<std::size_t>(region.size.width);
  for (std::size_t y = 0; y < static_cast<std::size_t>(region.size.height); ++y) {
    const auto row = (static_cast<std::size_t>(region.y) + y) * from + static_cast<std::size_t>(region.x);
    std::memmove(&frame.pixels[y * to], &frame.pixels[row], to * sizeof(std::uint16_t));
  }
  frame.width = region.size.width;
  frame.height = region.size.height;
  frame.pixels.resize(to * static_cast<std::size_t>(region.size.height));
}

PixelCounts counts_of(const RawFrame& frame, int full_scale) {
  const bool known = frame.counted && frame.counted->full_scale == full_scale;
  return known ? frame.counted->counts : count_pixels(frame.pixels.data(), frame.pixels.size(), full_scale);
}

}  // namespace nerova_zel
