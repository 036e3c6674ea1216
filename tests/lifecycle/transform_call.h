#pragma once

#include <cstdint>
#include <vector>

#include "support/loaded_library.h"

namespace nerova_zel::test {

/** A valid call of transform on a 2 x 2 frame, with all outputs, for tests to spoil or to vary. */
struct TransformCall {
  nv_polarization_processor* processor = nullptr;
  std::vector<std::uint16_t> frame = {1000, 900, 800, 700};
  std::vector<float> stokes_buffer = std::vector<float>(8, -7.0F);
  std::vector<std::vector<std::uint16_t>> image_buffers =
      std::vector<std::vector<std::uint16_t>>(5, std::vector<std::uint16_t>(4, 0xA5A5));

  std::int32_t phase = 0;
  const std::uint16_t* input = frame.data();
  std::int32_t origin_x = 0;
  std::int32_t origin_y = 0;
  std::int32_t width = 2;
  std::int32_t height = 2;
  std::int32_t bit_depth = 12;
  std::uint16_t output_maximum = 65535;
  float* stokes = stokes_buffer.data();
  std::uint16_t* images[5] = {image_buffers[0].data(), image_buffers[1].data(), image_buffers[2].data(),
                              image_buffers[3].data(), image_buffers[4].data()};

  explicit TransformCall(nv_polarization_processor* a_processor) : processor(a_processor) {}
  TransformCall(const TransformCall&) = delete;
  TransformCall& operator=(const TransformCall&) = delete;

  std::int32_t run(const LoadedLibrary& library) const {
    return library.transform(processor, phase, input, origin_x, origin_y, width, height, bit_depth, output_maximum,
                             stokes, images[0], images[1], images[2], images[3], images[4]);
  }

  bool outputs_untouched() const {
    const TransformCall fresh(nullptr);
    return stokes_buffer == fresh.stokes_buffer && image_buffers == fresh.image_buffers;
  }
};

}  // namespace nerova_zel::test
