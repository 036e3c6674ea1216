#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/colour_mosaic.h"

namespace nerova_zel {

/**
 * Fills a mosaic of the frame's size, layout and origin with one colour: bilinear between the nearest pixels of the
 * plane under the same polarizer, which lie 4 apart, and rounded to nearest, halves up. Pixels of the colour itself are
 * copied; beyond the outermost pixels of the plane their values continue. `frame` has room for width * height pixels
 * and does not overlap `plane`. Throws std::invalid_argument for a frame of less than 4 x 4 pixels.
 */
void interpolate_plane(const ColourMosaic& mosaic, ColourPlane colour, const std::uint16_t* plane,
                       std::uint16_t* frame);

/** Means of two images, halves up; `mean` may be one of them. */
void average_images(const std::uint16_t* first, const std::uint16_t* second, std::size_t pixels, std::uint16_t* mean);

}  // namespace nerova_zel
