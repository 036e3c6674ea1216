#pragma once

#include <cstddef>
#include <cstdint>

namespace nerova_zel {

/** How many pixels of an image lie at or beyond the ends of its scale. */
struct PixelCounts {
  std::uint32_t dark = 0;       ///< 0
  std::uint32_t saturated = 0;  ///< full scale or above
  std::uint32_t above = 0;      ///< above full scale
  std::uint16_t greatest = 0;   ///< value
  std::uint16_t set_bits = 0;   ///< that any pixel has

  PixelCounts& operator+=(const PixelCounts& more);
};

/** Of at most 2^32 - 1 pixels; the full scale is 0 to 65535. */
PixelCounts count_pixels(const std::uint16_t* pixels, std::size_t count, int full_scale);

}  // namespace nerova_zel
