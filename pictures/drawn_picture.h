#pragma once

#include <functional>
#include <opencv2/core.hpp>

#include "picture.h"

namespace nerova_zel {

/** What `draw` draws, an 8-bit picture of three channels; failures of the drawing library become Failure. */
Picture drawn_picture(const std::function<cv::Mat()>& draw);

}  // namespace nerova_zel
