#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel {

/** Throws CodecError unless both are at least 1 and make at most `limit` pixels. Returns their number. */
std::size_t checked_pixel_count(const std::string& name, std::uint64_t width, std::uint64_t height,
                                std::uint64_t limit);

/** Samples of one byte, into `pixels`, which has room for them. */
void widen(const unsigned char* samples, std::size_t count, std::uint16_t* pixels);

/** Samples of two bytes, the high one first if so said. */
void join_bytes(const unsigned char* samples, std::size_t count, bool high_byte_first, std::uint16_t* pixels);

/** Samples of 1 to 16 bits, packed from the highest bit of the first byte on. */
void unpack_bits(const unsigned char* packed, std::size_t count, unsigned bits, std::uint16_t* pixels);

}  // namespace nerova_zel
