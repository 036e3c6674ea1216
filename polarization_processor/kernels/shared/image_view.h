#pragma once

#include <cstdint>

#include "kernels/shared/transform_parameters.h"

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
  ImageView<std::uint16_t> total_power;
  ImageView<std::uint16_t> horizontal_vertical;
  ImageView<std::uint16_t> diagonal;
  ImageView<std::uint16_t> azimuth;
  ImageView<std::uint16_t> degree_of_linear_polarization;
};

ImageViews make_image_views(const TransformParameters& parameters);

}  // namespace nerova_zel
