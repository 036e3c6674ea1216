#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "colour_pictures.h"
#include "sheet_planes.h"

namespace nerova_zel {

/** The room that each picture of the sheet has when `colours` stand side by side. */
cv::Size colour_sheet_panel(std::size_t colours);

/** `planes` are made of the content's for colour_sheet_panel(). Draws a page of 2400 pixels width. */
cv::Mat draw_colour_sheet(const ColourPictureContent& content, const std::vector<SheetPlanes>& planes,
                          const WhiteBalance& balance, AzimuthStyle style, const PictureScales& scales);

/** Power of the colours after white balance, each pixel's brightest: what decides where the scale of power ends. */
cv::Mat brightest_power(const std::vector<SheetPlanes>& planes, const WhiteBalance& balance);

}  // namespace nerova_zel
