#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "frames/raw_frame.h"
#include "processor/outputs.h"

namespace nerova_zel {

/** An image that is kept and never changes: rows from the top without gaps, channels of a pixel together. */
struct KeptImage {
  int width = 0;
  int height = 0;
  std::size_t channels = 1;
  /** Of the two the one that the image has. */
  std::vector<std::uint16_t> values;
  std::vector<float> floats;

  OutputElement element() const { return floats.empty() ? OutputElement::uint16 : OutputElement::float32; }
  std::size_t element_bytes() const { return floats.empty() ? sizeof(std::uint16_t) : sizeof(float); }
  std::size_t bytes() const { return values.size() * sizeof(std::uint16_t) + floats.size() * sizeof(float); }
  const unsigned char* data() const {
    return floats.empty() ? reinterpret_cast<const unsigned char*>(values.data())
                          : reinterpret_cast<const unsigned char*>(floats.data());
  }
};

/** Pixels of a region: from its corner on every `step`-th in both directions. */
struct Cut {
  Region region;
  int step = 1;

  int width() const { return (region.size.width + step - 1) / step; }
  int height() const { return (region.size.height + step - 1) / step; }
};

/** The bytes of a cut, in memory of their own or, where they lie together already, in the image. */
struct CutBytes {
  const unsigned char* data = nullptr;
  std::size_t size = 0;
  std::shared_ptr<const void> owner;
};

/** The cut lies within the image. */
CutBytes cut_image(const std::shared_ptr<const KeptImage>& image, const Cut& cut);

/**
 * Four samples for each pixel of the cut, of a frame: the 2 x 2 that begin at the pixel, top-left, top-right,
 * bottom-left, bottom-right. At the right and lower edge the column or row before takes the place of the one that is
 * missing, as for the library. The frame is at least 2 x 2.
 */
CutBytes cut_windows(const KeptImage& frame, const Cut& cut);

}  // namespace nerova_zel
