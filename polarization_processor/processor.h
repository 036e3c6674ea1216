#pragma once

#include "cpu_features.h"
#include "kernels/shared/default_calibration.h"
#include "kernels/shared/kernels.h"
#include "vector_plugin.h"

namespace nerova_zel {

/**
 * The object behind the handle of the public interface: calibration matrices, the CPU level measured when it was made
 * and the vector plugins. Holds no lock: whoever sets matrices must be alone.
 */
class Processor {
 public:
  /** Makes the default matrices and loads both plugins. Throws as VectorPlugin does. */
  explicit Processor(CpuLevel cpu_level);

  /** Copies 16 floats bit for bit into (out of) the matrix of that index, 0 to 3; any alignment, may overlap. */
  void set_matrix(int index, const float* values) noexcept;
  void get_matrix(int index, float* values) const noexcept;

  /** The phase is 3 at most; a negative one gives the row of phase 0. */
  MatrixRow matrix_row(PolarPhase phase) const noexcept;

  CpuLevel cpu_level() const noexcept { return cpu_level_; }
  const VectorPlugin& avx512_plugin() const noexcept { return avx512_plugin_; }
  const VectorPlugin& avx2_plugin() const noexcept { return avx2_plugin_; }

 private:
  CalibrationMatrix matrices_[phase_count] = {};
  const CalibrationMatrix* phase_matrices_[phase_count][4] = {};  ///< by phase and parity index; into matrices_
  CpuLevel cpu_level_;
  VectorPlugin avx512_plugin_;  // unloaded last, also when the other fails to load
  VectorPlugin avx2_plugin_;
};

}  // namespace nerova_zel
