#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kernels/transform_parameters.h"

namespace nerova_zel::benchmark {

/** What is to be timed: one line of words, so that it can be sent to a worker process. */
struct FrameCase {
  std::string route;             ///< a name known to find_route
  std::int32_t width = 0;        ///< pixels
  std::int32_t height = 0;       ///< rows
  unsigned outputs = 0;          ///< an OutputSet
  bool equal_maximum = false;    ///< output maximum equal to full scale
  bool custom_matrices = false;  ///< calibration other than the default
  unsigned repetitions = 1;      ///< calls per measurement
};

std::string to_line(const FrameCase& frame_case);
/** Throws std::invalid_argument when the line is not one that to_line made. */
FrameCase from_line(const std::string& line);

/** Frame, outputs and matrices of one case, allocated and touched, page-aligned. */
class PreparedFrame {
 public:
  explicit PreparedFrame(const FrameCase& frame_case);

  const TransformParameters& parameters() const { return parameters_; }
  MatrixRow matrices() const { return row_; }

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
