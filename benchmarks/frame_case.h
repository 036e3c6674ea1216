#pragma once

#include <cstdint>
#include <string>

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/** What is to be computed: one line of words, so that it can be sent to a worker process. */
struct FrameCase {
  std::string route;             ///< a name known to find_route
  std::int32_t width = 0;        ///< pixels
  std::int32_t height = 0;       ///< rows
  PolarPhase phase = 0;          ///< 0 to 3
  unsigned outputs = 0;          ///< an OutputSet
  bool equal_maximum = false;    ///< output maximum equal to full scale
  bool custom_matrices = false;  ///< calibration other than the default
  unsigned repetitions = 1;      ///< calls per batch
};

std::string to_line(const FrameCase& frame_case);
/** Throws std::invalid_argument when the line is not one that to_line made. */
FrameCase from_line(const std::string& line);

}  // namespace nerova_zel::benchmark
