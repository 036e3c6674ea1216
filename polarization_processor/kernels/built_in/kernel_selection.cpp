#include "kernels/built_in/kernel_selection.h"

#include <array>
#include <utility>

#include "kernels/built_in/image_walk.h"
#include "kernels/shared/default_calibration.h"

namespace nerova_zel {

namespace {

constexpr const BlockRowTable* block_row_tables[2][phase_count] = {
    {&block_rows_sse2_0, &block_rows_sse2_1, &block_rows_sse2_2, &block_rows_sse2_3},
    {&block_rows_sse41_0, &block_rows_sse41_1, &block_rows_sse41_2, &block_rows_sse41_3}};

/** The kernel of one phase and one combination of flags, everything in it fixed when it is built. */
template <int phase, unsigned packed>
void whole_image_kernel(const TransformParameters& parameters, MatrixRow matrices) {
  constexpr unsigned selection = packed % pixel_selection_count;
  constexpr OutputSet outputs = pixel_selection(selection).outputs;
  constexpr auto& tables = block_row_tables[(packed & sse41_bit) != 0 ? 1 : 0];
  // An odd row begins with the other polarizer of the first column: 0 and 45, 90 and 135 degrees share one.
  const KernelParts parts = {tables[distinct_angle(phase, outputs)]->rows[selection],
                             tables[distinct_angle(phase ^ 1, outputs)]->rows[selection],
                             compute_pixel_table.routines[selection]};
  walk_image<(packed & height_even_bit) != 0, (packed & width_even_bit) != 0>(parameters, matrices, parts);
}

/** Without an output a kernel walks the frame and writes nothing; transform rejects such calls before. */
template <bool height_even>
void no_output_kernel(const TransformParameters& parameters, MatrixRow matrices) {
  const KernelParts parts = {block_rows_sse2_0.rows[0], block_rows_sse2_0.rows[0], compute_pixel_table.routines[0]};
  if (parameters.width % 2 == 0) {
    walk_image<height_even, true>(parameters, matrices, parts);
  } else {
    walk_image<height_even, false>(parameters, matrices, parts);
  }
}

/** Combinations that differ only in what no selected output shows share one kernel. */
template <int phase, unsigned packed>
constexpr WholeImageKernel kernel_of() {
  constexpr PixelSelection selection = pixel_selection(packed % pixel_selection_count);
  if constexpr (selection.outputs == 0) {
    return no_output_kernel<(packed & height_even_bit) != 0>;
  } else {
    constexpr unsigned shape_and_form = packed & ~(pixel_selection_count - 1);
    return whole_image_kernel<distinct_angle(phase, selection.outputs),
                              shape_and_form | pixel_selection_index(selection)>;
  }
}

template <unsigned... indices>
constexpr std::array<WholeImageKernel, sizeof...(indices)> make_kernels(
    std::integer_sequence<unsigned, indices...> /*all*/) {
  return {kernel_of<static_cast<int>(indices / flag_combinations), indices % flag_combinations>()...};
}

constexpr auto kernels = make_kernels(std::make_integer_sequence<unsigned, phase_count * flag_combinations>());

}  // namespace

WholeImageKernel select_kernel(PolarPhase phase, const KernelFlags& flags) {
  const unsigned row = phase >= 0 && phase < phase_count ? static_cast<unsigned>(phase) : 0;
  return kernels[row * flag_combinations + pack_flags(flags)];
}

void run_built_in(const TransformParameters& parameters, MatrixRow matrices, bool sse41) {
  select_kernel(parameters.phase, kernel_flags(parameters, sse41))(parameters, matrices);
}

}  // namespace nerova_zel
