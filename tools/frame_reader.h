#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nerova_zel {

struct FrameSize {
  int width;
  int height;
};

/** A raw mosaic frame as its file holds it. */
struct RawFrame {
  int width = 0;
  int height = 0;
  /** Bits that the file says its pixels use, 1 to 16: the storage width, or for PGM the width of its greatest value. */
  int bit_depth = 0;
  /** width * height values, row by row. */
  std::vector<std::uint16_t> pixels;
};

/**
 * Reads a single-channel 8- or 16-bit PNG, TIFF or binary PGM, told apart by content, not by name. With `raw_size` the
 * file is taken as headerless pixels of that size: one byte each, or two bytes each with the low byte first, as its
 * length says. Throws Failure.
 */
RawFrame read_frame(const std::string& path, const std::optional<FrameSize>& raw_size);

/** The `wanted` bit depth of a frame from the file `path`, else its own. Throws Failure if the file cannot hold it. */
int bit_depth_of(const RawFrame& frame, const std::optional<int>& wanted, const std::string& path);

}  // namespace nerova_zel
