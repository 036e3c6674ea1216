#include "calibration/calibration.h"

#include <algorithm>
#include <cmath>

namespace nerova_zel {

void without_dark_level(const RawFrame& frame, const FrameGeometry& geometry, const CameraCalibration& calibration,
                        std::vector<std::uint16_t>& result) {
  const double scale = static_cast<double>((1 << geometry.bit_depth) - 1) / ((1 << calibration.bit_depth) - 1);
  result.resize(frame.pixels.size());
  std::size_t at = 0;
  for (int y = 0; y < frame.height; ++y) {
    int dark[2] = {};
    for (const int parity : {0, 1}) {
      const int angle = geometry.layout.angle_at(geometry.origin.x + parity, geometry.origin.y + y);
      dark[parity] =
          static_cast<int>(std::lround(scale * calibration.dark_levels[static_cast<std::size_t>(angle / 45)]));
    }
    for (int x = 0; x < frame.width; ++x, ++at) {
      result[at] = static_cast<std::uint16_t>(std::max(0, frame.pixels[at] - dark[x % 2]));
    }
  }
}

}  // namespace nerova_zel
