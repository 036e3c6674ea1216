#pragma once

#include <string>
#include <vector>

#include "calibration/calibration.h"

namespace nerova_zel {

/** A frame of one even light, reduced to what calibration needs. */
struct UniformFrame {
  /** What failures call it. */
  std::string name;
  int width;
  int height;
  /** Mean pixel value under each polarizer, without the few pixels that stand far apart from the others. */
  PerPolarizer level;
  /** Mean pixel values of tiles that cover the frame, row by row; each holds every polarizer equally often. */
  std::vector<double> tiles;
  /** Share of the pixels at full scale, 0 to 1. */
  double saturated;
};

/** Throws Failure when the frame is too small or has values beyond the full scale of its bit depth. */
UniformFrame measure_uniform_frame(const std::string& name, const RawFrame& pixels, const FrameGeometry& geometry);

/** Spread of the tiles, greatest less least over their mean, after `dark` is taken off. */
double unevenness(const UniformFrame& frame, const PerPolarizer& dark);

}  // namespace nerova_zel
