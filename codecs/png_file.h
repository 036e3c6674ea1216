#pragma once

#include <string>
#include <vector>

#include "image.h"

namespace nerova_zel {

/** Whether a file begins as PNG files do. */
bool is_png(const Bytes& bytes);

/**
 * What a PNG file says of itself: `name` stands for it in errors. Texts are those before the pixels. Throws CodecError,
 * also for pixels that are not grey.
 */
PageFacts png_facts(const Bytes& bytes, const std::string& name, std::uint64_t pixel_limit);

/** The grey pixels as well, of any depth, interlaced or not, and all texts. Throws CodecError. */
void read_png(const Bytes& bytes, const std::string& name, std::uint64_t pixel_limit, GreyPage& page);

/** A PNG file of an 8- or 16-bit image of 1 or 3 channels (grey; red, green, blue), with its texts. Throws CodecError.
 */
Bytes encode_png(const ImageView& image, const std::vector<TextEntry>& texts = {},
                 Compression compression = Compression::fast);

}  // namespace nerova_zel
