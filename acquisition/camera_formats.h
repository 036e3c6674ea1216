#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frames/colour_mosaic.h"
#include "frames/pixel_formats.h"

namespace nerova_zel {

/** The bytes of a camera's pixels, and the colour filters if the format names them. */
struct CameraFormat {
  PixelFormat format;
  std::optional<ColourPattern> colour;
};

/**
 * What a camera's pixel format is, by the name that its description gives it, or else by its number, which is of the
 * pixel format naming convention (PFNC) of the EMVA. Nothing for an unknown one.
 */
std::optional<CameraFormat> find_camera_format(const std::string& name, std::uint32_t number);

}  // namespace nerova_zel
