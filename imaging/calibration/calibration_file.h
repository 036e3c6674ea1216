#pragma once

#include <string>

#include "calibration/calibration.h"
#include "calibration/polarizer_fit.h"
#include "frames/colour_mosaic.h"

namespace nerova_zel {

/** The text of a calibration file, which docs/calibration.md describes; its report tells of `fit`. */
std::string encode_calibration(const CameraCalibration& calibration, const PolarizerFit& fit);

/** The same for the colours of a sensor. */
std::string encode_colour_calibration(const PerPlane<CameraCalibration>& calibrations,
                                      const PerPlane<PolarizerFit>& fits);

/** Reads that text. `name` is what failures call the file. Throws Failure, saying what is wrong with it. */
CameraCalibration parse_calibration(const std::string& text, const std::string& name);

/** Reads the text of a colour sensor's. */
PerPlane<CameraCalibration> parse_colour_calibration(const std::string& text, const std::string& name);

}  // namespace nerova_zel
