#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frames/pixel_counts.h"

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

/** Frames of a file or stream by number, counted from 0. */
struct FrameRange {
  std::uint64_t first = 0;
  /** Behind the last; nothing for all that there are. */
  std::optional<std::uint64_t> end;
};

struct CountsOnArrival {
  int full_scale;
  PixelCounts counts;
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
  /** Whether the file says its bit depth, or it is only what a pixel has room for. */
  bool depth_is_stated = true;
  /** Not 0 where the file says that its samples were scaled up to all storage bits from so many. */
  int scaled_from_bits = 0;
  /** TIFF's orientation tag, 1 if there is none. Pixels are as stored, whatever it says: turning them would move the
   * polarizers. */
  int orientation = 1;
  /** Where the pixels were counted when they came, which is cheaper than later. Whoever changes them clears it. */
  std::optional<CountsOnArrival> counted = std::nullopt;
};

// `name` is what failures call the frame.

/** Throws Failure if the frame is smaller than the 2 x 2 pixels of a mosaic. */
void check_mosaic_size(const RawFrame& frame, const std::string& name);

/** Keeps only the region, in place. Throws Failure if it does not lie within the frame. */
void crop(RawFrame& frame, const Region& region, const std::string& name);

/** Taken from `counted` where that is of the same full scale. */
PixelCounts counts_of(const RawFrame& frame, int full_scale);

}  // namespace nerova_zel
