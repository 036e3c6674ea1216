#include "processor.h"

#include <algorithm>
#include <cstring>

namespace nerova_zel {

Processor::Processor(CpuLevel cpu_level)
    : cpu_level_(cpu_level), avx512_plugin_(avx512_plugin_names), avx2_plugin_(avx2_plugin_names) {
  std::memcpy(matrices_, default_matrices, sizeof(matrices_));
  for (int phase = 0; phase < phase_count; ++phase) {
    for (int parity = 0; parity < 4; ++parity) {
      phase_matrices_[phase][parity] = &matrices_[phase_matrix_numbers[phase][parity]];
    }
  }
}

// Bytes, not floats: a signalling NaN passing through a floating-point register would come out quiet.
void Processor::set_matrix(int index, const float* values) noexcept {
  std::memmove(&matrices_[index], values, sizeof(CalibrationMatrix));
}

void Processor::get_matrix(int index, float* values) const noexcept {
  std::memmove(values, &matrices_[index], sizeof(CalibrationMatrix));
}

MatrixRow Processor::matrix_row(PolarPhase phase) const noexcept { return phase_matrices_[std::max(phase, 0)]; }

}  // namespace nerova_zel
