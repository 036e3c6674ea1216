#include "imaging/library_outputs.h"

#include "processor/library.h"

namespace nerova_zel::test {

LibraryOutputs transform_by_library(const CameraSettings& camera, const std::vector<std::uint16_t>& frame,
                                    std::uint16_t output_maximum, const std::string& library_file) {
  const std::size_t count = frame.size();
  LibraryOutputs outputs{std::vector<float>(2 * count),     std::vector<std::uint16_t>(count),
                         std::vector<std::uint16_t>(count), std::vector<std::uint16_t>(count),
                         std::vector<std::uint16_t>(count), std::vector<std::uint16_t>(count)};
  Library(library_file)
      .transform(
          {frame, camera.width, camera.height, camera.origin_x, camera.origin_y,
           static_cast<Phase>(camera.layout.phase()), camera.bit_depth},
          {outputs.stokes, outputs.power, outputs.hv, outputs.diagonal, outputs.azimuth, outputs.dolp, output_maximum});
  return outputs;
}

}  // namespace nerova_zel::test
