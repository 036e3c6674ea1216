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
};

/** The result that the public header documents. */
inline std::int32_t documented_result(bool initialized, const TransformValues& values) {
  std::size_t wanted = 0;
  bool is_input = false;
  bool equal = false;
  for (std::size_t i = 0; i < values.outputs.size(); ++i) {
    const void* const output = values.outputs[i];
    if (output == nullptr) {
      continue;
    }
    ++wanted;
    is_input = is_input || output == values.input;
    for (std::size_t j = 0; j < i; ++j) {
      equal = equal || output == values.outputs[j];
    }
  }
  struct Check {
    bool failed;
    std::int32_t code;
  };
  const Check checks[] = {
      {!initialized, NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED},
      {values.processor == nullptr, NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE},
      {values.phase > NV_POLARIZATION_PROCESSOR_PHASE_135_DEGREES, NV_POLARIZATION_PROCESSOR_ERROR_PHASE},
      {values.input == nullptr, NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT},
      {wanted == 0, NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT},
      {is_input, NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT},
      {equal, NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL},
      {values.width < 2, NV_POLARIZATION_PROCESSOR_ERROR_WIDTH},
      {values.height < 2, NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT},
      {values.output_maximum == 0, NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_MAXIMUM},
      {values.bit_depth < 0 || values.bit_depth > 16, NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH},
  };
  for (const Check& check : checks) {
    if (check.failed) {
      return check.code;
    }
  }
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

}  // namespace nerova_zel::test
