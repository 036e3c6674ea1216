#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace nerova_zel {

/**
 * How the pixels of headerless frames lie in bytes. Names and layouts are those of the pixel format naming convention
 * of machine vision cameras; docs/pixel-formats.md draws the bits. A frame starts at a byte, rows are not padded.
 */
enum class PixelFormat {
  mono8,          ///< one byte
  mono10,         ///< two bytes, low byte first, upper six bits 0
  mono12,         ///< two bytes, low byte first, upper four bits 0
  mono16,         ///< two bytes, low byte first
  mono10p,        ///< a stream of bits, lowest first: 4 pixels in 5 bytes
  mono12p,        ///< a stream of bits, lowest first: 2 pixels in 3 bytes
  mono10_packed,  ///< 2 pixels in 3 bytes: high bits of the first, low bits of both, high bits of the second
  mono12_packed,  ///< the same with low nibbles
};

/** Every format by its name, such as "Mono12p". */
std::vector<std::pair<std::string, PixelFormat>> pixel_format_names();

/** Names that polarization cameras have for the same bits, such as "Polarized12p" and "PolarizeMono12p" for Mono12p. */
std::vector<std::pair<std::string, PixelFormat>> pixel_format_aliases();

const char* name_of(PixelFormat format);

/** Significant bits of a pixel. */
int significant_bits(PixelFormat format);

/** Bits that a pixel takes. */
int storage_bits(PixelFormat format);

/** Bits that its value has room for: unused bits of two whole bytes count, others do not. */
int value_bits(PixelFormat format);

/** Whether pixels of the format are 16-bit numbers of this machine, so that they need no unpacking. */
bool is_unpacked(PixelFormat format);

/** Bytes of a frame of so many pixels; the last one may be partly used. */
std::size_t byte_count(PixelFormat format, std::size_t pixels);

/** Turns byte_count(format, pixels) bytes into pixels; touches nothing beyond either. They must not overlap. */
void unpack(PixelFormat format, const unsigned char* bytes, std::size_t pixels, std::uint16_t* unpacked);

}  // namespace nerova_zel
