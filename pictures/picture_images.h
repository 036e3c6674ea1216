#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "frame_pictures.h"

namespace nerova_zel {

/** The images of a PictureContent in the drawing library's form; they share its memory. */
struct PictureImages {
  explicit PictureImages(const PictureContent& content);

  std::string name;
  MosaicLayout layout;
  Origin origin;
  int bit_depth;
  int output_maximum;
  bool power_headroom;        ///< the output maximum of the power is twice full scale
  cv::Mat frame;              ///< CV_16U, the raw mosaic
  cv::Mat normalized_stokes;  ///< CV_32FC2, S1 / P and S2 / P
  cv::Mat total_power;        ///< CV_16U
  cv::Mat azimuth;            ///< CV_16U
  cv::Mat degree;             ///< CV_16U
};

}  // namespace nerova_zel
