#include <emmintrin.h>

#include "kernels/built_in/block_row.h"

namespace nerova_zel {

namespace {

float reciprocal_estimate(float value) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(value))); }

}  // namespace

BlockConstants prepare_block_constants(const TransformParameters& parameters) {
  return {reciprocal_estimate(2.0F), reciprocal_estimate(parameters.input_maximum), parameters.output_maximum,
          static_cast<float>(parameters.integer_output_maximum) / 180.0F};
}

}  // namespace nerova_zel
