#include "kernels/built_in/image_walk.h"

#include <cstdint>

namespace nerova_zel {

namespace {

/** One frame in the course of its walk. */
struct Frame {
  const TransformParameters& parameters;
  MatrixRow matrices;
  ComputePixel compute_pixel;
  ImageViews views;
  std::uint32_t width;
  std::uint32_t height;

  void pixel(std::uint32_t row, std::uint32_t column, unsigned matrix, NeighbourhoodShape shape) const {
    compute_pixel(row, column, *matrices[matrix], parameters, views, shape);
  }
};

Frame make_frame(const TransformParameters& parameters, MatrixRow matrices, ComputePixel compute_pixel) {
  return {parameters,
          matrices,
          compute_pixel,
          make_image_views(parameters),
          static_cast<std::uint32_t>(parameters.width),
          static_cast<std::uint32_t>(parameters.height)};
}

/** Blocks of four columns; the last ones stay out, because a block reads beyond its own columns. */
std::uint32_t block_columns(std::uint32_t width) { return width < 8 ? 0 : 4 * ((width >> 2U) - 1); }

/** Two rows that are not the last, from an even column to the right edge. */
template <bool width_even>
void compute_pair_tail(const Frame& frame, std::uint32_t y, std::uint32_t x) {
  using Shape = NeighbourhoodShape;
  for (; x < frame.width - 2; x += 2) {
    frame.pixel(y, x, 0, Shape::Forward);
    frame.pixel(y, x + 1, 1, Shape::Forward);
    frame.pixel(y + 1, x, 2, Shape::Forward);
    frame.pixel(y + 1, x + 1, 3, Shape::Forward);
  }
  if constexpr (width_even) {
    frame.pixel(y, x, 0, Shape::Forward);
    frame.pixel(y, x + 1, 1, Shape::MirrorLeft);
    frame.pixel(y + 1, x, 2, Shape::Forward);
    frame.pixel(y + 1, x + 1, 3, Shape::MirrorLeft);
  } else {
    frame.pixel(y, x, 0, Shape::MirrorLeft);
    frame.pixel(y + 1, x, 2, Shape::MirrorLeft);
  }
}

template <bool width_even>
void compute_last_row_pair(const Frame& frame, std::uint32_t y) {
  using Shape = NeighbourhoodShape;
  std::uint32_t x = 0;
  for (; x < frame.width - 2; x += 2) {
    frame.pixel(y, x, 0, Shape::Forward);
    frame.pixel(y, x + 1, 1, Shape::Forward);
    frame.pixel(y + 1, x, 2, Shape::MirrorUp);
    frame.pixel(y + 1, x + 1, 3, Shape::MirrorUp);
  }
  if constexpr (width_even) {
    frame.pixel(y, x, 0, Shape::Forward);
    frame.pixel(y, x + 1, 1, Shape::MirrorLeft);
    frame.pixel(y + 1, x, 2, Shape::MirrorUp);
    frame.pixel(y + 1, x + 1, 3, Shape::MirrorCorner);
  } else {
    frame.pixel(y, x, 0, Shape::MirrorLeft);
    // The corner of a frame with an odd side takes matrix 0, whatever its parity.
    frame.pixel(y + 1, x, 0, Shape::MirrorCorner);
  }
}

template <bool width_even>
void compute_last_row(const Frame& frame, std::uint32_t y) {
  using Shape = NeighbourhoodShape;
  std::uint32_t x = 0;
  for (; x < frame.width - 2; x += 2) {
    frame.pixel(y, x, 0, Shape::MirrorUp);
    frame.pixel(y, x + 1, 1, Shape::MirrorUp);
  }
  if constexpr (width_even) {
    frame.pixel(y, x, 0, Shape::MirrorUp);
    ++x;
  }
  frame.pixel(y, x, 0, Shape::MirrorCorner);
}

}  // namespace

template <bool height_even, bool width_even>
void walk_image(const TransformParameters& parameters, MatrixRow matrices, const KernelParts& parts) {
  const Frame frame = make_frame(parameters, matrices, parts.compute_pixel);
  if (frame.height == 2) {
    compute_last_row_pair<width_even>(frame, 0);
    return;
  }
  const BlockConstants constants = prepare_block_constants(parameters);
  const std::uint32_t columns = block_columns(frame.width);
  std::uint32_t y = 0;
  for (; y < frame.height - 2; y += 2) {
    if (columns != 0) {
      parts.even_row(parameters, constants, y, columns);
      parts.odd_row(parameters, constants, y + 1, columns);
    }
    compute_pair_tail<width_even>(frame, y, columns);
  }
  if constexpr (height_even) {
    compute_last_row_pair<width_even>(frame, y);
  } else {
    compute_last_row<width_even>(frame, y);
  }
}

template void walk_image<false, false>(const TransformParameters&, MatrixRow, const KernelParts&);
template void walk_image<false, true>(const TransformParameters&, MatrixRow, const KernelParts&);
template void walk_image<true, false>(const TransformParameters&, MatrixRow, const KernelParts&);
template void walk_image<true, true>(const TransformParameters&, MatrixRow, const KernelParts&);

}  // namespace nerova_zel
