#pragma once

#include <opencv2/core.hpp>

#include "picture_images.h"

namespace nerova_zel {

/** The azimuth in colour, a pixel for each of the frame, as docs/pictures.md defines it to the last bit. */
cv::Mat draw_azimuth_picture(const PictureImages& content, AzimuthStyle style, const PictureScales& scales);

}  // namespace nerova_zel
