#pragma once

#include <opencv2/core.hpp>

#include "azimuth_style.h"

namespace nerova_zel {

// Colours are blue, green, red, 8 bits each, as OpenCV keeps them, and come from tables: docs/pictures.md has their
// formulas, docs/colour-tables their entries. Arguments outside their range count as its ends; NaN counts as 0.

/** Light of relative intensity 0 to 1 as grey, by the transfer curve of sRGB so that it looks as bright as it is. */
cv::Vec3b grey(double intensity);

/** 0 to 1 from dark violet to yellow, evenly rising in lightness. */
cv::Vec3b sequential(double value);

/** -1 to 1 from blue over near-white at 0 to red. */
cv::Vec3b diverging(double value);

/** An angle in degrees as hue, periodic with 180 degrees and red at 0. */
cv::Vec3b hue(double angle_degrees);

/** 0 to 1 as 0 to 255, the steps by which colours are mixed. */
int mixing_level(double share);

/** The colour of a hue by the mixing level of the degree and the grey (0 to 255) of the power. */
cv::Vec3b mix_azimuth(AzimuthStyle style, const cv::Vec3b& hue, int degree_level, int power_grey);

/** The same from an angle in degrees and shares, 0 to 1, of where the scales of degree and power end. */
cv::Vec3b azimuth_colour(AzimuthStyle style, double angle_degrees, double degree, double power);

}  // namespace nerova_zel
