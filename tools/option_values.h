#pragma once

#include <set>
#include <string>

#include "frame_outputs.h"
#include "raw_frame.h"

namespace nerova_zel {

struct Origin {
  int x;
  int y;
};

// Each reads the value of an option and throws Failure, naming the option, when it makes no sense.

/** "WxH", both at least 2, and at most 2^28 pixels in all. */
FrameSize parse_size(const std::string& option, const std::string& text);

/** "X,Y", both at least 0. */
Origin parse_origin(const std::string& text);

/** "X,Y,W,H": a corner, both at least 0, and a size as in parse_size. */
Region parse_region(const std::string& text);

/** A list such as "azimuth,dolp", or "all". */
std::set<OutputKind> parse_outputs(const std::string& text);

/** 0, 45, 90 or 135. */
void check_layout(int degrees);

/** A whole number from `least` to `greatest`. */
void check_range(const std::string& option, long long value, long long least, long long greatest);

}  // namespace nerova_zel
