#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/pixel_formats.h"

namespace nerova_zel {

/**
 * Unpacks the first pixels of a stream of bits (Mono10p, Mono12p) with AVX2, as far as whole vectors can be read from
 * its `byte_count` bytes. Returns how many pixels it was, a multiple of 8; 0 for other formats and processors.
 */
std::size_t unpack_vectors(PixelFormat format, const unsigned char* bytes, std::size_t byte_count,
                           std::uint16_t* unpacked);

}  // namespace nerova_zel
