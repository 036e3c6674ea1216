#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel {

constexpr int phase_count = 4;

/** The matrix of each polarizer: matrix m serves the pixels under the polarizer at 45 * m degrees. */
extern const CalibrationMatrix default_matrices[phase_count];

/** Matrix numbers by phase and parity index 2 * (row & 1) + (column & 1). */
extern const int phase_matrix_numbers[phase_count][4];

/**
 * Whether the rows that count of a phase's matrices are the default ones, bit for bit: a zero of the other sign already
 * makes a difference to some results.
 */
bool is_default_calibration(PolarPhase phase, MatrixRow matrices) noexcept;

}  // namespace nerova_zel
