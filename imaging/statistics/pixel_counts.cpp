#include "statistics/pixel_counts.h"

namespace nerova_zel {

PixelCounts count_pixels(const std::uint16_t* pixels, std::size_t count, int full_scale) {
  // Counted in 32 bits: compilers make much faster code of it than of 64.
  PixelCounts counts;
  for (std::size_t i = 0; i < count; ++i) {
    counts.dark += pixels[i] == 0 ? 1U : 0U;
    counts.saturated += pixels[i] >= full_scale ? 1U : 0U;
    counts.above += pixels[i] > full_scale ? 1U : 0U;
  }
  return counts;
}

}  // namespace nerova_zel
