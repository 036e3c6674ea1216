#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calibration/polarizer_fit.h"
#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"

namespace nerova_zel {

/** What a calibration finds and a transform uses. */
struct CameraCalibration {
  /** Matrix m serves the pixels under the polarizer at 45 * m degrees, whatever layout and origin. */
  Calibration matrices{};
  /** Pixel values without light under the polarizers 0, 45, 90 and 135 degrees. */
  PerPolarizer dark_levels{};
  /** Of the frames that it was made from; none of others may be corrected by it. */
  std::optional<int> bit_depth;
};

/** Throws Failure if the calibration was made with another bit depth; `name` is what it calls the frame. */
void check_bit_depth(const CameraCalibration& calibration, int bit_depth, const std::string& name);

/** Where a frame lies on the sensor, and how many bits of its pixels count. */
struct FrameGeometry {
  MosaicLayout layout;
  Origin origin;
  int bit_depth;
};

/** Fills `result` with the pixels less their dark level, rounded and not below 0. `pixels` and `result` may be the
 * same.
 */
void without_dark_level(const std::uint16_t* pixels, const FrameSize& size, const FrameGeometry& geometry,
                        const CameraCalibration& calibration, std::uint16_t* result);
void without_dark_level(const RawFrame& frame, const FrameGeometry& geometry, const CameraCalibration& calibration,
                        std::vector<std::uint16_t>& result);

}  // namespace nerova_zel
