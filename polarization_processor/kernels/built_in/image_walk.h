#pragma once

#include "kernels/built_in/block_row.h"
#include "kernels/shared/compute_pixel.h"

namespace nerova_zel {

/** The code a whole-image kernel is made of, besides the walk. */
struct KernelParts {
  BlockRow even_row;
  BlockRow odd_row;
  ComputePixel compute_pixel;
};

/**
 * Walks a frame in row pairs: blocks for all but the last columns of every row except the final pair (even height) or
 * row (odd height), single pixels for the rest. Knows no formula.
 */
template <bool height_even, bool width_even>
void walk_image(const TransformParameters& parameters, MatrixRow matrices, const KernelParts& parts);

extern template void walk_image<false, false>(const TransformParameters&, MatrixRow, const KernelParts&);
extern template void walk_image<false, true>(const TransformParameters&, MatrixRow, const KernelParts&);
extern template void walk_image<true, false>(const TransformParameters&, MatrixRow, const KernelParts&);
extern template void walk_image<true, true>(const TransformParameters&, MatrixRow, const KernelParts&);

}  // namespace nerova_zel
