#pragma once

#include <string>
#include <vector>

#include "frames/colour_mosaic.h"
#include "frames/pixel_formats.h"

namespace nerova_zel {

/** A pixel format of a colour polarization camera: the bytes of an ordinary one, and the pattern. */
struct ColourFormat {
  std::string name;
  PixelFormat format;
  ColourPattern pattern;
};

/** Every one of them, such as "BayerRGPolarized12p" for Mono12p and RGGB. */
std::vector<ColourFormat> colour_formats();

}  // namespace nerova_zel
