#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "colour_maps.h"
#include "mosaic_layout.h"

namespace nerova_zel {

/** What pictures for looking at are drawn from. All images have one size. */
struct PictureContent {
  std::string name;
  MosaicLayout layout{90};
  int origin_x = 0;
  int origin_y = 0;
  int bit_depth = 16;
  int output_maximum = 65535;
  cv::Mat frame;              ///< CV_16U, the raw mosaic
  cv::Mat normalized_stokes;  ///< CV_32FC2, S1 / P and S2 / P
  cv::Mat total_power;        ///< CV_16U
  cv::Mat azimuth;            ///< CV_16U
  cv::Mat degree;             ///< CV_16U
};

/** Where colour scales end: above 0, at most 1. */
struct PictureScales {
  double degree;
  double power;  ///< as a share of full scale
};

/** What the user chooses. */
struct PictureStyle {
  AzimuthStyle azimuth = AzimuthStyle::dark;
  /** 0 chooses the end of a scale from the picture. */
  PictureScales ends{0.0, 0.0};
};

}  // namespace nerova_zel
