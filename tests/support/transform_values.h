#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel::test {

/** All arguments of a transform; the outputs as addresses, in the order of the interface. */
struct TransformValues {
  nv_polarization_processor* processor = nullptr;
  std::int32_t phase = 0;
  const void* input = nullptr;
  std::int32_t origin_x = 0;
  std::int32_t origin_y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t bit_depth = 0;
  std::uint16_t output_maximum = 0;
  std::array<void*, 6> outputs = {};

  /** By a function like the library's. */
  template <class Transform>
  std::int32_t call(const Transform& transform) const {
    const auto image = [this](std::size_t i) { return static_cast<std::uint16_t*>(outputs[i]); };
    return transform(processor, phase, static_cast<const std::uint16_t*>(input), origin_x, origin_y, width, height,
                     bit_depth, output_maximum, static_cast<float*>(outputs[0]), image(1), image(2), image(3), image(4),
                     image(5));
  }
};

}  // namespace nerova_zel::test
