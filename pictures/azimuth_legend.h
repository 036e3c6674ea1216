#pragma once

#include <opencv2/core.hpp>

#include "frame_pictures.h"
#include "sheet_drawing.h"

namespace nerova_zel {

/** The hues by angle and, where the style shows it, the degree from the centre to the rim; whole or its upper half. */
void draw_wheel(cv::Mat& page, cv::Point centre, int radius, bool whole, AzimuthStyle style, const TextStyle& text);

/** What the centre and the rim of the wheel stand for, in words. */
std::string wheel_note(AzimuthStyle style, double degree_end);

/** The legend of an azimuth picture, as a picture of its own. */
cv::Mat draw_azimuth_legend(AzimuthStyle style, const PictureScales& scales);

}  // namespace nerova_zel
