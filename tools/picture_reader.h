#pragma once

#include <string>

#include "frames/raw_frame.h"

namespace nerova_zel {

/** Reads a single-channel 8- or 16-bit PNG, TIFF or binary PGM, told apart by content, not by name. Throws Failure. */
RawFrame read_picture(const std::string& path);

}  // namespace nerova_zel
