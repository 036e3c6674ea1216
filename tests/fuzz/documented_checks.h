#pragma once

#include <cstdint>
#include <set>

#include "support/transform_values.h"

namespace nerova_zel::test {

/** The result that the public header documents. */
inline std::int32_t documented_result(bool initialized, const TransformValues& values) {
  std::multiset<const void*> outputs(values.outputs.begin(), values.outputs.end());
  outputs.erase(nullptr);
  const bool equal = std::set<const void*>(outputs.begin(), outputs.end()).size() < outputs.size();
  struct Check {
    bool failed;
    std::int32_t code;
  };
  const Check checks[] = {
      {!initialized, NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED},
      {values.processor == nullptr, NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE},
      {values.phase > NV_POLARIZATION_PROCESSOR_PHASE_135_DEGREES, NV_POLARIZATION_PROCESSOR_ERROR_PHASE},
      {values.input == nullptr, NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT},
      {outputs.empty(), NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT},
      {outputs.count(values.input) != 0, NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT},
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
