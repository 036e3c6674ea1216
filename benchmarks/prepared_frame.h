#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "frame_case.h"
#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/** Frame, outputs and matrices of one case, allocated and touched, page-aligned. */
class PreparedFrame {
 public:
  explicit PreparedFrame(const FrameCase& frame_case);

  const TransformParameters& parameters() const { return parameters_; }
  MatrixRow matrices() const { return row_; }
  /** The input and every wanted image as a file of raw samples, named after its field of TransformParameters. */
  void save(const std::string& directory) const;

 private:
  struct Free {
    void operator()(void* pages) const;
  };
  void* allocate(std::size_t bytes);

  std::vector<std::unique_ptr<void, Free>> pages_;
  CalibrationMatrix matrices_[4];
  const CalibrationMatrix* row_[4];
  TransformParameters parameters_;
};

}  // namespace nerova_zel::benchmark
