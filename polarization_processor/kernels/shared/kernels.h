#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/shared/exact_arithmetic.h"

// What crosses the border of the kernels: the record of one call, the flags that select a kernel, and its signature.
namespace nerova_zel {

/** Polarizer angle of a frame's top-left pixel: 0, 1, 2, 3 = 0, 45, 90, 135 degrees. */
using PolarPhase = std::int32_t;

/**
 * 4 x 4 weights, row-major: m[4 * r + c]. Rows 0, 1, 2 give the intensity sum, S1 and S2; row 3 is kept, never read.
 * Columns weigh the pixel itself, its horizontal, its vertical and its diagonal partner.
 */
struct CalibrationMatrix {
  float m[16];
};

/** The matrices of one phase by the pixel's parity index 2 * (row & 1) + (column & 1): four pointers, none NULL. */
using MatrixRow = const CalibrationMatrix* const*;

/** Where the outputs go, in the order of the public function; NULL where one is not wanted. Row-major, tightly packed.
 */
struct OutputImages {
  float* normalized_stokes;    ///< 2 * width * height floats
  std::uint16_t* total_power;  ///< width * height, as those below
  std::uint16_t* horizontal_vertical;
  std::uint16_t* diagonal;
  std::uint16_t* azimuth;
  std::uint16_t* degree_of_linear_polarization;
};

/**
 * One transform call, as the built-in kernels and the vector plugins receive it. The field order and widths are the
 * contract with the plugins. Lives only for the duration of the call. Images are row-major and tightly packed.
 */
struct TransformParameters {
  std::int32_t height;                   ///< rows, at least 2
  std::int32_t width;                    ///< columns, at least 2
  std::int32_t phase;                    ///< after the origin has been folded in; negative counts as 0
  const std::uint16_t* input;            ///< width * height samples
  std::int32_t bit_depth;                ///< 0 to 16
  float input_maximum;                   ///< 2^bit_depth - 1
  float output_maximum;                  ///< 1 to 65535
  std::uint32_t integer_output_maximum;  ///< the same as an integer
  OutputImages images;
};

// The layout that plugins rely on. Each field lies at the next multiple of its own size: in 64 bits there is a gap
// before the input.
constexpr bool has_wide_pointers = sizeof(void*) == 8;
static_assert(sizeof(CalibrationMatrix) == 64);
static_assert(offsetof(TransformParameters, phase) == 8);
static_assert(offsetof(TransformParameters, input) == (has_wide_pointers ? 16 : 12));
static_assert(offsetof(TransformParameters, input_maximum) == (has_wide_pointers ? 28 : 20));
static_assert(offsetof(TransformParameters, integer_output_maximum) == (has_wide_pointers ? 36 : 28));
static_assert(offsetof(TransformParameters, images) == (has_wide_pointers ? 40 : 32));
static_assert(offsetof(OutputImages, degree_of_linear_polarization) == 5 * sizeof(void*));
static_assert(sizeof(TransformParameters) == offsetof(TransformParameters, images) + sizeof(OutputImages));

/** A combination of outputs, one bit each, in the order of OutputImages. */
using OutputSet = unsigned;

/** The booleans that, with the phase, select one whole-image kernel; one for each output, and four more. */
struct KernelFlags {
  bool equal_maximum;  ///< of input and output
  OutputSet outputs;   ///< that are wanted
  bool height_even;
  bool width_even;
  bool sse41;
};

/** A whole-image kernel, specialised for one phase and one combination of KernelFlags. */
using WholeImageKernel = void (*)(const TransformParameters& parameters, MatrixRow matrices);

}  // namespace nerova_zel
