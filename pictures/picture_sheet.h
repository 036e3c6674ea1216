#pragma once

#include <opencv2/core.hpp>

#include "picture_images.h"
#include "sheet_planes.h"

namespace nerova_zel {

/** The room that each picture of the sheet has. */
cv::Size sheet_panel();

/**
 * Draws one page of 2400 pixels width to look at: the frame and five quantities, each with its legend. `planes` are
 * made of the content for sheet_panel().
 */
cv::Mat draw_sheet(const PictureImages& content, const SheetPlanes& planes, AzimuthStyle style,
                   const PictureScales& scales);

}  // namespace nerova_zel
