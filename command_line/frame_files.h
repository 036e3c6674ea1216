#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frames/raw_frame.h"
#include "image.h"
#include "picture_file.h"

namespace nerova_zel {

/** Reads a page of grey pixels. Throws CodecError. */
void read_page(const PictureFile& file, std::uint64_t page, RawFrame& frame);

/**
 * The file's bytes for a raw mosaic frame, in the form that `path` names by its extension: .png, .tif, .tiff, .pgm or
 * .raw (headerless, low byte first). One byte per pixel up to a bit depth of 8, else two. Throws UsageError or
 * CodecError.
 */
Bytes encode_frame(const std::vector<std::uint16_t>& pixels, int width, int height, int bit_depth,
                   const std::string& path);

/** ".png" of "Frame.PNG"; empty when there is none. */
std::string lower_case_extension(const std::string& path);

/** Throws the UsageError of encode_frame for an unknown extension before any work is done. */
void check_frame_extension(const std::string& path);

}  // namespace nerova_zel
