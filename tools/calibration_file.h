#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "mosaic_layout.h"
#include "polarizer_fit.h"
#include "raw_frame.h"

namespace nerova_zel {

/** What `calibrate` finds and `transform` uses. */
struct Calibration {
  /** Matrix m serves the pixels under the polarizer at 45 * m degrees, whatever layout and origin. */
  std::array<WeightMatrix, 4> matrices{};
  /** Pixel values without light under the polarizers 0, 45, 90 and 135 degrees, for pixels of `bit_depth` bits. */
  PerPolarizer dark_levels{};
  int bit_depth = 16;
};

/** Where a frame lies on the sensor, and how many bits of its pixels count. */
struct FrameGeometry {
  MosaicLayout layout;
  int origin_x;
  int origin_y;
  int bit_depth;
};

/** The bytes of a calibration file, which docs/calibration.md describes; its report tells of `fit`. */
std::vector<unsigned char> encode_calibration(const Calibration& calibration, const PolarizerFit& fit);

/** Throws Failure, naming the file and what is wrong with it. */
Calibration read_calibration(const std::string& path);

/**
 * Fills `result` with the pixels less their dark level, rounded and not below 0; a level of another bit depth is scaled
 * as full scale is.
 */
void without_dark_level(const RawFrame& frame, const FrameGeometry& geometry, const Calibration& calibration,
                        std::vector<std::uint16_t>& result);

}  // namespace nerova_zel
