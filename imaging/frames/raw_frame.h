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

/** Sensor coordinates of a frame's top-left pixel, both at least 0. */
struct Origin {
  int x;
  int y;
};

/** Pixels from column `x` and row `y` on. */
struct Region {
  int x;
  int y;
  FrameSize size;
};

/** A raw mosaic frame as its file holds it. */
struct RawFrame {
  int width = 0;
  int height = 0;
  /** Bits that the file says its pixels use, 1 to 16: by its format, or for PGM the width of its greatest value. */
  int bit_depth = 0;
  /** Bits that a pixel has room for in the file. */
  int storage_bits = 0;
  /** width * height values, row by row. */
  std::vector<std::uint16_t> pixels;
};

// `name` is what failures call the frame.

/** The `wanted` bit depth of a frame, else its own. Throws Failure if its pixels have no room for it. */
int bit_depth_of(const RawFrame& frame, const std::optional<int>& wanted, const std::string& name);

/** Throws Failure if the frame is smaller than the 2 x 2 pixels of a mosaic. */
void check_mosaic_size(const RawFrame& frame, const std::string& name);

/** Keeps only the region, in place. Throws Failure if it does not lie within the frame. */
void crop(RawFrame& frame, const Region& region, const std::string& name);

}  // namespace nerova_zel
