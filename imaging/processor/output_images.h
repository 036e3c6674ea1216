#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <vector>

#include "processor/frame_images.h"
#include "processor/outputs.h"

namespace nerova_zel {

/**
 * The output images of a frame, row by row; empty where neither wanted nor needed for another that is. Memory is kept
 * from frame to frame.
 */
class OutputImages {
 public:
  explicit OutputImages(std::set<Output> wanted);

  /** Makes room for the images of a frame of that size. */
  void allocate(int width, int height);

  /** Where they are to be put. Valid until the next allocate. */
  ImageBuffers buffers(std::uint16_t output_maximum);

  /** Keeps every second pixel of all images in both directions, from the first on, so that they have half the size. */
  void keep_superpixels();

  int width() const { return width_; }
  int height() const { return height_; }

  /** width * height elements of a 16-bit output; NULL where it is not wanted. */
  const std::uint16_t* values(Output output) const;
  /** The same of an output of floats, with as many elements for each pixel as it has channels. */
  const float* floats(Output output) const;
  /** Hands the elements over, for who keeps images longer than the next allocate; the output is empty afterwards. */
  std::vector<std::uint16_t> take_values(Output output);
  std::vector<float> take_floats(Output output);
  /** 2 * width * height elements; NULL where they are not wanted. */
  const float* stokes() const { return floats(Output::stokes); }

 private:
  Buffer<std::uint16_t> room_for(Output output);
  float* room_for_floats(Output output);

  std::set<Output> made_;
  int width_ = 0;
  int height_ = 0;
  // By Output; one of the two places of each stays empty.
  std::array<std::vector<float>, output_table.size()> floats_;
  std::array<std::vector<std::uint16_t>, output_table.size()> values_;
};

}  // namespace nerova_zel
