#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"
#include "processor/outputs.h"

namespace nerova_zel {

/** The output images of a frame, row by row; empty where not wanted. Memory is kept from frame to frame. */
class OutputImages {
 public:
  explicit OutputImages(std::set<Output> wanted) : wanted_(std::move(wanted)) {}

  /** Makes room for the images of a frame of that size. */
  void allocate(int width, int height);

  /** Where the library is to put them. Valid until the next allocate. */
  Outputs buffers(std::uint16_t output_maximum);

  int width() const { return width_; }
  int height() const { return height_; }

  /** width * height elements of a 16-bit output; NULL where it is not wanted. */
  const std::uint16_t* values(Output output) const;
  /** 2 * width * height elements; NULL where they are not wanted. */
  const float* stokes() const { return stokes_.empty() ? nullptr : stokes_.data(); }

 private:
  Buffer<std::uint16_t> room_for(Output output);

  std::set<Output> wanted_;
  int width_ = 0;
  int height_ = 0;
  std::vector<float> stokes_;
  /** By Output; the place of the Stokes pair stays empty. */
  std::array<std::vector<std::uint16_t>, output_table.size()> values_;
};

}  // namespace nerova_zel
