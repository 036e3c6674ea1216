#pragma once

#include <array>
#include <optional>
#include <set>
#include <string>

#include "frame_outputs.h"
#include "headerless_frame.h"
#include "raw_frame.h"

namespace nerova_zel {

struct Origin {
  int x;
  int y;
};

// Each reads the value of an option and throws Failure, naming the option, when it makes no sense.

/** "WxH", both at least 2, and at most 2^28 pixels in all. */
FrameSize parse_size(const std::string& option, const std::string& text);

/** The values of --raw and --pixel-format; nothing without --raw. */
std::optional<HeaderlessLayout> parse_headerless(const std::optional<std::string>& raw,
                                                 const std::optional<std::string>& pixel_format);

/** "X,Y", both at least 0. */
Origin parse_origin(const std::string& text);

/** "X,Y,W,H": a corner, both at least 0, and a size as in parse_size. */
Region parse_region(const std::string& text);

/** A list such as "azimuth,dolp", or "all". */
std::set<OutputKind> parse_outputs(const std::string& text);

/** A number from `least` to `greatest` for each of the polarizers 0, 45, 90 and 135: "1,0.9,1,1", or one for all. */
std::array<double, 4> parse_four(const std::string& option, const std::string& text, double least, double greatest);

/** The number that the whole text makes up, with a point whatever the locale. */
std::optional<double> parse_number(const std::string& text);

/** 0, 45, 90 or 135. */
void check_layout(int degrees);

/** A whole number from `least` to `greatest`. */
void check_range(const std::string& option, long long value, long long least, long long greatest);

}  // namespace nerova_zel
