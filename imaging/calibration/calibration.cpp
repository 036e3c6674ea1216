#include "calibration/calibration.h"

#include <cmath>

#include "failure.h"

namespace nerova_zel {

void check_bit_depth(const CameraCalibration& calibration, int bit_depth, const std::string& name) {
  if (calibration.bit_depth.value_or(bit_depth) != bit_depth) {
    throw Failure(name + " has " + std::to_string(bit_depth) + " bits, but the calibration was made from frames of " +
                      std::to_string(*calibration.bit_depth) + ".",
                  Fact::other_bit_depth);
  }
}

void without_dark_level(const std::uint16_t* pixels, const FrameSize& size, const FrameGeometry& geometry,
                        const CameraCalibration& calibration, std::uint16_t* result) {
  const auto width = static_cast<std::size_t>(size.width);
  // A whole row of levels, so that compilers make vector code of the subtraction.
  std::vector<std::uint16_t> dark(width);
  for (int y = 0; y < size.height; ++y) {
    std::uint16_t by_parity[2] = {};
    for (const int parity : {0, 1}) {
      const int angle = geometry.layout.angle_at(geometry.origin.x + parity, geometry.origin.y + y);
      by_parity[parity] =
          static_cast<std::uint16_t>(std::lround(calibration.dark_levels[static_cast<std::size_t>(angle / 45)]));
    }
    for (std::size_t x = 0; x < width; ++x) {
      dark[x] = by_parity[x % 2];
    }
    for (std::size_t x = 0; x < width; ++x) {
      const std::uint16_t pixel = pixels[x];
      result[x] = static_cast<std::uint16_t>(pixel > dark[x] ? pixel - dark[x] : 0);
    }
    pixels += width;
    result += width;
  }
}

void without_dark_level(const RawFrame& frame, const FrameGeometry& geometry, const CameraCalibration& calibration,
                        std::vector<std::uint16_t>& result) {
  result.resize(frame.pixels.size());
  without_dark_level(frame.pixels.data(), {frame.width, frame.height}, geometry, calibration, result.data());
}

}  // namespace nerova_zel
