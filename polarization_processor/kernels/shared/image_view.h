#pragma once

#include <cstdint>

#include "kernels/shared/outputs.h"

namespace nerova_zel {

/** A row-major, tightly packed image: element (x, y) at first[y * columns + x]. Does not own it. */
template <class Element>
struct ImageView {
  Element* first;
  std::uint32_t rows;
  std::uint32_t columns;
};

/** The input and the 16-bit outputs of one frame; the view of an output that is not wanted is never used. */
struct ImageViews {
  ImageView<const std::uint16_t> input;
  ImageView<std::uint16_t> outputs[Outputs::count];  ///< by output_index; the one of the pairs is never used either
};

ImageViews make_image_views(const TransformParameters& parameters);

}  // namespace nerova_zel
