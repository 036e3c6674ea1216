#pragma once

#include <array>
#include <string>

#include "frames/raw_frame.h"
#include "power_colours.h"

namespace nerova_zel {

// Each reads the value of an option and throws UsageError, naming the option, when it makes no sense.

/** "WxH", both at least 2, and at most 2^28 pixels in all. */
FrameSize parse_size(const std::string& option, const std::string& text);

/** "X,Y", both at least 0. */
Origin parse_origin(const std::string& text);

/** "X,Y,W,H": a corner, both at least 0, and a size as in parse_size. */
Region parse_region(const std::string& text);

/** "3:7" for frames 3 to 6, "3:" from 3 on, ":7" the first 7. Throws Failure. */
FrameRange parse_frames(const std::string& text);

/** "1.8,1,1.5": red, green and blue, each from 0.01 to 100. */
WhiteBalance parse_white_balance(const std::string& text);

/** A number from `least` to `greatest` for each of the polarizers 0, 45, 90 and 135: "1,0.9,1,1", or one for all. */
std::array<double, 4> parse_four(const std::string& option, const std::string& text, double least, double greatest);

}  // namespace nerova_zel
