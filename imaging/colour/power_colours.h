#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nerova_zel {

/** The library's total power of the colours of a scene, images of equal size. */
struct ColourPower {
  const std::uint16_t* red;
  const std::uint16_t* green1;
  const std::uint16_t* green2;  ///< may be green1 where greens are merged
  const std::uint16_t* blue;
  std::size_t pixels;
};

/** What power is multiplied by for display, each above 0. */
struct WhiteBalance {
  double red = 1.0;
  double green = 1.0;
  double blue = 1.0;
};

/**
 * The white balance that makes the means of the three colours equal, with green at 1. Pixels at the output maximum in
 * any colour are left out; a colour without light keeps 1.
 */
WhiteBalance grey_world(const ColourPower& power, int output_maximum);

/**
 * Shows power in colour: each of red, green (the mean of both) and blue times its white balance, by the table of greys.
 * Thread safety: any number of threads may paint at the same time.
 */
class PowerColours {
 public:
  /** `power_end` is the share of the output maximum that shows as white, above 0. */
  PowerColours(const WhiteBalance& balance, int output_maximum, double power_end);

  /** Fills 3 bytes for each pixel: red, green and blue. */
  void paint(const ColourPower& power, std::uint8_t* colours) const;

 private:
  std::array<std::vector<std::uint8_t>, 3> tables_;  ///< by power
};

}  // namespace nerova_zel
