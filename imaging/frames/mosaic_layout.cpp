#include "frames/mosaic_layout.h"

#include <stdexcept>

namespace nerova_zel {

MosaicLayout::MosaicLayout(int top_left_degrees) : phase_(top_left_degrees / 45) {
  if (top_left_degrees < 0 || top_left_degrees > 135 || top_left_degrees % 45 != 0) {
    throw std::invalid_argument("a mosaic layout is named by 0, 45, 90 or 135 degrees");
  }
}

int MosaicLayout::angle_at(int x, int y) const {
  static constexpr int angles[4][2][2] = {
      {{0, 135}, {45, 90}}, {{45, 90}, {0, 135}}, {{90, 45}, {135, 0}}, {{135, 0}, {90, 45}}};
  return angles[phase_][y % 2][x % 2];
}

}  // namespace nerova_zel
