#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulation/simulated_frame.h"

namespace nerova_zel::test {

/** All outputs of one frame, straight from a library. */
struct LibraryOutputs {
  std::vector<float> stokes;
  std::vector<std::uint16_t> power;
  std::vector<std::uint16_t> hv;
  std::vector<std::uint16_t> diagonal;
  std::vector<std::uint16_t> azimuth;
  std::vector<std::uint16_t> dolp;
};

LibraryOutputs transform_by_library(const CameraSettings& camera, const std::vector<std::uint16_t>& frame,
                                    std::uint16_t output_maximum, const std::string& library_file = NEROVA_LIBRARY);

}  // namespace nerova_zel::test
