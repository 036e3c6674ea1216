#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "calibration/polarizer_fit.h"
#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"

namespace nerova_zel {

/** What a calibration finds and a transform uses. */
struct CameraCalibration {
  /** Matrix m serves the pixels under the polarizer at 45 * m degrees, whatever layout and origin. */
  Calibration matrices{};
  /** Pixel values without light under the polarizers 0, 45, 90 and 135 degrees, for pixels of `bit_depth` bits. */
  PerPolarizer dark_levels{};
  int bit_depth = 16;
};

/** Where a frame lies on the sensor, and how many bits of its pixels count. */
struct FrameGeometry {
  MosaicLayout layout;
  Origin origin;
  int bit_depth;
};

/**
 * Fills `result` with the pixels less their dark level, rounded and not below 0; a level of another bit depth is scaled
 * as full scale is. `pixels` and `result` may be the same.
 */
void without_dark_level(const std::uint16_t* pixels, const FrameSize& size, const FrameGeometry& geometry,
                        const CameraCalibration& calibration, std::uint16_t* result);
void without_dark_level(const RawFrame& frame, const FrameGeometry& geometry, const CameraCalibration& calibration,
                        std::vector<std::uint16_t>& result);

}  // namespace nerova_zel
