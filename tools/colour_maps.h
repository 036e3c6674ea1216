#pragma once

#include <opencv2/core.hpp>

namespace nerova_zel {

// Colours are blue, green, red, 8 bits each, as OpenCV keeps them. Arguments outside their range count as its ends;
// NaN counts as 0.

/** Light of relative intensity 0 to 1 as grey, by the transfer curve of sRGB so that it looks as bright as it is. */
cv::Vec3b grey(double intensity);

/** 0 to 1 from dark violet to yellow, evenly rising in lightness. */
cv::Vec3b sequential(double value);

/** -1 to 1 from blue over near-white at 0 to red. */
cv::Vec3b diverging(double value);

/** An angle in degrees as hue, periodic with 180 degrees and red at 0; brightness 0 to 1. */
cv::Vec3b cyclic(double angle_degrees, double brightness);

}  // namespace nerova_zel
