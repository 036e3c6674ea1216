#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "byte_source.h"
#include "image.h"

namespace nerova_zel {

/** Whether a file begins as TIFF files (also BigTIFF) do. */
bool is_tiff(const Bytes& bytes);

/**
 * Where the directories of a TIFF file's pages lie; thumbnails and masks, as their tags declare them, are left out.
 * `name` stands for the file in errors. Throws CodecError.
 */
std::vector<std::uint64_t> tiff_pages(ByteSource& source, const std::string& name);

/** What the page whose directory lies at `offset` says of itself. Throws CodecError, also for pixels that are not grey.
 */
PageFacts tiff_facts(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit);

/** Its pixels as well: of 1, 2, 4 or 8 to 16 bits, in strips or tiles, compressed or not. Throws CodecError. */
void read_tiff(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit,
               GreyPage& page);

/** What a TIFF file says beside its pixels. */
struct TiffTags {
  std::string description;      ///< ImageDescription; none if empty
  std::string software;         ///< Software; none if empty
  std::optional<int> greatest;  ///< MaxSampleValue, of 8- and 16-bit images
};

/**
 * A TIFF file with the low byte first: 8- and 16-bit integers of 1 or 3 channels by Deflate over horizontal
 * differences, floats as they are. Throws CodecError.
 */
Bytes encode_tiff(const ImageView& image, const TiffTags& tags = {}, Compression compression = Compression::fast);

}  // namespace nerova_zel
