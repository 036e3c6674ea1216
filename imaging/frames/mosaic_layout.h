#pragma once

#include <array>

namespace nerova_zel {

/** The angles that name a layout. */
constexpr std::array<int, 4> mosaic_layouts = {0, 45, 90, 135};

/**
 * The sensor's repeating 2 x 2 pattern of linear polarizers, named by the angle at even sensor coordinates:
 * 0 is [0, 135 / 45, 90], 45 is [45, 90 / 0, 135], 90 is [90, 45 / 135, 0] and 135 is [135, 0 / 90, 45] degrees.
 */
class MosaicLayout {
 public:
  /** Top-left angle 0, 45, 90 or 135 degrees; anything else throws std::invalid_argument. */
  explicit MosaicLayout(int top_left_degrees);

  /** The library's number for the layout, 0 to 3. */
  int phase() const { return phase_; }

  /** Polarizer angle in degrees over the pixel at sensor coordinates (x, y), both at least 0. */
  int angle_at(int x, int y) const;

 private:
  int phase_;
};

}  // namespace nerova_zel
