#pragma once

#include <optional>
#include <string>

#include "frames/pixel_counts.h"
#include "frames/raw_frame.h"

namespace nerova_zel {

/** What a user says of the bits of a pixel. */
struct DepthChoice {
  /** Significant bits; else what the frame says. */
  std::optional<int> bit_depth;
  /** They are the upper ones of a pixel. */
  bool left_aligned = false;
};

/**
 * Returns the bit depth, and brings the significant bits of pixels down to the lowest where they are left-aligned, or
 * where the file says that samples were scaled up. `name` is what failures call the frame. Throws Failure if pixels
 * have no room for the depth, or left-aligned pixels come without a depth.
 */
int settle_bit_depth(RawFrame& frame, const DepthChoice& choice, const std::string& name);

/** Throws Failure if so many pixels lie beyond full scale that the depth or the pixel format must be wrong: more than
 * 16 and more than 0.01 %. */
void check_overflow(const PixelCounts& counts, const RawFrame& frame, int bit_depth, const std::string& name);

/** Why a bit depth that nothing states is doubtful. */
struct DepthDoubt {
  enum class Reason {
    small_values,  ///< the greatest is below an eighth of full scale
    left_aligned,  ///< the lowest bits of all are 0
  };
  Reason reason;
  int greatest;      ///< value of a pixel
  int zero_bits;     ///< lowest ones, 0 in all pixels
  int likely_depth;  ///< what the values look like
};

/** Nothing if the frame states its depth or is black. */
std::optional<DepthDoubt> doubt_bit_depth(const PixelCounts& counts, const RawFrame& frame);

}  // namespace nerova_zel
