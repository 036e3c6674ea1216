#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "byte_source.h"
#include "image.h"

namespace nerova_zel {

/** Whether a file begins as binary PGM files do. */
bool is_pgm(const Bytes& bytes);

/**
 * Where the images of a PGM file begin: they may follow one another without anything between. Other bytes behind an
 * image are ignored. `name` stands for the file in errors. Throws CodecError.
 */
std::vector<std::uint64_t> pgm_pages(ByteSource& source, const std::string& name, std::uint64_t pixel_limit);

/** What the image that begins at `offset` says of itself. Throws CodecError. */
PageFacts pgm_facts(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit);

/** Its pixels as well. Throws CodecError. */
void read_pgm(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit,
              GreyPage& page);

/** A binary PGM file of width * height samples, 1 to 65535 being the greatest: one byte each up to 255, else two. */
Bytes encode_pgm(const std::uint16_t* pixels, int width, int height, int greatest);

}  // namespace nerova_zel
