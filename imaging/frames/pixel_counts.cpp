#include "frames/pixel_counts.h"

#include <algorithm>

namespace nerova_zel {

namespace {

/** Few enough for counts of 16 bits, in which compilers make the fastest code. */
constexpr std::size_t block = 1U << 15U;

void count_block(const std::uint16_t* pixels, std::size_t count, std::uint16_t full_scale, PixelCounts& counts) {
  std::uint16_t dark = 0;
  std::uint16_t saturated = 0;
  std::uint16_t above = 0;
  std::uint16_t greatest = 0;
  std::uint16_t set_bits = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint16_t pixel = pixels[i];
    dark = static_cast<std::uint16_t>(dark + (pixel == 0 ? 1 : 0));
    saturated = static_cast<std::uint16_t>(saturated + (pixel >= full_scale ? 1 : 0));
    above = static_cast<std::uint16_t>(above + (pixel > full_scale ? 1 : 0));
    greatest = std::max(greatest, pixel);
    set_bits = static_cast<std::uint16_t>(set_bits | pixel);
  }
  counts.dark += dark;
  counts.saturated += saturated;
  counts.above += above;
  counts.greatest = std::max(counts.greatest, greatest);
  counts.set_bits = static_cast<std::uint16_t>(counts.set_bits | set_bits);
}

}  // namespace

PixelCounts count_pixels(const std::uint16_t* pixels, std::size_t count, int full_scale) {
  PixelCounts counts;
  for (std::size_t first = 0; first < count; first += block) {
    count_block(pixels + first, std::min(block, count - first), static_cast<std::uint16_t>(full_scale), counts);
  }
  return counts;
}

}  // namespace nerova_zel
