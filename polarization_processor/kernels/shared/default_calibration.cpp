#include "kernels/shared/default_calibration.h"

#include <cstring>

namespace nerova_zel {

const CalibrationMatrix default_matrices[phase_count] = {
    {{1, 1, 1, 1, 1, 0, 0, -1, 0, -1, 1, 0, 0, 0, 0, 0}},
    {{1, 1, 1, 1, 0, -1, 1, 0, 1, 0, 0, -1, 0, 0, 0, 0}},
    {{1, 1, 1, 1, -1, 0, 0, 1, 0, 1, -1, 0, 0, 0, 0, 0}},
    {{1, 1, 1, 1, 0, 1, -1, 0, -1, 0, 0, 1, 0, 0, 0, 0}},
};

const int phase_matrix_numbers[phase_count][4] = {{0, 3, 1, 2}, {1, 2, 0, 3}, {2, 1, 3, 0}, {3, 0, 2, 1}};

bool is_default_calibration(PolarPhase phase, MatrixRow matrices) noexcept {
  constexpr std::size_t bytes_that_count = 12 * sizeof(float);
  for (int parity = 0; parity < 4; ++parity) {
    const CalibrationMatrix& expected = default_matrices[phase_matrix_numbers[phase][parity]];
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are meant
    if (std::memcmp(matrices[parity]->m, expected.m, bytes_that_count) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace nerova_zel
