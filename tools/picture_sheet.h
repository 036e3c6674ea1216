#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "mosaic_layout.h"

namespace nerova_zel {

/** What the sheet shows. All pictures have one size. */
struct SheetContent {
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

struct SheetStyle {
  /** Whether the degree of polarization darkens the azimuth picture. */
  bool degree_as_brightness = true;
  /** Degree at which brightness and colour scales end, above 0 to 1; 0 chooses it from the picture. */
  double degree_limit = 0.0;
};

/**
 * Draws one page of 2400 pixels width to look at: the frame and five quantities, each with its legend. Larger pictures
 * are averaged down before they become colours, as light adds up: power as it is, polarization as the Stokes vectors
 * that azimuth, degree and power (and S1 / P, S2 / P and power) make up. Smaller ones are repeated by whole numbers.
 */
cv::Mat draw_sheet(const SheetContent& content, const SheetStyle& style);

}  // namespace nerova_zel
