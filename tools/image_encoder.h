#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "picture.h"

namespace nerova_zel {

// The file's bytes of an image that OpenCV writes by that extension (".png", ".tiff"). Throw Failure.
std::vector<unsigned char> encode_values(const std::uint16_t* values, int width, int height,
                                         const std::string& extension);
std::vector<unsigned char> encode_floats(const std::vector<float>& values, int width, int height,
                                         const std::string& extension);
std::vector<unsigned char> encode_picture(const Picture& picture, const std::string& extension);

/**
 * The file's bytes for a raw mosaic frame, in the form that `path` names by its extension: .png, .tif, .tiff, .pgm or
 * .raw (headerless, low byte first). One byte per pixel up to a bit depth of 8, else two. Throws Failure.
 */
std::vector<unsigned char> encode_frame(const std::vector<std::uint16_t>& pixels, int width, int height, int bit_depth,
                                        const std::string& path);

/** ".png" of "Frame.PNG"; empty when there is none. */
std::string lower_case_extension(const std::string& path);

/** Throws the Failure of encode_frame for an unknown extension before any work is done. */
void check_frame_extension(const std::string& path);

}  // namespace nerova_zel
