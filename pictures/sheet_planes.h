#pragma once

#include <opencv2/core.hpp>

#include "picture_images.h"

namespace nerova_zel {

/** CV_32F pictures at the size they are shown, in linear units: 1 is full scale. */
struct SheetPlanes {
  cv::Mat frame;
  cv::Mat power;
  cv::Mat angle;  ///< degrees
  cv::Mat degree;
  cv::Mat ratio1;  ///< S1 / P
  cv::Mat ratio2;  ///< S2 / P
};

/**
 * Fits the pictures of `content` into `box`: smaller ones are repeated by a whole number, larger ones averaged as light
 * adds up, polarization as Stokes vectors.
 */
SheetPlanes make_planes(const PictureImages& content, const cv::Size& box);

/** A plane of light fitted into `box` in the same way. */
cv::Mat fit_plane(const cv::Mat& plane, const cv::Size& box);

/** A round number that at most one value in two hundred of a plane of light exceeds; at most 1. */
double light_end(const cv::Mat& plane);

/** The same for the degree of polarization where there is light enough to tell it. */
double degree_end(const SheetPlanes& planes);

}  // namespace nerova_zel
